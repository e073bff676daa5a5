#include "sandbox/http/message.h"

#include <algorithm>
#include <boost/beast/http/status.hpp>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

std::vector<std::pair<std::string, std::string>> read_query(std::string_view target) {
    std::vector<std::pair<std::string, std::string>> query;
    std::size_t at = std::min(target.find('?'), target.size());
    while (++at < target.size()) {
        const std::size_t end = std::min(target.find('&', at), target.size());
        const std::string_view part = target.substr(at, end - at);
        const std::size_t equals = std::min(part.find('='), part.size());
        query.emplace_back(percent_decode(part.substr(0, equals), true),
                           percent_decode(part.substr(std::min(equals + 1, part.size())), true));
        at = end;
    }
    return query;
}

}  // namespace

void complete_request(Request& request, std::string_view scheme, const std::string& local_host) {
    std::string host(request.header("Host"));
    if (host.empty()) host = local_host;
    for (const std::string_view start : {"http://", "https://"}) {
        if (!lower(request.target.substr(0, start.size())).starts_with(start)) continue;
        const std::size_t end =
            std::min(request.target.find_first_of("/?", start.size()), request.target.size());
        host = request.target.substr(start.size(), end - start.size());
        request.target.erase(0, end);
        if (!request.target.starts_with('/')) request.target.insert(0, "/");
    }
    request.origin = std::string(scheme) + "://" + host;
    const std::string_view target = request.target;
    request.path = percent_decode(target.substr(0, target.find('?')));
    request.query = read_query(target);
}

std::string answer_text(const Answer& answer, const Framing& framing) {
    const auto reason = boost::beast::http::obsolete_reason(
        boost::beast::http::int_to_status(static_cast<unsigned>(answer.status)));
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " " +
                       std::string(reason.data(), reason.size()) + "\r\n";
    const auto add = [&](const std::string& name, const std::string& value) {
        // A line break in it would begin another header.
        if ((name + value).find_first_of("\r\n") == std::string::npos)
            text += name + ": " + value + "\r\n";
    };
    const auto add_own = [&](const char* name, const std::string& value) {
        if (std::none_of(answer.headers.begin(), answer.headers.end(),
                         [&](const auto& header) { return lower(header.first) == lower(name); }))
            add(name, value);
    };
    for (const auto& [name, value] : answer.headers) add(name, value);
    if (!answer.body.empty()) add_own("Content-Type", answer.content_type);
    // These two never have a body, and a length would announce one (RFC 9110, 8.6).
    const bool bodiless = answer.status < 200 || answer.status == 204;
    if (!bodiless) add_own("Content-Length", std::to_string(answer.body.size()));
    add_own("Connection", framing.keeps_open ? "keep-alive" : "close");
    if (framing.keeps_open) add_own("Keep-Alive", "timeout=" + std::to_string(framing.idle_s));
    text += "\r\n";
    if (!bodiless && !framing.head_only && answer.status != 304) text += answer.body;
    return text;
}

}  // namespace tavrix::sandbox
