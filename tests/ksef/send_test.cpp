#include <algorithm>

#include "base/base64.h"
#include "ksef/rows/columns.h"
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

// What the hosts' tables and the library's must have in common.
TEST_F(Send, DemonstrationHasEveryColumnInEachDocumentTable) {
    for (const char16_t* documents : {u"dok_fak", u"dok_KFA", u"dok_dar", u"dok_kda"}) {
        const auto rows = connection->open_recordset(u"select * from " + base::Text(documents));
        for (const Column& column : document_columns) {
            const std::string& type =
                rows->columns()[rows->column_index(column.name)].declared_type;
            EXPECT_EQ(type == "DATETIME", column.kind == ColumnKind::date)
                << base::to_utf8(documents) << ' ' << base::to_utf8(column.name) << ' ' << type;
        }
    }
}

void star_long_texts(Json& json) {
    for (Json& value : json) {
        if (value.is_structured()) star_long_texts(value);
        if (value.is_string() && value.get_ref<const std::string&>().size() >= 24) value = "*";
    }
}

TEST_F(Send, SpeaksTheExchangeStepByStepOnOneConnection) {
    ASSERT_EQ(send(), "");
    EXPECT_EQ(steps(), (std::vector<std::string>{
                           "auth/challenge", "security/public-key-certificates", "auth/ksef-token",
                           "auth/status", "auth/token/redeem", "sessions/online", "sessions/status",
                           "sessions/online/invoices", "sessions/invoices", "sessions/online/close",
                           "sessions/status", "sessions/invoices/status", "storage/invoice-upo",
                           "sessions/online/close"}));
    const auto first = [&](const char* step) { return sandbox->requests(step).at(0); };
    EXPECT_EQ(first("auth/challenge").at("connection"),
              first("storage/invoice-upo").at("connection"));
    EXPECT_EQ(first("auth/status").at("authorization"), "authentication");
    EXPECT_EQ(first("sessions/online").at("authorization"), "access");

    // The members stand in the order in which they were always sent. What changes is a star, and
    // quotes are apostrophes.
    const auto body_of = [&](const char* step) {
        Json body = first(step).at("body");
        star_long_texts(body);
        std::string text = body.dump();
        std::ranges::replace(text, '"', '\'');
        return text;
    };
    const std::size_t size = test::demonstration_invoice_file().size();
    EXPECT_EQ(body_of("auth/challenge"), "{}");
    EXPECT_EQ(body_of("auth/ksef-token"),
              "{'challenge':'*','contextIdentifier':{'type':'Nip','value':'5265877635'},"
              "'encryptedToken':'*'}");
    EXPECT_EQ(body_of("sessions/online"),
              "{'formCode':{'systemCode':'FA (3)','schemaVersion':'1-0E','value':'FA'},"
              "'encryption':{'encryptedSymmetricKey':'*','initializationVector':'*'}}");
    EXPECT_EQ(body_of("sessions/online/invoices"),
              "{'invoiceHash':'*','invoiceSize':'" + std::to_string(size) +
                  "','encryptedInvoiceHash':'*','encryptedInvoiceSize':'" +
                  std::to_string(size / 16 * 16 + 16) +
                  "','encryptedInvoiceContent':'*','offlineMode':false}");

    const Json last_close = sandbox->requests("sessions/online/close").at(1);
    EXPECT_TRUE(last_close.at("target").get<std::string>().ends_with("%20/close"));
    EXPECT_EQ(last_close.at("body").dump(), "{}");
}

TEST_F(Send, TokenIsCheckedBeforeAnyTraffic) {
    constexpr std::pair<const char16_t*, const char*> tokens[] = {
        {u"token bez kresek", "Błędny token :token bez kresek"},
        {u"", "Błędny token :"},
        {u"R|nip-1111111111|s", "Błędny token (Niezgodny nip):1111111111"},
        {u"R|bez-myslnika-numeru", "Błędny token (Niezgodny nip):myslnika"},
        {u"R|nic|s", "Nieznany błąd"},
    };
    for (const auto& [bad, text] : tokens) {
        sent_token = bad;
        EXPECT_EQ(send(), text);
    }
    EXPECT_TRUE(steps().empty());
}

// The addresses that the ministry publishes.
TEST_F(Send, EnvironmentNumberChoosesTheService) {
    settings = Settings();
    sent_token = u"no token, no traffic";
    constexpr std::pair<std::int32_t, const char16_t*> environments[] = {
        {1, u"https://api.ksef.mf.gov.pl"},
        {0, u"https://api-demo.ksef.mf.gov.pl"},
        {2, u"https://api-test.ksef.mf.gov.pl"},
        {-1, u"https://api-test.ksef.mf.gov.pl"},
    };
    for (const auto& [number, address] : environments) {
        KseF_comm client(ports());
        environment = number;
        send_with(client);
        EXPECT_EQ(client.baseUrl(), address) << number;
    }
}

TEST_F(Send, EarlierDocumentIsSentOffline) {
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
    const std::string hash = ", HashFaktury='" + old_hash + "'";
    const std::pair<std::string, std::string> documents[] = {
        {"NumerRef_ksef='REF-1'" + hash, old_hash},
        {"NumerRef_ksef='REF-1', numer_ksef='5265877635-20261120-000000000000-00'" + hash, ""},
        {"NumerRef_ksef=''" + hash, ""},
        {"NumerRef_ksef='REF-1', HashFaktury=''", ""},
        {"ddout_data_wyst='2026-11-21', NumerRef_ksef='REF-1'" + hash, ""},
    };
    for (const auto& [changes, corrected] : documents) {
        yesterday();
        EXPECT_EQ(hash_sent(changes), corrected) << changes;
    }
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
        invoice = odd;
        EXPECT_NE(send(), "") << odd.size();
        EXPECT_EQ(row().at("status_ksef"), "") << odd.size();
    }
}

TEST_F(Send, PathRootOfTheMinistry) {
    settings.path_root = u"/v2";
    ASSERT_EQ(send(), "");
    EXPECT_EQ(sandbox->requests("auth/challenge").at(0).at("target"), "/v2/auth/challenge");
}

}  // namespace
}  // namespace tavrix::ksef
