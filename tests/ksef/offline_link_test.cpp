// The certificate link of an invoice that was issued while KSeF could not be reached, and the
// tokens that KSeF issues.

#include <fstream>

#include "tests/ksef/send_faults.h"
#include "tests/sandbox/sample_invoice.h"
#include "tests/support/freed_memory.h"
#include "tests/support/openssl_tool.h"

namespace tavrix::ksef {
namespace {

using test::Json;

const base::Text serial = u"01F20A5D352AE590";
const base::Text nip = u"5265877635";
constexpr const char* published_hash = "UtQp9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE=";
constexpr const char* right_phrase = "hało, klucz";

class OfflineLinks : public SendFixture {
  protected:
    void SetUp() override {
        SendFixture::SetUp();
        settings.service.production = base::from_utf8(sandbox->origin());
        test::run_in(keys, R"(
            openssl ecparam -name prime256v1 -genkey -noout -out p256
            openssl ecparam -name secp384r1 -genkey -noout -out p384
            openssl pkcs8 -topk8 -in p256 -passout 'pass:hało, klucz' -out locked
            openssl genpkey -algorithm ed25519 -out edwards
            openssl req -x509 -new -key p256 -subj /CN=t -out certificate; date > text; > none)");
    }

    /// The document has a hash and its user a key.
    void prepare(const std::string& key, const std::string& phrase = right_phrase,
                 const std::string& hash = published_hash) {
        begin_anew();
        const Json certificate{{"certificate", sandbox::testing::offline_certificate}};
        sandbox->call("POST", "/sandbox/certificates", certificate.dump());
        std::ifstream file(keys.path() / key);
        const std::string pem{std::istreambuf_iterator<char>(file), {}};
        connection->execute_script("update dok_fak set HashFaktury='" + hash +
                                   "' where ddout_id=1001;"
                                   "insert into uzytkownicy_setup values (7,'usp607','" +
                                   pem + "'),(7,'usp608','" + phrase + "')");
    }

    /// Sees to it that the row has what the host was given, or nothing.
    std::string link(const base::Text& number, const base::Text& argument, std::int32_t id = 1001,
                     const base::Text& tax_number = nip) {
        KseF_comm client(ports());
        ports::SqliteDatabase database(connection);
        base::SecretText in_out(argument);
        const std::string result =
            base::to_utf8(client.GetQr2(database, number, in_out, id, tax_number));
        EXPECT_EQ(in_out.view(), base::TextView(argument).substr(0, argument.find(u',')));
        const bool linked = result.starts_with("https://qr.");
        EXPECT_EQ(row().at("ksef_qrcode2"), linked ? result : "");
        EXPECT_EQ(row().at("DATA_OPERACJI").empty(), !linked) << result;
        return result;
    }

    test::ScratchFolder keys;
    base::Text table_argument = u"dok_fak," + token + u",7";
};

TEST_F(OfflineLinks, CarryASignatureThatOpensslVerifies) {
    prepare("locked");
    test::look_for_in_freed_memory("0123456789abcdef");
    const std::string result = link(serial, table_argument);
    EXPECT_EQ(test::found_in_freed_memory(), 0) << "no token";
    test::forget_freed_memory();
    const std::string beginning =
        "https://qr.ksef.mf.gov.pl/certificate/NIP/5265877635/5265877635/01F20A5D352AE590/"
        "UtQp9Gpc51y-u3xApZjIjgkpZ01js-J8KflSPW8WzIE/";
    EXPECT_EQ(result.substr(0, beginning.size()), beginning);
    EXPECT_EQ(result.size(), beginning.size() + 88);
    EXPECT_NO_THROW(test::verify_link(keys, result, "p256"));
}

TEST_F(OfflineLinks, WhatIsMissingHasItsTextAndNobodyIsAsked) {
    const auto missing = [](const char* what) {
        return std::string("Brak ") + what + " - (GetQr2)wysyłka OFFLINE";
    };
    prepare("locked");
    EXPECT_EQ(link(u"", table_argument, 0, u""), missing("numeru certyfikatu pracownika"));
    EXPECT_EQ(link(serial, u"", 0, u""), missing("tokenu"));
    EXPECT_EQ(link(serial, table_argument, 0, u""), missing("id dokumentu"));
    EXPECT_EQ(link(serial, table_argument, 1001, u""), missing("nip"));
    for (const std::int32_t id : {9, 1002}) EXPECT_EQ(link(serial, table_argument, id), "");
    for (const char16_t* argument :
         {u"dok_fak", u"dok_fak,R|nip-5265877635|s,siedem", u"none,R|nip-5265877635|s,7"}) {
        EXPECT_EQ(link(serial, argument), "");
    }
    EXPECT_TRUE(steps().empty());
}

// What the host has: a key, its pass phrase, the hash of the document.
TEST_F(OfflineLinks, WhatTheHostHasWrongHasItsText) {
    const char* const right = right_phrase;
    const char* const hash = published_hash;
    const std::string locked = "err:Hasło nie otwiera klucza prywatnego: *";
    const std::tuple<const char*, const char*, const char*, std::string> cases[] = {
        {"locked", right, "UtQp9Gpc51y", ""},
        {"locked", right, "Ut-p9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE=", ""},
        {"certificate", right, hash, "Brak EC prywatnego klucza"},
        {"edwards", right, hash, "Brak EC prywatnego klucza"},
        {"p384", right, hash, "ECDSA: krzywa klucza to secp384r1*"},
        {"text", right, hash, "BŁĄD PEM: PEM_read_bio_PrivateKey*"},
        {"none", right, hash, "err:Brak klucza prywatnego (usp607) użytkownika 7"},
        {"locked", "", hash, locked},
        {"locked", "halo", hash, locked},
    };
    for (const auto& [key, phrase, of, text] : cases) {
        prepare(key, phrase, of);
        expect_text(link(serial, table_argument), text, key);
    }
    prepare("p256");
    connection->execute_script(
        "create trigger t before update on dok_fak begin select raise(abort,'locked'); end");
    expect_text(link(serial, table_argument), "err:*");
}

// That the row has what the host was given is seen to by `link`.
TEST_F(OfflineLinks, TroubleAtEachStepHasItsText) {
    const std::string unlisted = "err:Brak cert 01F20A5D352AE590 typ Offline";
    const char* const keys = "security/public-key-certificates";
    const char* const query = "certificates/query";
    const test::Troubles troubles = {
        {"auth/challenge", kind("drop"), session_failed + "auth/challenge:STATUS:0"},
        {keys, kind("html"), session_unknown},
        {"auth/ksef-token", status(500, "padło"), session_failed + "padło"},
        {"auth/status", status(400), session_failed + "auth/:STATUS:timeout"},
        {"auth/status", wrong_token, session_failed + "{*"},
        {"auth/token/redeem", status(400, "{}"), session_failed + "{}"},
        {query, harmless, "https://qr.*"},
        {query, value_at("certificates", Json::array()), unlisted},
        {query, value_at("certificates[0].status", "Revoked"), unlisted},
        {query, value_at("certificates[0].type", "Authentication"), unlisted},
        {query, value_at("certificates[0].certificateSerialNumber", "1"), unlisted},
        // A service that does not answer is not needed.
        {query, status(403), "https://qr.*"},
        {query, kind("html"), "https://qr.*"},
        {query, kind("drop", 0, -1), "https://qr.*"},
    };
    run_through(
        *sandbox, troubles, [&] { prepare("p256"); },
        [&]() -> test::Outcome {
            return {link(serial, table_argument), ""};
        });
    EXPECT_EQ(sandbox->requests(query).at(0).at("body").dump(),
              R"({"certificateSerialNumber":"01F20A5D352AE590","type":"Offline"})");
}

TEST_F(OfflineLinks, ATokenIsAskedForOnceInTheNameOfTheLastAuthentication) {
    const char* const create = "tokens/create";
    const test::Troubles troubles = {
        {create, status(202, R"({"token":"R|nip-1|s"})"), "R|nip-1|s"},
        {create, harmless, "*"},
        {create, status(201, R"({"token":"x"})"), R"({"token":"x"})"},
        {create, status(500), "/tokens:STATUS:500"},
        {create, kind("drop"), "/tokens:STATUS:0"},
        {create, kind("html"), "<!DOCTYPE html>*"},
    };
    KseF_comm client(ports());
    EXPECT_EQ(client.GetToken(u"1").view(), u"/tokens:STATUS:0") << "nobody was logged in";
    run_through(
        *sandbox, troubles,
        [&] {
            begin_anew();
            ports::SqliteDatabase database(connection);
            ASSERT_EQ(send_with(client, database), "");
        },
        [&]() -> test::Outcome {
            const std::string issued = base::to_utf8(client.GetToken(u"1").view());
            const auto asked = sandbox->requests(create);
            EXPECT_EQ(asked.size(), 1u);
            EXPECT_EQ(asked[0].at("body").dump(), R"({"permissions":"InvoiceRead,InvoiceWrite",)"
                                                  R"("description":"quen_2026-11-21 12:30:15"})");
            return {issued, ""};
        });
}

}  // namespace
}  // namespace tavrix::ksef
