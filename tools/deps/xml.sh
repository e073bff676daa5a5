source_package=libxml2
native_package=libxml2-dev

build_library() {
    # What reads documents and schemas, and what style sheets stand on. Nothing is fetched and nothing unpacked;
    # encodings are UTF-8, UTF-16, Latin-1 and ASCII, because no library of others is linked.
    local part off=()
    for part in C14N CATALOG DEBUG DOCB FTP HTTP ICONV ICU ISO8859X LEGACY LZMA MEM_DEBUG MODULES PROGRAMS PYTHON \
        RUN_DEBUG SCHEMATRON TESTS WRITER ZLIB; do
        off+=("-DLIBXML2_WITH_$part=OFF")
    done
    cmake_configure "$work/source" -DCMAKE_FIND_ROOT_PATH="/usr/$triplet" "${off[@]}"
    cmake --build "$work/build" -j "$jobs" --target LibXml2
    cmake --install "$work/build" --component development
    # There is no DLL of it to import from, which whoever includes it would have to say otherwise.
    sed -i '1i #define LIBXML_STATIC 1' "$stage/include/libxml2/libxml/xmlexports.h"
}
