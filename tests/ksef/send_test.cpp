#include <set>

#include "base/base64.h"
#include "tests/ksef/send_fixture.h"

namespace tavrix::ksef {
namespace {

using Send = SendFixture;
using test::Json;

TEST_F(Send, RecordsTheInvoiceAndItsUpo) {
    const std::string hash =
        base::base64_encode(crypto->sha256(base::bytes_of(test::demonstration_invoice_file())));
    ASSERT_EQ(send(), "");

    const Json state = sandbox->state();
    const Json& accepted = state.at("invoices").at(0);
    EXPECT_EQ(accepted.at("xmlHash"), hash) << "what arrived, decrypted, is the file";
    const Row document = row();
    EXPECT_EQ(document.at("numer_ksef"), accepted.at("ksefNumber"));
    EXPECT_EQ(document.at("NumerRef_ksef"), accepted.at("referenceNumber"));
    EXPECT_EQ(document.at("HashFaktury"), hash);
    EXPECT_EQ(document.at("status_ksef"), "200");
    EXPECT_EQ(document.at("StatusStr_ksef"), "Sukces");
    EXPECT_EQ(document.at("Export_Opis_bledu_ksef"), "OK.");
    EXPECT_EQ(document.at("DATA_OPERACJI"), "2026-11-21 12:30:15");
    EXPECT_NE(document.at("UPO_ksef").find("<NumerKSeFDokumentu>" + document.at("numer_ksef")),
              std::string::npos);
    EXPECT_TRUE(clock.sleeps.empty()) << "nothing to wait for";
}

TEST_F(Send, SpeaksTheExchangeStepByStepOnOneConnection) {
    ASSERT_EQ(send(), "");
    EXPECT_EQ(steps(), (std::vector<std::string>{
                           "auth/challenge", "security/public-key-certificates", "auth/ksef-token",
                           "auth/status", "auth/token/redeem", "sessions/online", "sessions/status",
                           "sessions/online/invoices", "sessions/invoices", "sessions/online/close",
                           "sessions/status", "sessions/invoices/status", "storage/invoice-upo",
                           "sessions/online/close"}));
    const Json requests = sandbox->state().at("requests");
    std::set<int> connections;
    for (const Json& request : requests) {
        if (request.at("step").get<std::string>().starts_with("auth"))
            connections.insert(request.at("connection").get<int>());
        if (request.at("step") == "storage/invoice-upo")
            connections.insert(request.at("connection").get<int>());
    }
    EXPECT_EQ(connections.size(), 1u);

    const auto names_of = [](const Json& body) {
        std::vector<std::string> names;
        for (const auto& [name, value] : body.items()) names.push_back(name);
        return names;
    };
    const Json token_body = sandbox->requests("auth/ksef-token").at(0).at("body");
    EXPECT_EQ(names_of(token_body),
              (std::vector<std::string>{"challenge", "contextIdentifier", "encryptedToken"}));
    EXPECT_EQ(token_body.at("contextIdentifier").dump(), R"({"type":"Nip","value":"5265877635"})");
    const Json open_body = sandbox->requests("sessions/online").at(0).at("body");
    const Json form_code = {{"systemCode", "FA (3)"}, {"schemaVersion", "1-0E"}, {"value", "FA"}};
    EXPECT_EQ(open_body.at("formCode").dump(), form_code.dump());
    EXPECT_EQ(names_of(open_body.at("encryption")),
              (std::vector<std::string>{"encryptedSymmetricKey", "initializationVector"}));
    const Json invoice_body = sandbox->requests("sessions/online/invoices").at(0).at("body");
    EXPECT_EQ(names_of(invoice_body),
              (std::vector<std::string>{"invoiceHash", "invoiceSize", "encryptedInvoiceHash",
                                        "encryptedInvoiceSize", "encryptedInvoiceContent",
                                        "offlineMode"}));
    EXPECT_EQ(invoice_body.at("invoiceSize"),
              std::to_string(test::demonstration_invoice_file().size()));
    EXPECT_EQ(sandbox->requests("auth/challenge").at(0).at("body").dump(), "{}");

    const Json last_close = sandbox->requests("sessions/online/close").at(1);
    const std::string target = last_close.at("target");
    EXPECT_TRUE(target.ends_with("%20/close")) << target;
    EXPECT_EQ(last_close.at("body").dump(), "{}");
    EXPECT_EQ(sandbox->requests("auth/status").at(0).at("authorization"), "authentication");
    EXPECT_EQ(sandbox->requests("sessions/online").at(0).at("authorization"), "access");
}

TEST_F(Send, HashDoesNotDependOnHowTheHostReadTheFile) {
    ASSERT_EQ(send(), "");
    const std::string hash = row().at("HashFaktury");
    std::string crlf = "\xEF\xBB\xBF";
    for (const char c : test::demonstration_invoice_file())
        crlf += c == '\n' ? "\r\n" : std::string(1, c);
    sandbox->reset();
    invoice = code_page->to_text(base::bytes_of(crlf));
    ASSERT_EQ(send(), "");
    EXPECT_EQ(row().at("HashFaktury"), hash);
    sandbox->reset();
    invoice = base::Text(reinterpret_cast<const std::uint8_t*>(crlf.data()),
                         reinterpret_cast<const std::uint8_t*>(crlf.data()) + crlf.size());
    ASSERT_EQ(send(), "");
    EXPECT_EQ(row().at("HashFaktury"), hash);
}

TEST_F(Send, TokenIsCheckedBeforeAnyTraffic) {
    sent_token = u"token bez kresek";
    EXPECT_EQ(send(), "Błędny token :token bez kresek");
    sent_token = u"";
    EXPECT_EQ(send(), "Błędny token :");
    sent_token = u"R|nip-1111111111|s";
    EXPECT_EQ(send(), "Błędny token (Niezgodny nip):1111111111");
    sent_token = u"R|bez-myslnika-numeru";
    EXPECT_EQ(send(), "Błędny token (Niezgodny nip):myslnika");
    sent_token = u"R|nic|s";
    EXPECT_EQ(send(), "Nieznany błąd");
    EXPECT_TRUE(steps().empty());
}

TEST_F(Send, DocumentOfToday_IsSentOnline_EarlierOneOffline) {
    ASSERT_EQ(send(), "");
    EXPECT_EQ(sandbox->requests("sessions/online/invoices").at(0).at("body").at("offlineMode"),
              false);
    sandbox->reset();
    yesterday();
    ASSERT_EQ(send(), "");
    const Json body = sandbox->requests("sessions/online/invoices").at(0).at("body");
    EXPECT_EQ(body.at("offlineMode"), true);
    EXPECT_FALSE(body.contains("hashOfCorrectedInvoice"));
}

TEST_F(Send, ResendOfAnUnnumberedOfflineDocumentNamesTheHashItCorrects) {
    const std::string old_hash = base::base64_encode(base::Bytes(32, 7));
    const auto hash_sent = [&](const std::string& changes) {
        sandbox->reset();
        connection->execute_script("update dok_fak set " + changes + " where ddout_id=1001");
        send();
        const Json body = sandbox->requests("sessions/online/invoices").at(0).at("body");
        return body.value("hashOfCorrectedInvoice", "");
    };
    const std::string sent_once = "NumerRef_ksef='REF-1', HashFaktury='" + old_hash + "'";
    yesterday();
    EXPECT_EQ(hash_sent(sent_once), old_hash);
    yesterday();
    EXPECT_EQ(hash_sent(sent_once + ", numer_ksef='5265877635-20261120-000000000000-00'"), "");
    yesterday();
    EXPECT_EQ(hash_sent("NumerRef_ksef='', HashFaktury='" + old_hash + "'"), "");
    yesterday();
    EXPECT_EQ(hash_sent("NumerRef_ksef='REF-1', HashFaktury=''"), "");
    today();
    EXPECT_EQ(hash_sent(sent_once), "") << "not offline";
}

TEST_F(Send, DuplicateBringsTheOriginalNumberBack) {
    ASSERT_EQ(send(), "");
    const std::string number = row().at("numer_ksef");
    today();
    EXPECT_EQ(send(), "failedInvoiceCount:STATUS:1")
        << "the duplicate counts as failed in its session";
    const Row document = row();
    EXPECT_EQ(document.at("numer_ksef"), number);
    EXPECT_EQ(document.at("status_ksef"), "200");
    EXPECT_EQ(document.at("StatusStr_ksef"), "Duplikat faktury");
}

TEST_F(Send, MissingRowIsToldAfterTheSessionIsOpen) {
    document_id = 4711;
    EXPECT_EQ(send(), "Nie znaleziono dokumetu:dok_fak where ddout_id=4711");
    EXPECT_EQ(sandbox->requests("sessions/online").size(), 1u);
    EXPECT_TRUE(sandbox->requests("sessions/online/invoices").empty());
    EXPECT_EQ(sandbox->requests("sessions/online/close").size(), 1u) << "the close after a send";
    table = u"nie_ma_takiej";
    EXPECT_EQ(send(), "Nieznany błąd");
    table = u"dok_fak; drop table dok_fak --";
    EXPECT_EQ(send(), "Nieznany błąd");
    EXPECT_EQ(row().at("numer_ksef"), "");
}

TEST_F(Send, WritesNothingWhenTheRowVanishesMeanwhileButTheNumberCanBeHadAgain) {
    connection->execute_script(
        "create trigger locked before update on dok_fak begin select raise(abort, 'locked by "
        "another'); end");
    EXPECT_EQ(send(), "Nieznany błąd");
    EXPECT_EQ(row().at("numer_ksef"), "");
    connection->execute_script("drop trigger locked");
    send();
    EXPECT_NE(row().at("numer_ksef"), "") << "sent again it is a duplicate that brings its number";
}

TEST_F(Send, InstanceCanBeUsedAgain) {
    KseF_comm client(ports());
    ASSERT_EQ(send_with(client), "");
    sandbox->fault({{"step", "auth/token/redeem"}, {"kind", "status"}, {"status", 500}});
    EXPECT_EQ(send_with(client), "Błąd inicjalizacji sesji KSeF:auth/token/redeem:STATUS:500");
    sandbox->reset();
    today();
    EXPECT_EQ(send_with(client), "");
    EXPECT_EQ(base::to_utf8(client.baseUrl()), sandbox->origin());
}

TEST_F(Send, OddInvoicesAreRefusedByKsefNotByACrash) {
    for (const base::Text& odd :
         {base::Text(), base::Text(u"to nie jest XML"), base::Text(u"<a>\0</a>", 8),
          base::Text(u"ď»ż"), base::Text(10'000'000, u'x')}) {
        const std::string result = send();
        sandbox->reset();
        invoice = odd;
        EXPECT_NE(send(), "") << odd.size();
        EXPECT_EQ(row().at("status_ksef"), result.empty() ? "200" : "");
        today();
        invoice = test::demonstration_invoice();
        sandbox->reset();
    }
}

TEST_F(Send, PathRootOfTheMinistry) {
    settings.path_root = u"/v2";
    ASSERT_EQ(send(), "");
    EXPECT_EQ(sandbox->requests("auth/challenge").at(0).at("target"), "/v2/auth/challenge");
}

}  // namespace
}  // namespace tavrix::ksef
