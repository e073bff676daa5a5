# What the recipes share. A recipe sets
#   source_package   Debian source package to build from, empty when the sources come with an installed package
#   native_package   installed package whose version this library follows
#   needs            libraries of this folder it links
# and defines build_library, which runs in an empty folder $work with the unpacked $work/source and fills $stage.
# Given: $bits, $triplet, $jobs, $stage, and <library>_folder for each needed library.

# Nothing newer than Windows 7 SP1 may be called, so nothing newer is declared.
windows_flags="-O2 -D_WIN32_WINNT=0x0601 -DWINVER=0x0601 -DNTDDI_VERSION=0x06010000"
# What overwrites a buffer ends the program instead of going on; and what is not used can be left out of it.
windows_hardening="-fstack-protector-strong -D_FORTIFY_SOURCE=2 -ffunction-sections -fdata-sections"
# The folder of a build has another name each time, and would be found in every program linked with it.
windows_flags+=" $windows_hardening -ffile-prefix-map=$work=."

cmake_configure() {
    local source=$1
    shift
    cmake -S "$source" -B "$work/build" -G Ninja \
        -DCMAKE_SYSTEM_NAME=Windows -DCMAKE_SYSTEM_PROCESSOR="${triplet%%-*}" \
        -DCMAKE_C_COMPILER="$triplet-gcc-posix" -DCMAKE_CXX_COMPILER="$triplet-g++-posix" \
        -DCMAKE_RC_COMPILER="$triplet-windres" \
        -DCMAKE_C_FLAGS="$windows_flags" -DCMAKE_CXX_FLAGS="$windows_flags" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY \
        -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY \
        -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_INSTALL_PREFIX="$stage" "$@"
}

cmake_for_windows() {
    cmake_configure "$@"
    cmake --build "$work/build" -j "$jobs"
    cmake --install "$work/build"
}

# shellcheck disable=SC2086
compile_c() { "$triplet-gcc-posix" $windows_flags "$@"; }
# shellcheck disable=SC2086
compile_cpp() { "$triplet-g++-posix" $windows_flags "$@"; }
