# Headers only; the installed package is the same on every platform.
native_package=libcli11-dev

build_library() {
    mkdir -p "$stage/include" "$stage/share/cmake"
    cp -a /usr/include/CLI "$stage/include/"
    cp -a /usr/share/cmake/CLI11 "$stage/share/cmake/"
}
