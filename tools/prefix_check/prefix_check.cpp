// One small question to each cross-built library: is it whole, and is it built the way the project
// relies on?
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#include <sqlite3.h>
#include <zlib.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <qpdf/QPDF.hh>
#include <qrcodegen/qrcodegen.hpp>
#include <set>
#include <string>

namespace {

TEST(Prefix, CurlSpeaksExactlyTheProtocolsTheProductNeeds) {
    ASSERT_EQ(curl_global_init(CURL_GLOBAL_DEFAULT), CURLE_OK);
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    ASSERT_NE(info->ssl_version, nullptr);
    EXPECT_EQ(std::string(info->ssl_version).rfind("OpenSSL/3", 0), 0u) << info->ssl_version;
    std::set<std::string> protocols;
    for (auto protocol = info->protocols; *protocol != nullptr; ++protocol) {
        protocols.insert(*protocol);
    }
    const std::set<std::string> wanted{"http", "https", "pop3", "pop3s", "smtp", "smtps"};
    EXPECT_EQ(protocols, wanted);
    EXPECT_TRUE(info->features & CURL_VERSION_IDN);
    EXPECT_TRUE(info->features & CURL_VERSION_IPV6);
    // Without it a time limit would not hold while a name is looked up.
    EXPECT_TRUE(info->features & CURL_VERSION_ASYNCHDNS);
    curl_global_cleanup();
}

// FIPS 180-4's example: the digest of "abc".
TEST(Prefix, OpensslComputesSha256) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    size_t size = 0;
    ASSERT_EQ(EVP_Q_digest(nullptr, "SHA256", nullptr, "abc", 3, digest, &size), 1);
    ASSERT_EQ(size, 32u);
    EXPECT_EQ(digest[0], 0xba);
    EXPECT_EQ(digest[31], 0xad);
}

TEST(Prefix, OpensslHasTheLegacyProviderForOldPfxFiles) {
    OSSL_PROVIDER* legacy = OSSL_PROVIDER_load(nullptr, "legacy");
    EXPECT_NE(legacy, nullptr);
    OSSL_PROVIDER_unload(legacy);
}

// A folder that any user may create must never be asked for certificates or settings.
TEST(Prefix, OpensslLooksOnlyIntoAProtectedFolder) {
    EXPECT_STREQ(OpenSSL_version(OPENSSL_DIR), "OPENSSLDIR: \"C:/Program Files/Common Files/SSL\"");
}

TEST(Prefix, SqliteOpensADatabase) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, "create table t(x); insert into t values(1)", nullptr, nullptr,
                           nullptr),
              SQLITE_OK);
    EXPECT_EQ(sqlite3_close(database), SQLITE_OK);
}

TEST(Prefix, TheSmallLibrariesAreThere) {
    EXPECT_EQ(nlohmann::ordered_json::parse(R"({"b":1,"a":2})").dump(), R"({"b":1,"a":2})");
    EXPECT_EQ(qrcodegen::QrCode::encodeText("A", qrcodegen::QrCode::Ecc::LOW).getSize(), 21);
    EXPECT_EQ(std::string(zlibVersion()), ZLIB_VERSION);
    EXPECT_EQ(CLI::App("name").get_description(), "name");
}

// Its own ciphers, of old documents too, or they could not be read.
TEST(Prefix, QpdfReadsDocumentsAndComputesTheirKeys) {
    QPDF document;
    document.emptyPDF();
    EXPECT_TRUE(document.getRoot().isDictionary());
    EXPECT_EQ(QPDF::compute_data_key("12345", 1, 0, false, 1, 2).size(), 10u);
}

}  // namespace
