// One request and its answer, free of the HTTP library.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/basics/json.h"

namespace tavrix::sandbox {

/// Which token a request carried.
enum class BearerKind { none, unknown, authentication, access, refresh };
std::string_view to_string(BearerKind kind);

struct Bearer {
    BearerKind kind = BearerKind::none;
    /// Of the authentication the token belongs to; empty for none and unknown.
    std::string authentication_reference;
    bool expired = false;
};

/// What the log keeps of a request, too.
struct RequestHead {
    std::string method;
    /// Path and query exactly as they came, percent-encoding included.
    std::string target;
    /// Decoded, without the query.
    std::string path;
    /// Decoded query parameters in their order.
    std::vector<std::pair<std::string, std::string>> query;
    /// Names as sent.
    std::vector<std::pair<std::string, std::string>> headers;
    /// Number of the TCP connection.
    unsigned connection = 0;
};

struct Request : RequestHead {
    std::string_view body;
    std::string remote_address;
    /// Scheme, host and port the client used, for the addresses in answers.
    std::string origin;

    // Filled while the request is dispatched.
    Bearer bearer;
    /// Decoded values of the route's `{...}` segments in their order.
    std::vector<std::string> parameters;

    /// Value of a header, its name in any case; empty when absent.
    std::string_view header(std::string_view name) const;
    std::optional<std::string> parameter(std::string_view query_name) const;
    std::vector<std::string> parameters_named(std::string_view query_name) const;
    bool wants_problem_details() const { return header("X-Error-Format") == "problem-details"; }
};

struct Answer {
    int status = 200;
    std::string content_type;
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;

    static Answer json(int status, const Json& body);
    static Answer xml(std::string body);
    static Answer html(std::string body);
    static Answer empty(int status) { return {status, {}, {}, {}}; }
};

/// Matches a path against a pattern segment by segment and decodes what stands for `{}`.
bool match_path(std::string_view pattern, std::string_view path,
                std::vector<std::string>& parameters);

}  // namespace tavrix::sandbox
