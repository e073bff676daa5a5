source_package=libjpeg-turbo
native_package=libjpeg62-turbo-dev

build_library() {
    # Without SIMD: it would need another assembler, for pictures the size of a signature.
    cmake_configure "$work/source" -DENABLE_SHARED=OFF -DENABLE_STATIC=ON -DWITH_TURBOJPEG=OFF -DWITH_JAVA=OFF \
        -DWITH_SIMD=OFF -DCMAKE_FIND_ROOT_PATH="/usr/$triplet"
    # Only the library and what compiles against it.
    cmake --build "$work/build" -j "$jobs" --target jpeg-static
    mkdir -p "$stage/include" "$stage/lib"
    cp source/jpeglib.h source/jmorecfg.h source/jerror.h build/jconfig.h "$stage/include/"
    cp build/libjpeg.a "$stage/lib/"
}
