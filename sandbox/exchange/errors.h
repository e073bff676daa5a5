// Refusals and their bodies. Source: the contract's ExceptionResponse, BadRequestProblemDetails,
// UnauthorizedProblemDetails, ForbiddenProblemDetails and TooManyRequestsResponse.
#pragma once

#include <stdexcept>
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
    invoice_not_found = 21164,
    invoice_not_yet_available = 21165,
    correction_already_done = 21166,
    correction_not_allowed = 21167,
    session_not_found = 21173,
    upo_not_found = 21178,
    session_status = 21180,
    not_authorised = 21301,
    not_authenticated = 21304,
    wrong_size = 21402,
    wrong_hash = 21403,
    invalid_input = 21405,
    bad_continuation_token = 21418,
    unknown_key = 21470,
    permissions_not_held = 26001,
};
std::string_view description_of(ErrorCode code);

/// A request answered with an error; the dispatcher makes the body.
class Refusal : public std::exception {
  public:
    explicit Refusal(int http_status) : http_status_(http_status) {}
    const char* what() const noexcept override { return "refused"; }
    int http_status() const { return http_status_; }
    virtual Answer answer(const Request& request, Instant now, const TimeFormat& time) const = 0;

  private:
    int http_status_;
};

/// 400 with one exception code; what a client must correct.
class BadRequest : public Refusal {
  public:
    explicit BadRequest(ErrorCode code, std::vector<std::string> details = {})
        : Refusal(400), code_(code), details_(std::move(details)) {}
    Answer answer(const Request& request, Instant now, const TimeFormat& time) const override;

  private:
    ErrorCode code_;
    std::vector<std::string> details_;
};

/// 400 with code 21405 and the validator's texts.
BadRequest invalid_input(std::string detail);

/// 401: no token, a foreign or expired one, or one of the wrong kind.
class Unauthorized : public Refusal {
  public:
    Unauthorized() : Refusal(401) {}
    Answer answer(const Request& request, Instant now, const TimeFormat& time) const override;
};

/// 403: the token's permissions do not cover the operation.
class Forbidden : public Refusal {
  public:
    Forbidden(std::vector<std::string> required, std::vector<std::string> present)
        : Refusal(403), required_(std::move(required)), present_(std::move(present)) {}
    Answer answer(const Request& request, Instant now, const TimeFormat& time) const override;

  private:
    std::vector<std::string> required_, present_;
};

/// 410: kept no longer.
class Gone : public Refusal {
  public:
    Gone() : Refusal(410) {}
    Answer answer(const Request& request, Instant now, const TimeFormat& time) const override;
};

/// 429 with the seconds to wait.
class TooManyRequests : public Refusal {
  public:
    /// \param window_name "sekundę", "minutę" or "godzinę".
    TooManyRequests(int limit, std::string_view window_name, int retry_after_s);
    Answer answer(const Request& request, Instant now, const TimeFormat& time) const override;

  private:
    std::string text_;
    int retry_after_s_;
};

}  // namespace tavrix::sandbox
