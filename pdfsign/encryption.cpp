#include "pdfsign/encryption.h"

#include <array>
#include <numeric>

#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

// The cipher of PDF 1.1 to 1.5. OpenSSL has it only among what is switched off.
std::string rc4(std::string_view key, std::string_view plain) {
    std::array<std::uint8_t, 256> state;
    std::iota(state.begin(), state.end(), std::uint8_t{0});
    for (unsigned i = 0, j = 0; i < state.size(); ++i) {
        j = (j + state[i] + static_cast<std::uint8_t>(key[i % key.size()])) % 256;
        std::swap(state[i], state[j]);
    }
    std::string cipher(plain);
    unsigned i = 0;
    unsigned j = 0;
    for (char& c : cipher) {
        i = (i + 1) % 256;
        j = (j + state[i]) % 256;
        std::swap(state[i], state[j]);
        c = static_cast<char>(static_cast<std::uint8_t>(c) ^ state[(state[i] + state[j]) % 256]);
    }
    return cipher;
}

}  // namespace

Encryption::Encryption(QPDF& document, ports::Signing& signing)
    : signing_(signing), on_(document.isEncrypted()) {
    if (!on_) return;
    int permissions = 0;
    Method files = QPDF::e_none;
    document.isEncrypted(revision_, permissions, version_, streams_, strings_, files);
    if (streams_ == QPDF::e_unknown || strings_ == QPDF::e_unknown) {
        refuse(u"plik jest zaszyfrowany w nieznany sposób");
    }
    key_ = document.getEncryptionKey();
}

std::string Encryption::string(std::string_view plain, QPDFObjGen owner) const {
    return encrypted(plain, owner, strings_);
}

std::string Encryption::stream(std::string_view plain, QPDFObjGen owner) const {
    return encrypted(plain, owner, streams_);
}

std::string Encryption::encrypted(std::string_view plain, QPDFObjGen owner, Method method) const {
    if (!on_ || method == QPDF::e_none) return std::string(plain);
    const std::string key = QPDF::compute_data_key(key_, owner.getObj(), owner.getGen(),
                                                   method != QPDF::e_rc4, version_, revision_);
    if (method == QPDF::e_rc4) return rc4(key, plain);
    const base::Bytes cipher = signing_.aes_cbc_with_iv(base::bytes_of(key), base::bytes_of(plain));
    return std::string(base::chars_of(cipher));
}

}  // namespace tavrix::pdfsign
