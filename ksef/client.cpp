#include "ksef/client.h"

#include "base/secret.h"
#include "ksef/environment.h"

namespace tavrix::ksef {
namespace {

// Scheme, host and port of an address; empty when it is not http or https.
std::string_view origin_of(std::string_view url) {
    for (const std::string_view scheme : {"https://", "http://"}) {
        if (url.starts_with(scheme))
            return url.substr(0, url.find_first_of("/?#\\", scheme.size()));
    }
    return {};
}

bool is_encrypted(std::string_view url) {
    return url.starts_with("https://");
}

}  // namespace

base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix, base::TextView code) {
    if (!reply.body.empty()) return base::from_utf8(reply.body);
    return base::Text(prefix) + base::Text(code);
}

base::Text failure_text(const ports::HttpReply& reply, base::TextView prefix) {
    return failure_text(reply, prefix, base::to_decimal(reply.status));
}

std::string path_segment(std::string_view text) {
    constexpr std::string_view unreserved =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr char digits[] = "0123456789ABCDEF";
    // A segment of dots would be read as a step up the path.
    const bool only_dots = text == "." || text == "..";
    std::string encoded;
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

void replace_secret(std::string& secret, std::string value) {
    base::wipe(secret);
    secret = std::move(value);
}

ClientState::~ClientState() {
    for (std::string* secret :
         {&authentication_token, &access_token, &refresh_token, &authorization_}) {
        base::wipe(*secret);
    }
}

void ClientState::select_environment(std::int32_t environment) {
    base_url = base_address(ports_.settings.service, environment);
}

void ClientState::set_bearer(const std::string& token) {
    replace_secret(authorization_, "Bearer " + token);
}

std::string ClientState::url_of(const std::string& path) const {
    constexpr std::string_view published_root = "/api/v2";
    const base::Text& root = ports_.settings.path_root;
    if (!root.empty() && path.starts_with(published_root)) {
        return base::to_utf8(base_url + root) + path.substr(published_root.size());
    }
    return base::to_utf8(base_url) + path;
}

ports::HttpReply ClientState::send(std::string method, std::string url, std::string body,
                                   bool with_authorization) {
    if (!http_) http_ = ports_.make_http();
    ports::HttpRequest request{std::move(method), std::move(url), {}, std::move(body)};
    request.headers.push_back({"Accept", "application/json"});
    request.headers.push_back({"Content-Type", "application/json"});
    if (with_authorization && !authorization_.empty()) {
        request.headers.push_back({"Authorization", authorization_});
    }
    ports::HttpReply reply = http_->send(request);
    for (ports::HttpHeader& header : request.headers) base::wipe(header.value);
    return reply;
}

ports::HttpReply ClientState::get(const std::string& path) {
    return send("GET", url_of(path), "", true);
}

ports::HttpReply ClientState::post(const std::string& path, const Json& body) {
    return send("POST", url_of(path), body.dump(), true);
}

ports::HttpReply ClientState::get_address(const std::string& url) {
    const std::string service = base::to_utf8(base_url);
    const std::string_view origin = origin_of(url);
    if (origin.empty() || (is_encrypted(service) && !is_encrypted(url))) {
        ports::HttpReply refused;
        refused.error = "the address is not one to fetch from";
        return refused;
    }
    return send("GET", url, "", origin == origin_of(service));
}

void ClientState::close_with_authentication_token() {
    post("/api/v2/sessions/online/" + path_segment(authentication_token + " ") + "/close",
         Json::object());
}

}  // namespace tavrix::ksef
