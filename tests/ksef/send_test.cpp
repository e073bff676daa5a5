#include <filesystem>

#include "base/base64.h"
#include "tests/ksef/send_fixture.h"
#include "tests/sandbox/contract.h"

namespace tavrix::ksef {
namespace {

using test::Json;

class Send : public SendFixture {
  protected:
    Json sent_in(const char* step) { return sandbox->requests(step).at(0).at("body"); }
};

TEST_F(Send, RecordsTheInvoiceAndItsUpo) {
    const std::string hash =
        base::base64_encode(crypto->sha256(base::bytes_of(test::demonstration_invoice_file())));
    Row expected = row();
    ASSERT_EQ(send(), "");

    const Json accepted = sandbox->state().at("invoices").at(0);
    EXPECT_EQ(accepted.at("xmlHash"), hash) << "what arrived, decrypted, is the file";
    expected["numer_ksef"] = accepted.at("ksefNumber");
    expected["NumerRef_ksef"] = accepted.at("referenceNumber");
    expected["HashFaktury"] = hash;
    expected["status_ksef"] = "200";
    expected["StatusStr_ksef"] = "Sukces";
    expected["Export_Opis_bledu_ksef"] = "OK.";
    expected["DATA_OPERACJI"] = "2026-11-21 12:30:15";
    Row document = row();
    EXPECT_NE(document["UPO_ksef"].find("<NumerKSeFDokumentu>" + expected["numer_ksef"]),
              std::string::npos);
    expected["UPO_ksef"] = document["UPO_ksef"];
    EXPECT_EQ(document, expected);
    EXPECT_EQ(clock.slept.count(), 0) << "nothing to wait for";
}

TEST_F(Send, SpeaksTheExchangeStepByStepOnOneConnection) {
    settings.path_root = u"/v2";
    ASSERT_EQ(send(), "");
    EXPECT_EQ(steps(), (std::vector<std::string>{
                           "auth/challenge", "security/public-key-certificates", "auth/ksef-token",
                           "auth/status", "auth/token/redeem", "sessions/online", "sessions/status",
                           "sessions/online/invoices", "sessions/invoices", "sessions/online/close",
                           "sessions/status", "sessions/invoices/status", "storage/invoice-upo",
                           "sessions/online/close"}));
    const auto first = [&](const char* step) { return sandbox->requests(step).at(0); };
    EXPECT_EQ(first("auth/challenge").at("target"), "/v2/auth/challenge");
    EXPECT_EQ(first("auth/challenge").at("connection"),
              first("storage/invoice-upo").at("connection"));
    EXPECT_EQ(first("auth/status").at("authorization"), "authentication");
    EXPECT_EQ(first("sessions/online").at("authorization"), "access");
    const Json last_close = sandbox->requests("sessions/online/close").at(1);
    EXPECT_TRUE(last_close.at("target").get<std::string>().ends_with("%20/close"));

    // The members stand in the order in which they were always sent.
    const std::pair<const char*, std::string> orders[] = {
        {"auth/challenge", ""},
        {"auth/ksef-token", "challenge contextIdentifier encryptedToken "},
        {"sessions/online", "formCode encryption "},
        {"sessions/online/invoices",
         "invoiceHash invoiceSize encryptedInvoiceHash encryptedInvoiceSize "
         "encryptedInvoiceContent offlineMode "},
    };
    for (const auto& [step, expected] : orders) {
        const Json body = sent_in(step);
        std::string members;
        for (const auto& member : body.items()) members += member.key() + " ";
        EXPECT_EQ(members, expected);
    }
}

TEST_F(Send, InvoiceAndTokenAreCheckedBeforeAnyTraffic) {
    invoice.insert(5, 1, u'\u4E00');
    EXPECT_EQ(send(), "Treść nie jest ciągiem bajtów: znak U+4E00 na pozycji 6");
    constexpr std::pair<const char16_t*, const char*> tokens[] = {
        {u"token bez kresek", "Błędny token :token bez kresek"},
        // A unit of a company: its number is the second piece all the same.
        {u"R|internalid-1111111111-123|s", "Błędny token (Niezgodny nip):1111111111"},
        {u"R|nic|s", "Nieznany błąd"},
    };
    for (const auto& [bad, text] : tokens) {
        token = bad;
        EXPECT_EQ(send(), text);
    }
    EXPECT_TRUE(sandbox->requests("auth/challenge").empty());
}

// The addresses that the ministry publishes.
TEST_F(Send, EnvironmentNumberChoosesTheService) {
    settings = Settings();
    token = u"no token, no traffic";
    constexpr std::pair<std::int32_t, const char16_t*> environments[] = {
        {1, u"https://api.ksef.mf.gov.pl"},
        {0, u"https://api-demo.ksef.mf.gov.pl"},
        {-1, u"https://api-test.ksef.mf.gov.pl"},
    };
    KseF_comm client(ports());
    ports::SqliteDatabase database(connection);
    for (const auto& [number, address] : environments) {
        environment = number;
        send_with(client, database);
        EXPECT_EQ(client.baseUrl(), address) << number;
    }
}

TEST_F(Send, EarlierDocumentIsSentOfflineAndAgainWithTheHashItCorrects) {
    const std::string old_hash = base::base64_encode(base::Bytes(32, 7));
    const std::string sent = "NumerRef_ksef='REF-1', HashFaktury='" + old_hash + "'";
    const std::tuple<const char*, std::string, bool, std::string> documents[] = {
        {"2026-11-20", "NumerRef_ksef=''", true, ""},
        {"2026-11-20", sent, true, old_hash},
        {"2026-11-20", sent + ", numer_ksef='1'", true, ""},
        {"2026-11-20", sent + ", HashFaktury=''", true, ""},
        {"2026-11-21", sent, false, ""},
        {"2026-11-20", sent + ", ddout_data_wyst=null", false, ""},
    };
    for (const auto& [date, columns, offline, corrected] : documents) {
        begin_anew(date);
        connection->execute_script("update dok_fak set " + columns + " where ddout_id=1001");
        send();
        const Json body = sent_in("sessions/online/invoices");
        EXPECT_EQ(body.at("offlineMode"), offline) << date << columns;
        EXPECT_EQ(body.value("hashOfCorrectedInvoice", ""), corrected) << date << columns;
    }
}

TEST_F(Send, BodiesAgreeWithThePublishedInterface) {
    if (!std::filesystem::exists(TAVRIX_KSEF_CONTRACT_DIR "/open-api.json")) {
        GTEST_SKIP() << "the published interface is not on this machine";
    }
    const sandbox::testing::Contract contract(TAVRIX_KSEF_CONTRACT_DIR);
    begin_anew("2026-11-20");
    connection->execute_script("update dok_fak set NumerRef_ksef='REF-1', HashFaktury='" +
                               base::base64_encode(base::Bytes(32)) + "'");
    send();
    constexpr std::pair<const char*, const char*> operations[] = {
        {"auth/ksef-token", "/auth/ksef-token"},
        {"sessions/online", "/sessions/online"},
        {"sessions/online/invoices", "/sessions/online/{referenceNumber}/invoices"},
    };
    for (const auto& [step, path] : operations) {
        Json body = sent_in(step);
        // Sizes travel as decimal texts, which the service reads as the numbers that its interface
        // speaks of.
        for (const char* size : {"invoiceSize", "encryptedInvoiceSize"}) {
            if (body.contains(size)) body[size] = std::stoll(body[size].get<std::string>());
        }
        for (const std::string& problem : contract.judge_request("post", path, body)) {
            ADD_FAILURE() << path << ' ' << problem << '\n' << body.dump(1).substr(0, 800);
        }
    }
}

TEST_F(Send, DuplicateBringsTheNumberBackThatCouldNotBeWritten) {
    connection->execute_script(
        "create trigger locked before update on dok_fak begin select raise(abort, 'locked by "
        "another'); end");
    EXPECT_EQ(send(), "Nieznany błąd");
    EXPECT_EQ(row().at("numer_ksef"), "");
    connection->execute_script("drop trigger locked");
    EXPECT_EQ(send(), "failedInvoiceCount:STATUS:1")
        << "the duplicate counts as failed in its session";
    EXPECT_EQ(row().at("numer_ksef"), sandbox->state().at("invoices").at(0).at("ksefNumber"));
    EXPECT_EQ(row().at("status_ksef"), "200");
    EXPECT_EQ(row().at("StatusStr_ksef"), "Duplikat faktury");
}

TEST_F(Send, MissingRowIsToldAfterTheSessionIsOpen) {
    document_id = 4711;
    EXPECT_EQ(send(), "Nie znaleziono dokumetu:dok_fak where ddout_id=4711");
    EXPECT_EQ(sandbox->requests("sessions/online").size(), 1u);
    EXPECT_TRUE(sandbox->requests("sessions/online/invoices").empty());
    EXPECT_EQ(sandbox->requests("sessions/online/close").size(), 1u) << "the close after a send";
    table = u"dok_fak; drop table dok_fak --";
    EXPECT_EQ(send(), "Nieznany błąd");
    EXPECT_EQ(row().at("numer_ksef"), "");
}

TEST_F(Send, InstanceCanBeUsedAgain) {
    KseF_comm client(ports());
    ports::SqliteDatabase database(connection);
    ASSERT_EQ(send_with(client, database), "");
    sandbox->fault({{"step", "auth/token/redeem"}, {"kind", "status"}, {"status", 500}});
    EXPECT_EQ(send_with(client, database),
              "Błąd inicjalizacji sesji KSeF:auth/token/redeem:STATUS:500");
    sandbox->reset();
    sandbox->fault({{"step", "security/public-key-certificates"},
                    {"kind", "remove"},
                    {"path", "[1].certificate"}});
    EXPECT_TRUE(send_with(client, database).starts_with("Load RSA Public Key failed: "))
        << "the key of the call before is not taken";
}

TEST_F(Send, EachWriteMarksItsTimeAndTheNote) {
    connection->execute_script(
        "create table written (name text); create view counted as select group_concat(line) as "
        "lines from (select name || ' ' || count(*) as line from written group by name)");
    for (const std::string column : {"DATA_OPERACJI", "Export_Opis_bledu_ksef", "status_ksef",
                                     "numer_ksef", "HashFaktury", "UPO_ksef"}) {
        connection->execute_script("create trigger of_" + column + " after update of " + column +
                                   " on dok_fak begin insert into written values ('" + column +
                                   "'); end");
    }
    ASSERT_EQ(send(), "");
    const auto rows = connection->open_recordset(u"select lines from counted");
    // The outcome, the number on the invoice's own page, the UPO.
    EXPECT_EQ(ports::text_of(rows->field(u"lines")),
              u"DATA_OPERACJI 3,Export_Opis_bledu_ksef 2,HashFaktury 1,UPO_ksef 1,numer_ksef 2,"
              u"status_ksef 2");
}

TEST_F(Send, OddInvoicesAreRefusedByKsefNotByACrash) {
    for (const base::Text& odd : {base::replace_all(invoice, u"<P_2>", u"<P_2"), base::Text(),
                                  base::Text(u"ď»ż"), base::Text(10'000'000, u'x')}) {
        invoice = odd;
        EXPECT_NE(send(), "") << odd.size();
        EXPECT_EQ(row().at("status_ksef"), "") << odd.size();
    }
}

}  // namespace
}  // namespace tavrix::ksef
