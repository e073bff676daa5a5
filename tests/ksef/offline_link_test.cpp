// The certificate link of an invoice that was issued while KSeF could not be reached, and the
// tokens that KSeF issues.

#include <fstream>

#include "tests/ksef/send_faults.h"
#include "tests/support/freed_memory.h"
#include "tests/support/openssl_tool.h"

namespace tavrix::ksef {
namespace {

using test::Json;

const base::Text serial = u"01F20A5D352AE590";
const base::Text nip = u"5265877635";
constexpr const char* published_hash = "UtQp9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE=";
constexpr const char* right_phrase = "hało, klucz";
constexpr const char* offline =
    R"({"certificates":[{"certificateSerialNumber":"01F20A5D352AE590","type":"Offline"}]})";

constexpr const char* revoked =
    R"({"certificates":[{"certificateSerialNumber":"01F20A5D352AE590","type":"Offline","status":"Revoked"}]})";

// What the service says to the question after certificates.
struct Certificates {
    int status = 200;
    std::string body = offline;
};

// A service that knows certificates, in front of one that does not.
struct KnowsCertificates final : ports::Http {
    KnowsCertificates(std::unique_ptr<ports::Http> service, const Certificates& known)
        : all_else(std::move(service)), answer(known) {}
    ports::HttpReply send(const ports::HttpRequest& request) override {
        if (!request.url.view().ends_with("/api/v2/certificates/query"))
            return all_else->send(request);
        EXPECT_EQ(request.body,
                  R"({"certificateSerialNumber":"01F20A5D352AE590","type":"Offline"})");
        return {true, answer.status, base::SecretUtf8(std::string_view(answer.body)), {}, {}};
    }
    ports::AddressKind kind_of(std::string_view url) const override {
        return all_else->kind_of(url);
    }
    std::unique_ptr<ports::Http> all_else;
    const Certificates& answer;
};

class OfflineLinks : public SendFixture {
  protected:
    void SetUp() override {
        SendFixture::SetUp();
        make_http = [this, direct = make_http] {
            return std::make_unique<KnowsCertificates>(direct(), certificates);
        };
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
    Certificates certificates;
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

TEST_F(OfflineLinks, EveryStepHasItsText) {
    const char* const right = right_phrase;
    const char* const hash = published_hash;
    const std::string unlisted = "err:Brak cert 01F20A5D352AE590 typ Offline";
    const std::string locked = "err:Hasło nie otwiera klucza prywatnego: *";
    const std::tuple<const char*, const char*, const char*, Certificates, std::string> cases[] = {
        {"locked", right, "UtQp9Gpc51y", {}, ""},
        {"locked", right, "Ut-p9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE=", {}, ""},
        {"certificate", right, hash, {}, "Brak EC prywatnego klucza"},
        {"edwards", right, hash, {}, "Brak EC prywatnego klucza"},
        {"p384", right, hash, {}, "ECDSA: krzywa klucza to secp384r1*"},
        {"text", right, hash, {}, "BŁĄD PEM: PEM_read_bio_PrivateKey*"},
        {"none", right, hash, {}, "err:Brak klucza prywatnego (usp607) użytkownika 7"},
        {"locked", "", hash, {}, locked},
        {"locked", "halo", hash, {}, locked},
        {"p256", "", hash, {200, R"({"certificates":[]})"}, unlisted},
        {"p256", "", hash, {200, revoked}, unlisted},
        // A service that does not answer is not needed.
        {"p256", "", hash, {403, ""}, "https://qr.*"},
        {"p256", right, hash, {200, "<html>"}, "https://qr.*"},
    };
    for (const auto& [key, phrase, of, answer, text] : cases) {
        prepare(key, phrase, of);
        certificates = answer;
        expect_text(link(serial, table_argument), text, key);
    }
    prepare("p256");
    sandbox->fault({{"step", "auth/status"}, {"kind", "status"}, {"status", 400}});
    EXPECT_EQ(link(serial, table_argument), session_failed + "auth/:STATUS:timeout");
}

TEST_F(OfflineLinks, ATokenIsAskedForOnceInTheNameOfTheLastAuthentication) {
    const std::pair<Json, std::string> answers[] = {
        {status(202, R"({"token":"R|nip-1|s"})"), "R|nip-1|s"},
        {status(201, R"({"token":"x"})"), R"({"token":"x"})"},
        {kind("drop"), "/tokens:STATUS:0"},
    };
    KseF_comm client(ports());
    EXPECT_EQ(client.GetToken(u"1").view(), u"/tokens:STATUS:0") << "nobody was logged in";
    for (auto [answer, text] : answers) {
        begin_anew();
        ports::SqliteDatabase database(connection);
        ASSERT_EQ(send_with(client, database), "");
        answer["step"] = "tokens/create";
        sandbox->fault(answer);
        EXPECT_EQ(base::to_utf8(client.GetToken(u"1").view()), text);
        const auto asked = sandbox->requests("tokens/create");
        ASSERT_EQ(asked.size(), 1u);
        EXPECT_EQ(asked[0].at("body").dump(), R"({"permissions":"InvoiceRead,InvoiceWrite",)"
                                              R"("description":"quen_2026-11-21 12:30:15"})");
    }
}

}  // namespace
}  // namespace tavrix::ksef
