source_package=libxslt
native_package=libxslt1-dev
needs=xml

build_library() {
    cmake_configure "$work/source" -DCMAKE_FIND_ROOT_PATH="$xml_folder;/usr/$triplet" \
        -DLIBXSLT_WITH_DEBUGGER=OFF -DLIBXSLT_WITH_MEM_DEBUG=OFF -DLIBXSLT_WITH_MODULES=OFF \
        -DLIBXSLT_WITH_PROFILER=OFF -DLIBXSLT_WITH_PYTHON=OFF -DLIBXSLT_WITH_TESTS=OFF -DLIBXSLT_WITH_XSLT_DEBUG=OFF
    cmake --build "$work/build" -j "$jobs" --target LibXslt
    mkdir -p "$stage/include/libxslt" "$stage/lib"
    cp source/libxslt/*.h build/libxslt/*.h "$stage/include/libxslt/"
    # As with libxml2, no DLL.
    sed -i '1i #define LIBXSLT_STATIC 1' "$stage/include/libxslt/xsltexports.h"
    cp build/libxslt.a "$stage/lib/"
}
