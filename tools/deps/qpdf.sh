source_package=qpdf
native_package=libqpdf-dev
needs="zlib jpeg"

build_library() {
    # It asks pkg-config first, which would answer with this machine's own libraries; and it relies on a header that
    # this compiler's standard library no longer brings along.
    export PKG_CONFIG_LIBDIR=$work/none
    cmake_configure "$work/source" -DCMAKE_FIND_ROOT_PATH="$zlib_folder;$jpeg_folder;/usr/$triplet" \
        -DCMAKE_CXX_FLAGS="$windows_flags -include cstdint" \
        -DBUILD_SHARED_LIBS=OFF -DBUILD_STATIC_LIBS=ON -DBUILD_DOC=OFF -DINSTALL_EXAMPLES=OFF \
        -DUSE_IMPLICIT_CRYPTO=OFF -DREQUIRE_CRYPTO_NATIVE=ON
    # The programs and examples beside the library are not built, so neither is all of it installed.
    cmake --build "$work/build" -j "$jobs" --target libqpdf
    cmake --install "$work/build" --component dev
}
