source_package=libarchive
native_package=libarchive-dev
needs=zlib

build_library() {
    # ZIP and tar, stored or deflated, is what a package may be; the other libraries it can use are not asked for.
    local part off=()
    for part in ACL BZip2 CAT CNG CPIO EXPAT ICONV LIBB2 LIBXML2 LZ4 LZMA LZO MBEDTLS NETTLE OPENSSL PCREPOSIX TAR TEST \
        WERROR XATTR ZSTD; do
        off+=("-DENABLE_$part=OFF")
    done
    # It would run a program to learn how zlib was built, which a cross build cannot.
    cmake_configure "$work/source" -DCMAKE_FIND_ROOT_PATH="$zlib_folder;/usr/$triplet" "${off[@]}" -DENABLE_ZLIB=ON \
        -DZLIB_LIBRARY="$zlib_folder/lib/libz.a" -DZLIB_INCLUDE_DIR="$zlib_folder/include" \
        -DZLIB_WINAPI=OFF "-DZLIB_WINAPI_WITH_LIB=$zlib_folder/lib/libz.a"
    cmake --build "$work/build" -j "$jobs" --target archive_static
    mkdir -p "$stage/include" "$stage/lib"
    cp source/libarchive/archive.h source/libarchive/archive_entry.h "$stage/include/"
    cp "$(find build -name 'libarchive*.a')" "$stage/lib/libarchive.a"
}
