# ./dev setup and the parts of it that other commands need. Sourced, never run.

# Parts of the cache that an interrupted run left half made.
sweep_cache() { find "$tavrix_cache" -maxdepth 1 \( -name 'work-*' -o -name 'download.*' -o -name '*.new' \) -exec rm -rf {} +; }

need_tools() {
    need_packages
    need_polish_locale
}

# need_windows bits...: what is missing for two widths is made side by side, because half of the time a library
# configures itself on one processor.
need_windows() {
    local bits missing=() builders=() builder failed=''
    for bits in "$@"; do
        [[ -d $(windows_prefix "$bits") ]] || missing+=("$bits")
    done
    if ((${#missing[@]} > 0)); then
        step "download the Windows libraries' sources" "run ./dev setup again when the network works" fetch_windows_sources
    fi
    if ((${#missing[@]} > 1)); then
        for bits in "${missing[@]}"; do
            (side_by_side=1 && need_windows_width "$bits") &
            builders+=($!)
        done
        for builder in "${builders[@]}"; do wait "$builder" || failed=1; done
        [[ -z $failed ]] || exit 1
    fi
    for bits in "$@"; do need_windows_width "$bits"; done
}

need_windows_width() {
    local bits=$1 prefix
    need_wine_prefix "$bits"
    prefix=$(windows_prefix "$bits")
    # The mark is the last thing made: a prefix whose check was interrupted is checked again.
    if [[ ! -f $prefix/checked ]]; then
        setup_windows_libraries "$bits"
        step "check the $bits-bit Windows libraries" "read the log; ./dev clean --cache and ./dev setup build them anew" \
            check_windows_prefix "$bits" "$prefix"
    fi
    declare -gx "TAVRIX_WINDOWS_PREFIX_$bits=$prefix"
}

# A prefix that fails is taken away again, so that the next run does not trust it.
check_windows_prefix() {
    # Not local: the trap runs when this function is over.
    bits=$1 prefix=$2
    build=$(mktemp -d "$tavrix_cache/work-check.XXXXXX")
    trap 'status=$?; rm -rf "$build"; ((status == 0)) || rm -rf "$prefix"' EXIT
    cmake -S "$root/tools/prefix_check" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw$bits.cmake" -DTAVRIX_WINDOWS_PREFIX="$prefix"
    cmake --build "$build" -j "$jobs"
    python3 "$root/tools/check_imports.py" "$build/prefix_check.exe"
    if can_run_windows "$bits"; then
        "$root/tools/wine-run" "$bits" "$build/prefix_check.exe"
    fi
    touch "$prefix/checked"
}

# Two checkouts may be set up at once; they share the cache, so they take turns.
lock_cache() {
    mkdir -p "$tavrix_cache"
    exec 9>"$tavrix_cache/lock"
    if ! flock -n 9; then
        say "another ./dev is setting up in $tavrix_cache: waiting for it"
        flock 9
    fi
}
unlock_cache() { exec 9>&-; }

check_system() {
    [[ $(dpkg --print-architecture 2>/dev/null) == amd64 ]] ||
        die "this needs Debian 12 on amd64: dpkg says '$(dpkg --print-architecture 2>/dev/null || echo "not there")'"
    [[ $(. /etc/os-release && echo "${ID:-}${VERSION_ID:-}") == debian12 ]] ||
        warn "made for and tested on Debian 12; this is $(. /etc/os-release && echo "${PRETTY_NAME:-something else}")"
}

# need part...: tools, 32 (the 32-bit Windows libraries and Wine prefix), 64, pascal.
need() {
    local part widths=() with_pascal=''
    check_system
    lock_cache
    sweep_cache
    for part in "$@"; do
        case $part in
            tools) need_tools ;;
            32 | 64) widths+=("$part") ;;
            pascal) with_pascal=1 ;;
        esac
    done
    ((${#widths[@]} == 0)) || need_windows "${widths[@]}"
    [[ -z $with_pascal ]] || need_pascal
    unlock_cache
}

command_setup() {
    [[ ${1:-} != --retry ]] || rm -f "$no_wine32_marker"
    need tools 32 64 pascal
    say "everything is there: cross-built libraries and Wine patterns in $tavrix_cache"
}

# For builds by hand: eval "$(./dev env)".
command_env() {
    local bits
    for bits in 32 64; do
        printf 'export TAVRIX_WINDOWS_PREFIX_%s=%q\n' "$bits" "$(windows_prefix "$bits")"
    done
    printf 'export TAVRIX_PASCAL=%q\n' "$(pascal_folder)"
    printf 'export CCACHE_BASEDIR=%q CCACHE_NOHASHDIR=%q CCACHE_SLOPPINESS=%q\n' \
        "$CCACHE_BASEDIR" "$CCACHE_NOHASHDIR" "$CCACHE_SLOPPINESS"
}
