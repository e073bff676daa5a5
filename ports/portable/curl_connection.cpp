#include "ports/portable/curl_connection.h"

#include <mutex>
#include <new>

#include "ports/portable/openssl_lifetime.h"
#include "ports/portable/system_proxy.h"

namespace tavrix::ports {

CurlEasy make_curl_easy() {
    static std::once_flag once;
    std::call_once(once, [] {
        start_openssl();
        curl_global_init(CURL_GLOBAL_ALL);
    });
    CurlEasy handle(curl_easy_init());
    if (!handle) throw std::bad_alloc();
    return handle;
}

void set_connection_options(CURL* handle, const ConnectionSettings& settings,
                            const std::string& url) {
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
    // Windows' own store of trusted roots; elsewhere libcurl has the distribution's and ignores
    // this.
    curl_easy_setopt(handle, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
    if (!settings.private_ca_file.empty()) {
        curl_easy_setopt(handle, CURLOPT_CAINFO, settings.private_ca_file.c_str());
    }
    if (settings.proxy == "direct") {
        curl_easy_setopt(handle, CURLOPT_PROXY, "");
        return;
    }
    const std::string proxy = settings.proxy.empty() ? system_proxy_for(url) : settings.proxy;
    if (!proxy.empty()) curl_easy_setopt(handle, CURLOPT_PROXY, proxy.c_str());
}

}  // namespace tavrix::ports
