#include "ports/portable/system_proxy.h"

#include <windows.h>
#include <winhttp.h>

#include <mutex>
#include <optional>

#include "windows/bstr.h"

namespace tavrix::ports {
namespace {

using GlobalText = windows::Owned<wchar_t*, GlobalFree>;
using Session = windows::Owned<HINTERNET, WinHttpCloseHandle>;

base::Text host_of(base::TextView url) {
    const std::size_t scheme = url.find(u"://");
    if (scheme == base::TextView::npos) return {};
    base::TextView host = url.substr(scheme + 3);
    // The colons of an IPv6 address are its own.
    if (host.starts_with(u'[')) return base::Text(host.substr(1, host.find(u']') - 1));
    host = host.substr(0, host.find_first_of(u":/?#"));
    return base::Text(host);
}

bool matches(base::TextView host, base::TextView pattern) {
    // Names without a domain; an IPv6 address has no dots either, and is no name.
    if (pattern == u"<local>") return host.find_first_of(u".:") == base::TextView::npos;
    const std::size_t star = pattern.find(u'*');
    if (star == base::TextView::npos) return base::equal_case_blind(host, pattern);
    const base::TextView before = pattern.substr(0, star);
    const base::TextView after = pattern.substr(star + 1);
    return host.size() >= before.size() + after.size() &&
           base::equal_case_blind(host.substr(0, before.size()), before) &&
           base::equal_case_blind(host.substr(host.size() - after.size()), after);
}

bool is_bypassed(base::TextView host, const base::Text& bypass_list) {
    for (const base::Text& piece : base::split(base::replace_all(bypass_list, u" ", u";"), u';')) {
        if (!piece.empty() && matches(host, piece)) return true;
    }
    return false;
}

// "host:port", or "http=host:port;https=host:port" with an entry for each scheme.
base::Text pick(const base::Text& proxies, base::TextView scheme) {
    for (const base::Text& piece : base::split(base::replace_all(proxies, u" ", u";"), u';')) {
        const std::size_t equals = piece.find(u'=');
        if (equals == base::Text::npos) return piece;
        if (base::equal_case_blind(base::TextView(piece).substr(0, equals), scheme)) {
            return piece.substr(equals + 1);
        }
    }
    return {};
}

struct Prescription {
    base::Text proxies;
    base::Text bypass;
};

// What a configuration script, found or named, says of this address.
std::optional<Prescription> ask_script(const base::Text& url, bool detect,
                                       const wchar_t* script_url) {
    const Session session(WinHttpOpen(L"Tavrix", WINHTTP_ACCESS_TYPE_NO_PROXY,
                                      WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (!session) return std::nullopt;
    WINHTTP_AUTOPROXY_OPTIONS options{};
    options.fAutoLogonIfChallenged = TRUE;
    if (detect) {
        options.dwFlags |= WINHTTP_AUTOPROXY_AUTO_DETECT;
        options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
    }
    if (script_url != nullptr) {
        options.dwFlags |= WINHTTP_AUTOPROXY_CONFIG_URL;
        options.lpszAutoConfigUrl = script_url;
    }
    WINHTTP_PROXY_INFO info{};
    if (WinHttpGetProxyForUrl(session.get(), windows::wide(url), &options, &info) == FALSE) {
        return std::nullopt;
    }
    const GlobalText proxies(info.lpszProxy);
    const GlobalText bypass(info.lpszProxyBypass);
    if (info.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY) return Prescription{};
    return Prescription{windows::text_from_wide(proxies.get()),
                        windows::text_from_wide(bypass.get())};
}

Prescription prescription_for(const base::Text& url) {
    WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
    if (WinHttpGetIEProxyConfigForCurrentUser(&config) == FALSE) return {};
    const GlobalText script(config.lpszAutoConfigUrl);
    const GlobalText proxies(config.lpszProxy);
    const GlobalText bypass(config.lpszProxyBypass);
    if (config.fAutoDetect != FALSE || script) {
        if (auto found = ask_script(url, config.fAutoDetect != FALSE, script.get())) return *found;
    }
    return {windows::text_from_wide(proxies.get()), windows::text_from_wide(bypass.get())};
}

std::string ask_system(const base::Text& url) {
    const Prescription prescription = prescription_for(url);
    if (prescription.proxies.empty() || is_bypassed(host_of(url), prescription.bypass)) return {};
    return base::to_utf8(pick(prescription.proxies, base::TextView(url).substr(0, url.find(u':'))));
}

// Scheme, host and port.
base::Text origin_of(const base::Text& url) {
    const std::size_t scheme = url.find(u"://");
    if (scheme == base::Text::npos) return url;
    return url.substr(0, url.find_first_of(u"/?#", scheme + 3));
}

// Looking for a configuration script takes seconds where there is none, and polling asks every
// second.
constexpr DWORD remembered_ms = 60'000;

struct Memory {
    std::mutex mutex;
    base::Text origin;
    std::string proxy;
    DWORD asked_at = 0;
};

}  // namespace

std::string system_proxy_for(const std::string& url) {
    static Memory memory;
    const base::Text wide_url = base::from_utf8(url);
    base::Text origin = origin_of(wide_url);
    const std::lock_guard lock(memory.mutex);
    if (origin != memory.origin || GetTickCount() - memory.asked_at > remembered_ms) {
        memory.proxy = ask_system(wide_url);
        memory.origin = std::move(origin);
        memory.asked_at = GetTickCount();
    }
    return memory.proxy;
}

}  // namespace tavrix::ports
