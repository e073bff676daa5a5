#include <gtest/gtest.h>

#include "base/error.h"
#include "ports/portable/openssl_crypto.h"

namespace tavrix::ports {
namespace {

base::Bytes from_hex(std::string_view hex) {
    base::Bytes bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

const auto crypto = make_openssl_crypto();

// FIPS 180-4's examples as NIST publishes them.
TEST(Sha256, PublishedVectors) {
    EXPECT_EQ(crypto->sha256(base::bytes_of("abc")),
              from_hex("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    EXPECT_EQ(crypto->sha256({}),
              from_hex("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
}

// SP 800-38A, F.2.5; the padding block follows.
TEST(Aes256Cbc, PublishedVectorAndPadding) {
    const auto key = from_hex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    const auto iv = from_hex("000102030405060708090a0b0c0d0e0f");
    const auto plain = from_hex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51");
    auto cipher = crypto->aes_256_cbc_encrypt(key, iv, plain);
    EXPECT_EQ(cipher.size(), 48u);
    cipher.resize(32);
    EXPECT_EQ(cipher, from_hex("f58c4c04d6e5f1ba779eabfb5f7bfbd6"
                               "9cfc4e967edb808d679f777bc6702c7d"));
    EXPECT_EQ(crypto->aes_256_cbc_encrypt(key, iv, base::Bytes(15)).size(), 16u);
    EXPECT_THROW(crypto->aes_256_cbc_encrypt(iv, iv, plain), base::AutomationError);
}

TEST(Random, GivesSomethingElseEachTime) {
    base::Bytes first(32);
    base::Bytes second(32);
    crypto->fill_random(first);
    crypto->fill_random(second);
    EXPECT_NE(first, second);
}

}  // namespace
}  // namespace tavrix::ports
