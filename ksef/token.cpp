#include "ksef/token.h"

#include "base/error.h"

namespace tavrix::ksef {
namespace {

// What follows the first separator; nothing when there is none.
base::TextView behind(base::TextView text, char16_t separator) {
    const std::size_t found = text.find(separator);
    return found == base::TextView::npos ? base::TextView() : text.substr(found + 1);
}

base::TextView up_to(base::TextView text, char16_t separator) {
    return text.substr(0, text.find(separator));
}

}  // namespace

TokenCheck read_token(const base::SecretText& token) {
    const base::TextView whole = token.view();
    if (whole.find(u'|') == base::TextView::npos)
        return {u"Błędny token :" + base::Text(whole), {}, {}};
    const base::TextView second = up_to(behind(whole, u'|'), u'|');
    // In "internalid-NIP-NUMBER" the third piece is a unit of the company; the number stands second
    // all the same.
    if (second.find(u'-') == base::TextView::npos) {
        throw base::AutomationError(base::ErrorNumber::subscript, u"KseF_comm",
                                    u"Token nie zawiera numeru NIP");
    }
    return {{}, base::Text(up_to(behind(second, u'-'), u'-')), base::Text(up_to(whole, u'|'))};
}

TokenCheck check_token(const base::SecretText& token, const base::Text& nip) {
    TokenCheck check = read_token(token);
    if (check.failure.empty() && check.tax_number != nip) {
        check.failure = u"Błędny token (Niezgodny nip):" + check.tax_number;
    }
    return check;
}

}  // namespace tavrix::ksef
