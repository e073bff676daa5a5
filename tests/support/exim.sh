#!/usr/bin/env bash
# A mail server in FOLDER. Says its process, its port and the one where TLS begins at once, and becomes the server.
# Exim gives up root before it delivers, so mailboxes and transport belong to its own user; a name from outside counts
# as tainted and makes no path, what a list was found to hold does.
set -euo pipefail
cd "$1"
read -r port tls_port < <(python3 -c '
import socket
sockets = [socket.socket() for _ in range(2)]
for one in sockets:
    one.bind(("127.0.0.1", 0))
print(*(one.getsockname()[1] for one in sockets))')
if ((EUID == 0)); then user=Debian-exim; else user=$(id -un); fi
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=localhost \
    -addext "subjectAltName=DNS:localhost,IP:127.0.0.1" -keyout key.pem -out cert.pem 2>/dev/null
mkdir -p spool log mail/jan mail/ola
cat >exim.conf <<CONF
exim_user = $user
exim_group = $(id -gn "$user")
spool_directory = $PWD/spool
log_file_path = $PWD/log/%s
pid_file_path = $PWD/exim.pid
primary_hostname = localhost
local_interfaces = 127.0.0.1
daemon_smtp_ports = $port : $tls_port
tls_on_connect_ports = $tls_port
tls_advertise_hosts = *
tls_certificate = $PWD/cert.pem
tls_privatekey = $PWD/key.pem
dsn_advertise_hosts = *
message_size_limit = 60M
never_users =
keep_environment =
deliver_drop_privilege = true
acl_smtp_rcpt = check_recipient
acl_smtp_data = accept
begin acl
check_recipient:
  deny message = log in first
    !authenticated = *
  deny message = nobody of that name
    !local_parts = jan : ola
  accept
begin routers
local:
  driver = accept
  local_parts = jan : ola
  transport = maildir
begin transports
maildir:
  driver = appendfile
  maildir_format
  directory = $PWD/mail/\$local_part_data
  user = $user
  group = $(id -gn "$user")
  envelope_to_add
begin authenticators
plain:
  driver = plaintext
  public_name = PLAIN
  server_prompts = :
  server_condition = \${if and{{eq{\$auth2}{jan}}{eq{\$auth3}{tajne}}}}
  server_set_id = \$auth2
CONF
if ((EUID == 0)); then
    chmod 755 .
    chown -R "$user" key.pem spool log mail
fi
echo $$
{
    for _ in $(seq 100); do
        (exec 3<>"/dev/tcp/127.0.0.1/$tls_port") 2>/dev/null && break
        sleep 0.1
    done
    echo "$port $tls_port"
} &
exec /usr/sbin/exim4 -C "$PWD/exim.conf" -bdf </dev/null >log/output 2>&1
