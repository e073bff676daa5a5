source_package=curl
native_package=libcurl4-openssl-dev
needs=openssl

build_library() {
    # HTTP, POP3 and SMTP, each with TLS; the rest would only be attack surface in the host's process.
    local protocol off=()
    for protocol in DICT FILE FTP GOPHER IMAP LDAP LDAPS MQTT RTSP SMB TELNET TFTP; do
        off+=("-DCURL_DISABLE_$protocol=ON")
    done
    cmake_for_windows "$work/source" "${off[@]}" \
        -DCMAKE_FIND_ROOT_PATH="$openssl_folder;/usr/$triplet" -DOPENSSL_USE_STATIC_LIBS=ON \
        -DCURL_USE_OPENSSL=ON -DCURL_USE_SCHANNEL=OFF -DCURL_CA_BUNDLE=none -DCURL_CA_PATH=none \
        -DUSE_LIBIDN2=OFF -DUSE_WIN32_IDN=ON -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DUSE_NGHTTP2=OFF \
        -DCURL_ZLIB=OFF -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DUSE_WIN32_LDAP=OFF -DENABLE_UNICODE=ON \
        -DCURL_TARGET_WINDOWS_VERSION=0x0601 \
        -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF -DHTTP_ONLY=OFF
}
