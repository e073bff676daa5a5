#include "ksef/client.h"

#include <algorithm>

#include "ksef/environment.h"

namespace tavrix::ksef {
namespace {

bool is_encrypted(std::string_view url) {
    return url.starts_with("https://");
}

// An http(s) address that every parser reads the same way: no user information, no backslash,
// blank or control character.
bool is_plain_address(std::string_view url) {
    if (!is_encrypted(url) && !url.starts_with("http://")) return false;
    const auto is_odd = [](char c) { return c <= ' ' || c == 0x7F || c == '\\'; };
    if (std::ranges::any_of(url, is_odd)) return false;
    const std::string_view host = url.substr(url.find("//") + 2);
    return host.substr(0, host.find_first_of("/?#")).find('@') == std::string_view::npos;
}

}  // namespace

base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix, base::TextView code) {
    if (!reply.body.empty()) return base::from_utf8(reply.body.view());
    return base::Text(prefix) + base::Text(code);
}

base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix) {
    return failure_text(reply, prefix, base::to_decimal(reply.status));
}

base::SecretUtf8 secret_path_segment(std::string_view text) {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr char digits[] = "0123456789ABCDEF";
    // A segment of dots would be read as a step up the path.
    const bool only_dots = text == "." || text == "..";
    base::SecretUtf8 encoded;
    for (const char c : text) {
        if (unreserved.find(c) != std::string_view::npos && !only_dots) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += digits[byte >> 4];
            encoded += digits[byte & 15];
        }
    }
    return encoded;
}

std::string path_segment(std::string_view text) {
    return std::string(secret_path_segment(text).view());
}

void Client::select_environment(std::int32_t environment) {
    base_url = base_address(ports_.settings.service, environment);
}

void Client::set_bearer(const base::SecretUtf8& token) {
    constexpr std::string_view scheme = "Bearer ";
    base::SecretUtf8 authorization;
    authorization.reserve(scheme.size() + token.size());
    authorization += scheme;
    authorization += token.view();
    authorization_ = std::move(authorization);
}

base::SecretUtf8 Client::url_of(std::string_view path) const {
    constexpr std::string_view published_root = "/api/v2";
    base::Text root = base_url;
    if (!ports_.settings.path_root.empty() && path.starts_with(published_root)) {
        root += ports_.settings.path_root;
        path.remove_prefix(published_root.size());
    }
    base::SecretUtf8 url(base::to_utf8(root));
    url += path;
    return url;
}

ports::HttpReply Client::send(ports::HttpRequest request, bool with_authorization) {
    if (!http_) http_ = ports_.make_http();
    request.headers.push_back({"Accept", "application/json"});
    request.headers.push_back({"Content-Type", "application/json"});
    if (with_authorization) request.authorization = authorization_.copy();
    return http_->send(request);
}

ports::HttpReply Client::get(std::string_view path) {
    return send({"GET", url_of(path)}, true);
}

ports::HttpReply Client::post(std::string_view path, const Body& body) {
    return send({"POST", url_of(path), body.dump()}, true);
}

ports::HttpReply Client::get_address(std::string_view url) {
    const std::string service = base::to_utf8(base_url);
    if (!is_plain_address(url) || (is_encrypted(service) && !is_encrypted(url))) {
        ports::HttpReply refused;
        refused.error = "the address is not one to fetch from";
        return refused;
    }
    return send({"GET", base::SecretUtf8(url)}, false);
}

void Client::close_with_authentication_token() {
    base::SecretUtf8 path("/api/v2/sessions/online/");
    path += secret_path_segment(authentication_token.view()).view();
    path += "%20/close";
    post(path.view(), Body::object());
}

}  // namespace tavrix::ksef
