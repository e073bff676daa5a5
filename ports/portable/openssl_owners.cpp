#include "ports/portable/openssl_owners.h"

#include <openssl/err.h>

#include "base/error.h"

namespace tavrix::ports::openssl {

void fail(const char* operation) {
    std::string description = operation;
    if (const unsigned long code = ERR_peek_last_error(); code != 0) {
        char words[256];
        ERR_error_string_n(code, words, sizeof words);
        description += ": ";
        description += words;
    }
    ERR_clear_error();
    throw base::AutomationError(base::ErrorNumber::component_failed, u"OpenSSL",
                                base::from_utf8(description));
}

void check(bool succeeded, const char* operation) {
    if (!succeeded) fail(operation);
}

}  // namespace tavrix::ports::openssl
