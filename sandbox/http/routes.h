// The table of operations: where they are, what they are called, who may use them.
#pragma once

#include <span>
#include <string_view>

#include "sandbox/exchange/rate_limits.h"
#include "sandbox/service/operations.h"

namespace tavrix::sandbox {

/// The token an operation wants.
enum class Need {
    nothing,
    authentication_token,
    access_token,
    refresh_token,
    access_or_refresh_token
};

/// Who may use an operation.
struct Access {
    Need need;
    /// The caller's token must hold one of these; none named means none needed.
    std::span<const std::string_view> permissions;
};

struct Route {
    std::string_view method;
    /// Segments between slashes; `{}` stands for any one segment.
    std::string_view pattern;
    /// Name of the step in faults, logs and counters.
    std::string_view step;
    RateGroup group;
    Access access;
    Operation* handler;
};

/// Operations of the published interface; their patterns stand under `/v2` and `/api/v2`.
std::span<const Route> interface_routes();
/// Steps that are no operations: what happens behind the scenes.
std::span<const std::string_view> processing_steps();

/// True for the name of an operation or of a processing step, and for `*`.
bool is_step(std::string_view name);

/// Finds the operation of a request and fills its parameters. The undecoded path is matched, so an
/// encoded slash stays inside its segment. Null when there is none; `path_known` tells whether
/// another method would have found one.
const Route* find_route(std::span<const Route> routes, Request& request, std::string_view raw_path,
                        bool& path_known);

}  // namespace tavrix::sandbox
