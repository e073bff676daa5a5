#pragma once

#include "base/secret.h"

namespace tavrix::ksef {

/// What a KSeF token says of itself: "reference|nip-NNNNNNNNNN|secret" or
/// "reference|internalid-NIP-NUMBER|secret".
struct TokenCheck {
    /// Empty when the token can be used, otherwise the text that the host gets.
    base::Text failure;
    /// The tax number in the token's second part.
    base::Text tax_number;
    /// The first part, which is no secret.
    base::Text reference;
};

/// Reads the tax number out of `token`. Without a "|" the failure is "Błędny token :" and the
/// token; throws base::AutomationError (subscript) when the second part names no number at all.
TokenCheck read_token(const base::SecretText& token);

/// The same, and the number must be `nip`: otherwise "Błędny token (Niezgodny nip):" and the
/// token's number.
TokenCheck check_token(const base::SecretText& token, const base::Text& nip);

}  // namespace tavrix::ksef
