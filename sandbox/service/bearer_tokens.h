// The three bearer tokens of an authentication: JSON Web Tokens signed with the sandbox's own
// secret (RFC 7519, HS256), so that they stay good over a restart.
#pragma once

#include <string>
#include <string_view>

#include "sandbox/basics/clock.h"
#include "sandbox/exchange/exchange.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

class BearerTokens {
  public:
    explicit BearerTokens(std::string secret) : secret_(std::move(secret)) {}

    /// \param kind authentication, access or refresh.
    std::string make(BearerKind kind, const Authentication& authentication, Instant issued,
                     Instant valid_until) const;

    /// Reads the value of an Authorization header. A signature of somebody else makes it unknown.
    Bearer read(std::string_view authorization, Instant now) const;

  private:
    std::string sign(std::string_view head_and_claims) const;

    std::string secret_;
};

/// The text with everything that looks like a bearer token replaced by `{token}`, for pages and
/// logs.
std::string mask_tokens(std::string_view text);

}  // namespace tavrix::sandbox
