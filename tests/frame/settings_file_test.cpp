#include "frame/settings_file.h"

#include <gtest/gtest.h>

#include "tests/support/thrown.h"

namespace tavrix::frame {
namespace {

TEST(SettingsFile, TakesEveryKeyAndLeavesTheRestAtItsDefault) {
    const Settings settings = parse_settings(R"({
      "ksef": { "test": "https://localhost:8443", "production": "https://p", "demo": "https://d",
                "path_root": "/v2", "retry_after_limit_s": 900 },
      "http": { "connect_timeout_ms": 1500, "proxy": "direct", "private_ca_file": "/ca.pem" },
      "helpdesk": { "address": "bok@firma.example", "routes": { "526-587-76-35": "dwa@firma.example" } },
      "trace": { "root": "/srv/c" }
    })",
                                             "Tavrix.json");
    EXPECT_EQ(settings.ksef.service.test, u"https://localhost:8443");
    EXPECT_EQ(settings.ksef.service.production + settings.ksef.service.demo, u"https://phttps://d");
    EXPECT_EQ(settings.ksef.path_root, u"/v2");
    EXPECT_EQ(settings.ksef.retry_after_limit.count(), 900);
    EXPECT_EQ(ksef::Settings().retry_after_limit.count(), 0);
    EXPECT_EQ(settings.connection.connect_timeout.count(), 1500);
    EXPECT_EQ(settings.connection.no_progress_timeout.count(), 60'000);
    EXPECT_EQ(settings.mail.helpdesk_routes.at(0).tax_number, u"5265877635")
        << "compared without hyphens";
    EXPECT_EQ(settings.trace_root, "/srv/c");
    EXPECT_EQ(parse_settings("\xEF\xBB\xBF{}", "x").connection.proxy, "");
    EXPECT_EQ(load_settings("/no/such/folder/Tavrix.json").connection.proxy, "")
        << "no file, no change";
}

TEST(SettingsFile, AProfileHoldsWhereNoKeyOfItsOwnSaysOtherwise) {
    const auto read = [](const char* text) { return parse_settings(text, "f").ksef; };
    for (const char* text : {R"({"profile":"current"})", R"({"ksef":{"profile":"current"}})"}) {
        const ksef::Settings current = read(text);
        EXPECT_TRUE(current.path_root == u"/v2" && current.retry_after_limit.count() == 60 &&
                    current.reconcile_by == ksef::ReconcileBy::name && current.skip_unavailable &&
                    current.certificate_signature == ksef::CertificateSignature::base64url);
    }
    EXPECT_FALSE(read(R"({"ksef":{"profile":"classic"},"profile":"current"})").skip_unavailable);
    const auto mail = [](const char* text) { return parse_settings(text, "f").mail.profile; };
    EXPECT_EQ(mail(R"({ "profile": "current" })"), base::Profile::current);
    EXPECT_EQ(mail(R"({ "mail": { "profile": "classic" }, "profile": "current" })"),
              base::Profile::classic);
    // Before the profile and behind it.
    const ksef::Settings mixed = read(R"({"ksef":{"path_root":"","reconcile_by":"position"},
        "profile":"current","qr":{"certificate_signature":"base64"}})");
    EXPECT_TRUE(mixed.path_root.empty() && mixed.reconcile_by == ksef::ReconcileBy::position &&
                mixed.certificate_signature == ksef::CertificateSignature::base64);
    EXPECT_TRUE(mixed.skip_unavailable);
}

TEST(SettingsFile, NamesFileLineAndKeyOfWhatItCannotTake) {
    constexpr std::pair<const char*, const char*> cases[] = {
        {"{\n \"ksef\": {\n  \"test\": 5 } }", "Tavrix.json, wiersz 3: klucz \"ksef.test\""},
        {"{\n \"ksef\": {\n  \"test\": \"https://host/\" } }", "wiersz 3: klucz \"ksef.test\""},
        {"{\n\n \"htp\": {} }", "wiersz 3: klucz \"htp\": nieznany klucz"},
        {"{ \"http\": { \"connect_timeout_ms\": 0 } }", "http.connect_timeout_ms"},
        {"{ \"ksef\": { \"retry_after_limit_s\": 901 } }", "liczby sekund od 0 do 900"},
        {"{ \"ksef\": { \"retry_after_limit_s\": -1 } }", "ksef.retry_after_limit_s"},
        {"{\n \"ksef\": {\n", "wiersz 3: to nie jest poprawny JSON"},
        {"{ \"ksef\": 1 }", "klucz \"ksef\""},
        {"{ \"qr\": { \"certificate_signature\": \"hex\" } }", "\"base64\" albo \"base64url\""},
        {"{ \"ksef\": { \"batch_parts\": 1 } }", "klucz \"ksef.batch_parts\": oczekiwano true"},
        {"{ \"profile\": \"modern\" }", "klucz \"profile\""},
        {"{ \"profile\": \"current\",\n\"ksef\": { \"profile\": \"\" } }",
         "wiersz 2: klucz \"ksef.profile"},
        {"{ \"mail\": { \"x\": 1 } }", "klucz \"mail.x\": nieznany klucz"},
        {"{ \"http\": { \"profile\": \"current\" } }", "klucz \"http.profile\": nieznany klucz"},
        {"{ \"helpdesk\": { \"routes\": { \"1\": 2 } } }", "helpdesk.routes.1"},
    };
    for (const auto& [text, words] : cases) {
        const std::string what = test::thrown_by([&] { parse_settings(text, "Tavrix.json"); });
        EXPECT_NE(what.find(words), std::string::npos) << text << " -> " << what;
    }
}

}  // namespace
}  // namespace tavrix::frame
