#include "ksef/client.h"

#include <algorithm>
#include <charconv>

#include "base/error.h"
#include "ksef/environment.h"

namespace tavrix::ksef {
namespace {

constexpr std::chrono::minutes longest_call{30};
// The service cancels a session that is open for longer.
constexpr std::chrono::hours longest_session{12};

ports::HttpReply refused_address() {
    ports::HttpReply reply;
    reply.error = "the address is not one to reach";
    return reply;
}

// The value of `Retry-After` (RFC 9110, 10.2.3) in seconds; none when it is absent, or a date.
std::optional<std::chrono::seconds> retry_after(const ports::HttpReply& reply) {
    for (const auto& [name, value] : reply.headers) {
        if (!base::equal_case_blind(base::from_utf8(name), u"Retry-After")) continue;
        std::uint32_t seconds = 0;
        const char* const end = value.data() + value.size();
        const auto [stop, error] = std::from_chars(value.data(), end, seconds);
        if (error == std::errc() && stop == end) return std::chrono::seconds(seconds);
    }
    return std::nullopt;
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

void Client::begin_call(std::int32_t environment) {
    base_url = base_address(ports_.settings.service, environment);
    least_patience_ = {};
    renew_time();
}

void Client::honour_retry_after() {
    least_patience_ = std::chrono::minutes(1);
}

void Client::renew_time() {
    call_ends_at_ = ports_.clock.steady_now() + longest_call;
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

ports::Http& Client::http() {
    if (!http_) http_ = ports_.make_http();
    return *http_;
}

ports::HttpReply Client::send(ports::HttpRequest request, bool with_authorization,
                              int most_repeats) {
    request.headers.push_back({"Accept", "application/json"});
    request.headers.push_back({"Content-Type", "application/json"});
    if (with_authorization) request.authorization = authorization_.copy();
    for (int repeats = 0;; ++repeats) {
        request.time_limit = call_ends_at_ - ports_.clock.steady_now();
        if (request.time_limit->count() <= 0) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                        u"Przekroczono czas całego wywołania");
        }
        ports::HttpReply reply = http().send(request);
        last_status = reply.status;
        const auto pause = pause_before_repeating(reply);
        if (!pause || repeats == most_repeats) return reply;
        ports_.clock.sleep(*pause);
    }
}

// At least a second: a server that says 0 is not to be asked without a pause.
std::optional<std::chrono::seconds> Client::pause_before_repeating(
    const ports::HttpReply& reply) const {
    if (!answered(reply, 429)) return std::nullopt;
    const auto asked = retry_after(reply);
    if (!asked) return std::nullopt;
    const auto pause = std::max(*asked, std::chrono::seconds(1));
    const bool in_time = ports_.clock.steady_now() + pause < call_ends_at_;
    const auto patience = std::max(ports_.settings.retry_after_limit, least_patience_);
    return in_time && pause <= patience ? std::optional(pause) : std::nullopt;
}

ports::HttpReply Client::get(std::string_view path, std::vector<ports::HttpHeader> headers) {
    return send({"GET", url_of(path), {}, std::move(headers)}, true);
}

ports::HttpReply Client::post(std::string_view path, const Body& body) {
    return send({"POST", url_of(path), body.dump()}, true);
}

ports::HttpReply Client::post_once(std::string_view path, const Body& body) {
    ports::HttpRequest request{"POST", url_of(path), body.dump()};
    request.only_once = true;
    return send(std::move(request), true);
}

bool Client::may_reach(const ports::Http& http, std::string_view url) const {
    using ports::AddressKind;
    const AddressKind kind = http.kind_of(url);
    const AddressKind service = http.kind_of(base::to_utf8(base_url));
    return kind == AddressKind::https ||
           (kind == AddressKind::http && service != AddressKind::https);
}

ports::HttpReply Client::get_address(std::string_view url) {
    if (!may_reach(http(), url)) return refused_address();
    return send({"GET", base::SecretUtf8(url)}, false);
}

ports::HttpReply Client::upload(const std::string& method, std::string_view url,
                                std::vector<ports::HttpHeader> headers,
                                ports::BodySource& source) const {
    const std::unique_ptr<ports::Http> http = ports_.make_http();
    if (method.empty() || !may_reach(*http, url)) return refused_address();
    ports::HttpRequest request{method, base::SecretUtf8(url)};
    request.headers = std::move(headers);
    request.source = &source;
    request.time_limit = longest_session;
    return http->send(request);
}

void Client::close_with_authentication_token() {
    base::SecretUtf8 path("/api/v2/sessions/online/");
    path += secret_path_segment(authentication_token.view()).view();
    path += "%20/close";
    // Nobody reads the answer, so nobody waits for a better one.
    send({"POST", url_of(path.view()), Body::object().dump()}, true, 0);
}

}  // namespace tavrix::ksef
