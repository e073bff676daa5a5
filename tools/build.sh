# ./dev build: configure once, build what changed. Sourced, never run.

all_doors=(native win32 win64 asan)

# Two checkouts, or two worktrees of one, share what they compiled: paths count from the checkout's root. What uses a
# precompiled header (the sandbox) is only kept when ccache is told that macros of it and of the time do not matter.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1 CCACHE_SLOPPINESS=pch_defines,time_macros

bits_of() { echo "${1#win}"; }
is_windows() { [[ $1 == win* ]]; }

check_doors() {
    local door
    for door in "$@"; do
        [[ " ${all_doors[*]} " == *" $door "* ]] || die "unknown build '$door'; there are: ${all_doors[*]}"
    done
}

need_for_doors() {
    local door parts=(tools)
    for door in "$@"; do
        is_windows "$door" && parts+=("$(bits_of "$door")")
    done
    need "${parts[@]}"
}

configure_door() {
    local door=$1 folder=$root/build/$1 prefix options=() cached=''
    [[ -f $folder/CMakeCache.txt ]] && cached=$(sed -n 's/^TAVRIX_WINDOWS_PREFIX:[A-Z]*=//p' "$folder/CMakeCache.txt")
    if is_windows "$door"; then
        prefix=$(windows_prefix "$(bits_of "$door")")
        options+=("-DTAVRIX_WINDOWS_PREFIX=$prefix")
        # CMake remembers where it found each library; a new prefix is a new beginning.
        [[ $cached == "$prefix" ]] || options+=(--fresh)
    fi
    if [[ ! -f $folder/build.ninja || " ${options[*]} " == *" --fresh "* ]]; then
        command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        (cd "$root" && cmake --preset "$door" "${options[@]}")
    fi
}

build_door() {
    local door=$1 targets=("${@:2}")
    configure_door "$door"
    cmake --build "$root/build/$door" -j "$jobs" ${targets[@]:+--target "${targets[@]}"}
}

# build_step door [target...]: all targets unless told. Leaves how it went in step_status, so that a test run goes on to
# the next door.
build_step() {
    try_step "build $1" "mend what the compiler says; ninja -C build/$1 repeats it by hand" build_door "$@"
}

# What the demonstration runs and no more: who wants to see it should not wait for the tests to be compiled.
build_demo_door() {
    case $1 in
        native) build_step native tavrix tavrix-sandbox ;;
        win32) build_step win32 tavrix_dll tavrix_dev_ado ;;
    esac
    ((step_status == 0)) || exit "$step_status"
}

build_doors() {
    local door
    for door in "$@"; do
        build_step "$door"
        ((step_status == 0)) || exit "$step_status"
    done
}

command_build() {
    local doors=("$@") door
    ((${#doors[@]} > 0)) || doors=(native win32 win64)
    check_doors "${doors[@]}"
    need_for_doors "${doors[@]}"
    build_doors "${doors[@]}"
    for door in "${doors[@]}"; do say "results: build/$door/bin"; done
}

command_clean() {
    local bits
    for bits in 32 64; do
        [[ ! -d $(wine_folder "$bits") ]] || "$root/tools/wine-run" "$bits" --server --kill 2>/dev/null || true
    done
    rm -rf "$root/build"
    if [[ ${1:-} == --cache ]]; then
        rm -rf "$tavrix_cache"
        say "removed build/ and $tavrix_cache; the next ./dev command makes both again"
    else
        say "removed build/; the cross-built libraries stay in $tavrix_cache (./dev clean --cache removes them too)"
    fi
}
