# Debian ships these sources installed, for exactly this use.
native_package=googletest

build_library() {
    # Only tests link it, and whoever builds it waits longer than it ever runs.
    windows_flags=${windows_flags/-O2/-O0}
    windows_flags=${windows_flags/-D_FORTIFY_SOURCE=2/}
    cmake_for_windows /usr/src/googletest -DBUILD_GMOCK=ON
}
