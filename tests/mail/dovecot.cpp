#include "tests/mail/dovecot.h"

#include <arpa/inet.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <thread>

#include "ports/portable/curl_stream.h"

namespace tavrix::test {
namespace {

constexpr const char* program = "/usr/sbin/dovecot";

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) throw std::runtime_error(command);
}

// One that nobody was connected to: the server does not take a port that still waits.
std::uint16_t free_port() {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    bind(socket, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(socket);
    return ntohs(address.sin_port);
}

// Root may not own a mailbox there; somebody else can start no other users' processes.
std::string owner() {
    return getuid() == 0 ? "mail" : std::to_string(getuid());
}

}  // namespace

bool Dovecot::is_installed() {
    return access(program, X_OK) == 0 && access("/usr/lib/dovecot/pop3", X_OK) == 0;
}

Dovecot::Dovecot() : port_(free_port()), tls_port_(free_port()) {
    run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 1 "
        "-subj /CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1 -out '" +
        certificate() + "' -keyout '" + below("key.pem") + "' 2>/dev/null");
    for (const char* name : {"mail", "mail/new", "mail/cur", "mail/tmp", "run", "state"}) {
        std::filesystem::create_directory(below(name));
    }
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    std::ofstream(below("dovecot.conf")) << configuration();
    const std::string user = owner();
    std::ofstream(below("users")) << "jan:{PLAIN}tajne:" << user << ":" << user
                                  << "::" << below("mail") << "::\n";
    deliver();
    pid_ = fork();
    if (pid_ == 0) {
        // Also when the test is killed.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execl(program, program, "-F", "-c", below("dovecot.conf").c_str(), nullptr);
        _exit(127);
    }
    for (int tries = 0; tries < 200 && !answers(); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

Dovecot::~Dovecot() {
    kill(pid_, SIGTERM);
    waitpid(pid_, nullptr, 0);
}

std::size_t Dovecot::count() const {
    std::size_t count = 0;
    for (const char* name : {"mail/new", "mail/cur"}) {
        for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(below(name))) {
            ++count;
        }
    }
    return count;
}

void Dovecot::deliver() const {
    if (getuid() == 0) run("chown -R mail:mail '" + below("mail") + "'");
}

bool Dovecot::answers() const {
    const auto stream = ports::make_curl_mail_stream({});
    try {
        stream->connect({"127.0.0.1", port_}, ports::Security::none);
        return stream->connected_within(std::chrono::milliseconds(1000)) &&
               stream->receive(std::chrono::milliseconds(5000)).state ==
                   ports::Received::State::data;
    } catch (const ports::StreamError&) {
        return false;
    }
}

std::string Dovecot::configuration() const {
    std::string text =
        "base_dir = " + below("run") + "\nstate_dir = " + below("state") +
        "\nlog_path = " + below("log") +
        "\nprotocols = pop3\nlisten = 127.0.0.1\nssl = yes\nssl_cert = <" + certificate() +
        "\nssl_key = <" + below("key.pem") +
        "\ndisable_plaintext_auth = no\nmail_location = maildir:%h\n"
        "first_valid_uid = 1\n"
        "passdb {\n driver = passwd-file\n args = scheme=PLAIN " +
        below("users") + "\n}\nuserdb {\n driver = passwd-file\n args = " + below("users") +
        "\n}\nservice pop3-login {\n inet_listener pop3 {\n  port = " + std::to_string(port_) +
        "\n }\n inet_listener pop3s {\n  port = " + std::to_string(tls_port_) +
        "\n  ssl = yes\n }\n}\n";
    if (getuid() != 0) {
        const std::string user = std::filesystem::path(std::getenv("USER")).string();
        text += "default_internal_user = " + user + "\ndefault_login_user = " + user +
                "\ndefault_internal_group = " + user +
                "\nservice anvil {\n chroot =\n}\nservice pop3-login {\n chroot =\n}\n";
    }
    return text;
}

}  // namespace tavrix::test
