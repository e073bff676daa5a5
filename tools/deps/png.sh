source_package=libpng1.6
native_package=libpng-dev
needs=zlib

build_library() {
    # Pictures are small: no assembler, none of the programs beside the library.
    cmake_for_windows "$work/source" -DCMAKE_FIND_ROOT_PATH="$zlib_folder;/usr/$triplet" \
        -DPNG_SHARED=OFF -DPNG_STATIC=ON -DPNG_TESTS=OFF -DPNG_HARDWARE_OPTIMIZATIONS=OFF
}
