source_package=openssl
native_package=libssl-dev

build_library() {
    cd source
    # Debian makes the 32-bit assembler position independent for ELF; in this patch's form it does not assemble for
    # Windows, which relocates images without it. Without assembler AES and SHA-256 run several times slower.
    [[ ! -f debian/patches/pic.patch ]] || patch -R -p1 <debian/patches/pic.patch

    local target=mingw64
    [[ $bits == 64 ]] || target=mingw
    # no-module, no-dso, no-engine: nothing is ever loaded from disk; the legacy provider, which old PFX files
    # need, is linked in. no-autoload-config: nor is a configuration file looked for.
    # The last line of switches: protocols and ciphers that neither KSeF, mail nor certificates here have ever used.
    ./Configure "$target" "CC=$triplet-gcc-posix" "AR=$triplet-ar" "RANLIB=$triplet-ranlib" \
        "WINDRES=$triplet-windres" no-shared no-tests no-engine no-dso no-module no-comp no-ssl3 no-srp \
        no-dtls no-ct no-cmp no-sm2 no-sm3 no-sm4 no-aria no-seed no-idea no-mdc2 no-whirlpool no-gost \
        no-autoload-config -D_WIN32_WINNT=0x0601 --prefix="$stage" --libdir=lib

    # The default folders would be this machine's cache, which on Windows names a folder anybody may create.
    local folder="C:/Program Files/Common Files/SSL"
    local places=("OPENSSLDIR=$folder" "ENGINESDIR=$folder/engines" "MODULESDIR=$folder/modules")
    make -j "$jobs" "${places[@]}" build_generated
    make -j "$jobs" "${places[@]}" libcrypto.a libssl.a
    mkdir -p "$stage/include/openssl" "$stage/lib"
    cp include/openssl/*.h "$stage/include/openssl/"
    cp libcrypto.a libssl.a "$stage/lib/"
}
