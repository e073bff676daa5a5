source_package=openssl
native_package=libssl-dev

build_library() {
    cd source
    # Debian makes the 32-bit assembler position independent for ELF; in this patch's form it does not assemble for
    # Windows, which relocates images without it. Without assembler AES and SHA-256 run several times slower.
    [[ ! -f debian/patches/pic.patch ]] || patch -R -p1 <debian/patches/pic.patch

    local target=mingw64
    [[ $bits == 64 ]] || target=mingw
    # Nothing is ever loaded from disk: no-module, no-dso, no-engine. The legacy provider, which old PFX files need, is
    # linked in, and no configuration file is looked for.
    local off=(no-shared no-tests no-module no-dso no-engine no-static-engine no-autoload-config no-ui-console no-async
        no-uplink no-filenames)
    # Protocols, formats and ciphers that neither KSeF, mail nor certificates here have ever used. TLS 1.0 and 1.1 stay
    # for old mail servers, RC2, DES and RC4 for old PFX files, MD5 for APOP, scrypt for keys in PEM.
    off+=(no-comp no-ssl3 no-srp no-srtp no-dgram no-dtls no-psk no-nextprotoneg no-ssl-trace no-ct no-cmp no-ts
        no-rfc3779 no-dsa no-ec2m no-gost no-sm2 no-sm3 no-sm4 no-aria no-bf no-blake2 no-camellia no-cast no-idea no-md4
        no-mdc2 no-multiblock no-ocb no-rc5 no-rmd160 no-seed no-siphash no-siv no-whirlpool)
    # What is not used can be left out of a program only when each function has a section of its own. The build's date
    # would make every DLL another one. It remembers its flags too, so none of them may name the folder it is built in.
    export SOURCE_DATE_EPOCH=0
    ./Configure "$target" "CC=$triplet-gcc-posix" "AR=$triplet-ar" "RANLIB=$triplet-ranlib" \
        "WINDRES=$triplet-windres" CPPDEFINES=_WIN32_WINNT=0x0601 CFLAGS="-O2 $windows_hardening" \
        "${off[@]}" --prefix="$stage" --libdir=lib

    # The default folders would be this machine's cache, which on Windows names a folder anybody may create.
    local folder="C:/Program Files/Common Files/SSL"
    local places=("OPENSSLDIR=$folder" "ENGINESDIR=$folder/engines" "MODULESDIR=$folder/modules")
    make -j "$jobs" "${places[@]}" build_generated
    make -j "$jobs" "${places[@]}" libcrypto.a libssl.a
    mkdir -p "$stage/include/openssl" "$stage/lib"
    cp include/openssl/*.h "$stage/include/openssl/"
    cp libcrypto.a libssl.a "$stage/lib/"
}
