// KSeF tokens: which are good.
#pragma once

#include <string>

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// What a KSeF token means for an authentication.
struct TokenVerdict {
    /// Empty when the token is good; otherwise the detail of status 450.
    std::string refusal;
    std::string reference;
    std::vector<std::string> permissions;
};

/// Judges a decrypted token for a context.
TokenVerdict judge_token(Service& service, const std::string& token, const Context& context);

/// Makes a token named on the command line good. Throws std::invalid_argument when it has not the
/// form `reference|nip-NNNNNNNNNN|secret`.
void register_token(Service& service, const std::string& token);

}  // namespace tavrix::sandbox
