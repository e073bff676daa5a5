// Refusals and their bodies. Source: the contract's ExceptionResponse, BadRequestProblemDetails,
// UnauthorizedProblemDetails, ForbiddenProblemDetails and TooManyRequestsResponse.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/basics/clock.h"
#include "sandbox/exchange/exchange.h"

namespace tavrix::sandbox {

/// The exception codes in use, with the descriptions the contract publishes.
enum class ErrorCode {
    bad_challenge = 21111,
    invoice_limit_reached = 21155,
    wrong_part_size = 21157,
    too_many_parts = 21161,
    invoice_not_found = 21164,
    invoice_not_yet_available = 21165,
    correction_already_done = 21166,
    correction_not_allowed = 21167,
    session_not_found = 21173,
    upo_not_found = 21178,
    session_status = 21180,
    outside_data = 21183,
    part_missing = 21205,
    upload_time_over = 21208,
    not_authorised = 21301,
    not_authenticated = 21304,
    wrong_size = 21402,
    wrong_hash = 21403,
    invalid_input = 21405,
    bad_continuation_token = 21418,
    unknown_key = 21470,
    permissions_not_held = 26001,
};

/// A request answered with an error. The dispatcher makes the answer, because only it knows the
/// request and the time.
struct Refusal {
    std::function<Answer(const Request& request, Instant now, const TimeFormat& time)> answer;
};

/// 400 with one exception code; what a client must correct.
Refusal bad_request(ErrorCode code, std::string detail = {});
/// 400 with code 21405 and the validator's text.
Refusal invalid_input(std::string detail);
/// 401: no token, a foreign or expired one, or one of the wrong kind.
Refusal unauthorized();
/// 403: the token's permissions do not cover the operation.
Refusal forbidden(std::vector<std::string> required, std::vector<std::string> present);
/// 403: the access token is not good for the address it is used from.
Refusal address_not_allowed(std::string client_ip);
/// 429 with the seconds to wait. \param window_name "sekundę", "minutę" or "godzinę".
Refusal too_many_requests(int limit, std::string_view window_name, int retry_after_s);

/// The answer to the last, when no problem details are asked for.
Answer too_many_requests_answer(int limit, std::string_view window_name, int retry_after_s);

}  // namespace tavrix::sandbox
