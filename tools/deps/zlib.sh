# Debian has it cross-built already; only the static library is taken, so that no DLL is ever linked.
native_package=libz-mingw-w64-dev

build_library() {
    mkdir -p "$stage/include" "$stage/lib"
    cp "/usr/$triplet/include/zlib.h" "/usr/$triplet/include/zconf.h" "$stage/include/"
    cp "/usr/$triplet/lib/libz.a" "$stage/lib/"
}
