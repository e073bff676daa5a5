# Debian ships these sources installed, for exactly this use.
native_package=googletest

build_library() { cmake_for_windows /usr/src/googletest -DBUILD_GMOCK=ON; }
