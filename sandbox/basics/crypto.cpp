#include "sandbox/basics/crypto.h"

#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#include <algorithm>
#include <stdexcept>

namespace tavrix::sandbox {
namespace {

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

std::string hex(std::string_view data, const char* alphabet) {
    std::string result;
    result.reserve(data.size() * 2);
    for (const unsigned char byte : data) {
        result += alphabet[byte >> 4];
        result += alphabet[byte & 15];
    }
    return result;
}

bool is_base64_digit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/';
}

}  // namespace

std::string sha256(std::string_view data) {
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    SHA256(bytes(data), data.size(), bytes(digest));
    return digest;
}

std::string sha256_base64(std::string_view data) {
    return base64_encode(sha256(data));
}

std::string hmac_sha256(std::string_view key, std::string_view data) {
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    unsigned size = 0;
    HMAC(EVP_sha256(), key.data(), int(key.size()), bytes(data), data.size(), bytes(digest), &size);
    return digest;
}

std::string base64_encode(std::string_view data) {
    std::string text((data.size() + 2) / 3 * 4 + 1, '\0');
    const int size = EVP_EncodeBlock(bytes(text), bytes(data), int(data.size()));
    text.resize(std::size_t(size));
    return text;
}

std::optional<std::string> base64_decode(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    const std::string_view digits = text.substr(0, text.size() - padding);
    if (!std::all_of(digits.begin(), digits.end(), is_base64_digit)) return std::nullopt;
    std::string data(text.size() / 4 * 3 + 1, '\0');
    const int size = EVP_DecodeBlock(bytes(data), bytes(text), int(text.size()));
    if (size < 0) return std::nullopt;
    data.resize(std::size_t(size) - padding);
    return data;
}

std::string base64_url_encode(std::string_view data) {
    std::string text = base64_encode(data);
    std::replace(text.begin(), text.end(), '+', '-');
    std::replace(text.begin(), text.end(), '/', '_');
    text.erase(text.find_last_not_of('=') + 1);
    return text;
}

std::optional<std::string> base64_url_decode(std::string_view text) {
    std::string plain(text);
    std::replace(plain.begin(), plain.end(), '-', '+');
    std::replace(plain.begin(), plain.end(), '_', '/');
    while (plain.size() % 4 != 0) plain += '=';
    return base64_decode(plain);
}

std::optional<std::string> rsa_oaep_decrypt(EVP_PKEY* key, std::string_view ciphertext) {
    const KeyContextHandle context(EVP_PKEY_CTX_new(key, nullptr));
    if (!context || EVP_PKEY_decrypt_init(context.get()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) <= 0 ||
        EVP_PKEY_CTX_set_rsa_oaep_md(context.get(), EVP_sha256()) <= 0 ||
        EVP_PKEY_CTX_set_rsa_mgf1_md(context.get(), EVP_sha256()) <= 0)
        return std::nullopt;
    std::size_t size = std::size_t(EVP_PKEY_get_size(key));
    std::string plain(size, '\0');
    if (EVP_PKEY_decrypt(context.get(), bytes(plain), &size, bytes(ciphertext),
                         ciphertext.size()) <= 0)
        return std::nullopt;
    plain.resize(size);
    return plain;
}

std::optional<std::string> aes_256_cbc_decrypt(std::string_view key, std::string_view vector,
                                               std::string_view ciphertext) {
    if (key.size() != 32 || vector.size() != 16 || ciphertext.empty() ||
        ciphertext.size() % 16 != 0)
        return std::nullopt;
    const CipherContextHandle context(EVP_CIPHER_CTX_new());
    if (!context || EVP_DecryptInit_ex(context.get(), EVP_aes_256_cbc(), nullptr, bytes(key),
                                       bytes(vector)) <= 0)
        return std::nullopt;
    std::string plain(ciphertext.size() + 16, '\0');
    int written = 0, last = 0;
    if (EVP_DecryptUpdate(context.get(), bytes(plain), &written, bytes(ciphertext),
                          int(ciphertext.size())) <= 0 ||
        EVP_DecryptFinal_ex(context.get(), bytes(plain) + written, &last) <= 0)
        return std::nullopt;
    plain.resize(std::size_t(written + last));
    return plain;
}

Sha256Stream::Sha256Stream() : context_(EVP_MD_CTX_new()) {
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is not available");
}

void Sha256Stream::add(std::string_view piece) {
    EVP_DigestUpdate(context_.get(), piece.data(), piece.size());
}

std::string Sha256Stream::base64() {
    std::string digest(SHA256_DIGEST_LENGTH, '\0');
    EVP_DigestFinal_ex(context_.get(), bytes(digest), nullptr);
    return base64_encode(digest);
}

AesCbcDecryption::AesCbcDecryption(std::string_view key, std::string_view vector)
    : context_(EVP_CIPHER_CTX_new()) {
    if (key.size() != 32 || vector.size() != 16 || !context_ ||
        EVP_DecryptInit_ex(context_.get(), EVP_aes_256_cbc(), nullptr, bytes(key), bytes(vector)) <=
            0)
        throw std::runtime_error("no key to decrypt with");
}

std::string AesCbcDecryption::add(std::string_view piece) {
    std::string plain(piece.size() + 16, '\0');
    int size = 0;
    EVP_DecryptUpdate(context_.get(), bytes(plain), &size, bytes(piece), int(piece.size()));
    plain.resize(std::size_t(size));
    return plain;
}

std::optional<std::string> AesCbcDecryption::finish() {
    std::string plain(16, '\0');
    int size = 0;
    if (EVP_DecryptFinal_ex(context_.get(), bytes(plain), &size) <= 0) return std::nullopt;
    plain.resize(std::size_t(size));
    return plain;
}

std::string random_bytes(std::size_t count) {
    std::string data(count, '\0');
    if (RAND_bytes(bytes(data), int(count)) != 1)
        throw std::runtime_error("the system has no random numbers");
    return data;
}

std::string random_hex(std::size_t count) {
    return hex(random_bytes((count + 1) / 2), "0123456789ABCDEF").substr(0, count);
}

std::string lower_hex(std::string_view data) {
    return hex(data, "0123456789abcdef");
}

}  // namespace tavrix::sandbox
