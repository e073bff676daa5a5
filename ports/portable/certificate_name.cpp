#include "ports/portable/certificate_name.h"

namespace tavrix::ports::openssl {
namespace {

// The last one is the most particular (RFC 4514 reads them from the end).
base::Text last_entry(const X509_NAME* name, int kind) {
    int place = -1;
    for (int next = -1; (next = X509_NAME_get_index_by_NID(name, kind, next)) >= 0;) place = next;
    if (place < 0) return {};
    // Whatever the certificate wrote it in.
    unsigned char* utf8 = nullptr;
    const int size =
        ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, place)));
    if (size < 0) return {};
    base::Text text = base::from_utf8({reinterpret_cast<char*>(utf8), std::size_t(size)});
    OPENSSL_free(utf8);
    return text;
}

}  // namespace

base::Text name_for_people(const X509_NAME* name) {
    if (base::Text common = last_entry(name, NID_commonName); !common.empty()) return common;
    const base::Text given = last_entry(name, NID_givenName);
    const base::Text surname = last_entry(name, NID_surname);
    if (!surname.empty()) return given.empty() ? surname : given + u" " + surname;
    if (base::Text body = last_entry(name, NID_organizationName); !body.empty()) return body;
    return last_entry(name, NID_pkcs9_emailAddress);
}

}  // namespace tavrix::ports::openssl
