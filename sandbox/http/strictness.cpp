#include "sandbox/http/strictness.h"

#include <algorithm>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

std::ptrdiff_t count(const Request& request, std::string_view name) {
    return std::count_if(request.headers.begin(), request.headers.end(),
                         [&](const auto& header) { return lower(header.first) == name; });
}

bool consists_of(std::string_view text, std::string_view allowed) {
    return text.find_first_not_of(allowed) == std::string_view::npos;
}

constexpr std::string_view digits = "0123456789";
/// It comes back in the addresses of answers and pages, so nothing else may stand in it.
constexpr std::string_view host_characters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~%[]:";

}  // namespace

HeadScanner::Progress HeadScanner::refuse(int status, const char* why) {
    refusal_ = {status, why};
    return Progress::refused;
}

HeadScanner::Progress HeadScanner::end_line() {
    const bool empty = at_ - line_ == 1;
    line_ = at_ + 1;
    if (empty && lines_ > 0) return Progress::whole;
    if (empty)
        begin_ = line_;
    else if (++lines_ > most_headers + 1)
        return refuse(431, "too many headers");
    return Progress::wanting;
}

HeadScanner::Progress HeadScanner::scan(std::string_view received) {
    for (; at_ < received.size(); last_ = received[at_++]) {
        const char c = received[at_];
        if ((c == '\n') != (last_ == '\r')) return refuse(400, "lines end with CR and LF");
        if (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\r' && c != '\n')
            return refuse(400, "a control character");
        if (at_ == line_ && (c == ' ' || c == '\t'))
            return refuse(400, "a line begins with a blank; folded headers are obsolete");
        if (lines_ == 0 && at_ >= longest_request_line)
            return refuse(414, "the request line is too long");
        if (at_ >= longest_head) return refuse(431, "the headers are too long");
        if (c != '\n') continue;
        if (const Progress progress = end_line(); progress != Progress::wanting) return progress;
    }
    return Progress::wanting;
}

TransportRefusal judge_framing(const Request& request, bool http_1_1) {
    const auto hosts = count(request, "host");
    if (hosts > 1 || (http_1_1 && hosts == 0)) return {400, "one Host header is needed"};
    if (!consists_of(request.header("Host"), host_characters)) return {400, "no host: Host"};
    if (!request.target.starts_with('/') && !(request.method == "OPTIONS" && request.target == "*"))
        return {400, "the target is no path"};

    const auto lengths = count(request, "content-length");
    if (lengths > 1 || !consists_of(request.header("Content-Length"), digits))
        return {400, "one Content-Length is allowed, a number"};
    // The parser has refused both headers together.
    if (count(request, "transfer-encoding") > 0) {
        if (!http_1_1) return {400, "Transfer-Encoding came with HTTP 1.1"};
        if (lower(std::string(request.header("Transfer-Encoding"))) != "chunked")
            return {501, "chunked is the only Transfer-Encoding known here"};
        if (count(request, "transfer-encoding") > 1) return {400, "two Transfer-Encodings"};
    }
    if (const std::string_view expected = request.header("Expect");
        !expected.empty() && lower(std::string(expected)) != "100-continue")
        return {417, "100-continue is all that can be expected"};
    return {};
}

}  // namespace tavrix::sandbox
