#!/usr/bin/env bash
# test_debian.sh PACKAGE_FOLDER CACHE: installs the Debian package into a clean system of its own, asks both programs, and
# removes it. Needs root and debootstrap; the bare system is kept in CACHE as an archive.
set -euo pipefail

deb=$(ls "$1"/tavrix_*_amd64.deb) cache=$2
if ((EUID != 0)) || ! command -v debootstrap >/dev/null; then
    echo "SKIPPED: the Debian package in a clean system, which needs root and debootstrap"
    exit 0
fi
work=$(mktemp -d)
leave() {
    umount "$work/system/proc" 2>/dev/null || true
    # Nothing is taken away through a mount that is still there.
    mountpoint -q "$work/system/proc" || rm -rf "$work"
}
trap leave EXIT
archive=$cache/debian-12-minimal.tar
mkdir "$work/system"
if [[ ! -f $archive ]]; then
    debootstrap --variant=minbase bookworm "$work/system" >"$work/log" 2>&1 || { tail "$work/log"; exit 1; }
    tar -C "$work/system" -cf "$archive.new" . && mv "$archive.new" "$archive"
else
    tar -C "$work/system" -xf "$archive"
fi
# The machine's own sources and settings, whatever mirror they name.
rm -rf "$work/system/etc/apt"
cp -a /etc/apt "$work/system/etc/apt"
cp /etc/resolv.conf "$work/system/etc/" 2>/dev/null || true
mount -t proc proc "$work/system/proc"
inside() { chroot "$work/system" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
cp "$deb" "$work/system/tavrix.deb"
inside apt-get -q update >"$work/log" 2>&1 || true
inside apt-get -q -y install --no-install-recommends /tavrix.deb >"$work/log" 2>&1 || { tail "$work/log"; exit 1; }
inside tavrix --version
inside tavrix qr --text tavrix --out /qr.svg >/dev/null
inside bash -c 'source /usr/share/bash-completion/completions/tavrix && complete -p tavrix' >/dev/null
inside bash -euc '
    tavrix-sandbox --port 0 --port-file /port --quiet &
    sandbox=$!
    for ((i = 0; i < 50; ++i)); do [[ -s /port ]] && break; sleep 0.2; done
    exec 3<>"/dev/tcp/127.0.0.1/$(cat /port)"
    printf "GET / HTTP/1.0\r\nHost: localhost\r\n\r\n" >&3
    head -n 1 <&3 | grep -q " 200 "
    kill "$sandbox"'
inside dpkg --purge tavrix >/dev/null
[[ ! -e $work/system/usr/bin/tavrix && ! -e $work/system/usr/share/doc/tavrix ]]
echo "installed, asked, served and removed"
if inside apt-get -q -y install --no-install-recommends lintian >"$work/log" 2>&1; then
    inside lintian --allow-root --fail-on error /tavrix.deb
else
    echo "SKIPPED: lintian, which cannot be had here"
fi
