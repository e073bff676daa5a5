#include "ksef/token.h"

#include "base/error.h"

namespace tavrix::ksef {

TokenCheck read_token(const base::Text& token) {
    const auto parts = base::split(token, u'|');
    if (parts.size() < 2) return {u"Błędny token :" + token, {}};
    // In "internalid-NIP-NUMBER" the third piece is a unit of the company; the number stands second
    // all the same.
    const auto pieces = base::split(parts[1], u'-');
    if (pieces.size() < 2) {
        throw base::AutomationError(base::ErrorNumber::subscript, u"KseF_comm",
                                    u"Token nie zawiera numeru NIP");
    }
    return {{}, pieces[1]};
}

TokenCheck check_token(const base::Text& token, const base::Text& nip) {
    TokenCheck check = read_token(token);
    if (check.failure.empty() && check.tax_number != nip) {
        check.failure = u"Błędny token (Niezgodny nip):" + check.tax_number;
    }
    return check;
}

}  // namespace tavrix::ksef
