# Headers only; the installed package is the same on every platform.
native_package=nlohmann-json3-dev

build_library() {
    mkdir -p "$stage/include" "$stage/share/cmake"
    cp -a /usr/include/nlohmann "$stage/include/"
    cp -a /usr/share/cmake/nlohmann_json "$stage/share/cmake/"
}
