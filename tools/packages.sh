# Debian packages. Sourced, never run.

wanted_packages() { sed -E 's/#.*//; s/[[:space:]].*//; /^$/d' "$root/tools/packages.txt"; }
no_wine32_marker=$tavrix_cache/no-wine32

# With the marker the 32-bit Wine is known not to be had, and is not asked for again and again.
missing_packages() {
    local wanted have
    wanted=$(wanted_packages)
    [[ -f $no_wine32_marker ]] && wanted=$(grep -v '^wine32' <<<"$wanted")
    # shellcheck disable=SC2086
    have=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n${db:Status-Status} ${Package}:${Architecture}\n' \
        ${wanted} 2>/dev/null | sed -n 's/^installed //p' || true)
    comm -23 <(sort -u <<<"$wanted") <(sort -u <<<"$have")
}

have_wine32() { [[ -x /usr/lib/wine/wine ]]; }

apt() {
    as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get -q -y -o Dpkg::Use-Pty=0 \
        -o Acquire::Retries=3 "$@"
}

# Both are asked before anything changes: does it resolve, and can every file really be had?
can_install() {
    apt install -s --no-install-recommends "$@" && apt install --download-only --no-install-recommends "$@"
}

# A mirror caught in the middle of its own update may give a broken index for one architecture of one suite. apt then
# keeps the suite's other architecture, whose libraries no longer match, and nothing of the other one installs. With
# its lists emptied, apt leaves that suite out for both, which resolves. So exit codes decide nothing here, only
# whether the packages can be had.
install_packages() {
    rm -f "$tavrix_cache/broken-index"
    if ! apt update; then
        echo "apt-get update reported errors; what counts is whether the packages can be had"
        touch "$tavrix_cache/broken-index"
    fi
    if ! can_install "$@"; then
        echo "the packages do not resolve: once more with fresh package lists"
        as_root find /var/lib/apt/lists -type f -delete
        apt update || true
        can_install "$@" || return 1
    fi
    without_daemons apt install --no-install-recommends "$@"
}

# Debian starts a server's daemon when its package is installed, unless this file says that nothing is to be started here.
# Where the machine has none of its own it stands there for as long as the command runs: the tests start their own.
without_daemons() (
    policy=/usr/sbin/policy-rc.d
    if [[ ! -e $policy ]]; then
        trap 'as_root rm -f "$policy"' EXIT
        as_root sh -c "printf '#!/bin/sh\nexit 101\n' >$policy && chmod 755 $policy"
    fi
    "$@"
)

install_with_or_without_wine32() {
    local others=()
    mapfile -t others < <(printf '%s\n' "$@" | grep -v '^wine32')
    if install_packages "$@"; then return; fi
    ((${#others[@]} < $#)) || return 1
    echo "without 32-bit Wine then"
    touch "$no_wine32_marker"
    ((${#others[@]} == 0)) || install_packages "${others[@]}"
}

need_packages() {
    local missing=()
    mapfile -t missing < <(missing_packages)
    ((${#missing[@]} == 0)) && return
    if printf '%s\n' "${missing[@]}" | grep -q '^wine32'; then
        if ! dpkg --print-foreign-architectures | grep -qx i386; then
            say "adding Debian's i386 architecture, which 32-bit Wine comes from (dpkg --remove-architecture i386 undoes it)"
            as_root dpkg --add-architecture i386
        fi
    fi
    if ((EUID != 0)) && command -v sudo >/dev/null; then
        say "installing packages through sudo, which may ask for your password"
        sudo -v
    fi
    step "install ${#missing[@]} Debian packages" \
        "check that apt-get update and apt-get install work on this machine, then run ./dev setup again" \
        install_with_or_without_wine32 "${missing[@]}"
    if [[ -f $tavrix_cache/broken-index ]]; then
        warn "a package index on the mirror is broken, perhaps the security suite's: when apt-get update works again, upgrade"
    fi
    if [[ -f $no_wine32_marker ]]; then
        warn "32-bit Wine cannot be had here now: 32-bit tests will be skipped (./dev setup --retry tries again)"
    fi
}

# need_package package: one that only a single command uses.
need_package() {
    [[ -n $(installed_version "$1") ]] || step "install $1" "try: apt-get install $1" install_packages "$1"
}

need_polish_locale() {
    locale -a 2>/dev/null | grep -qix 'pl_PL.utf-\?8' && return
    step "generate the pl_PL.UTF-8 locale" "run dpkg-reconfigure locales and choose pl_PL.UTF-8" generate_polish_locale
}

generate_polish_locale() {
    as_root sed -i -E 's/^# *(pl_PL\.UTF-8 UTF-8)/\1/' /etc/locale.gen
    as_root locale-gen
}
