// Invoices that others have sent: the list, the documents, and who has to approve them.

#include "tests/ksef/send_faults.h"
#include "tests/support/failing.h"

namespace tavrix::ksef {
namespace {

using test::Json;

const std::string failed = "Nieznany błąd po prawidłowej inicializacji";
const std::string done = "kod bładu:200";
const char* const list = "invoices/query/metadata";
const char* const document = "invoices/ksef";

/// An entry as the service writes it.
std::string entry(const std::string& number, const std::string& form = "FA") {
    return R"({"ksefNumber":")" + number +
           R"(","invoiceNumber":"O'1/2026",)"
           R"("issueDate":"2026-11-20","invoicingDate":"i","acquisitionDate":"a",)"
           R"("permanentStorageDate":"2026-11-21T08:15:30.1234567+00:00",)"
           R"("seller":{"nip":"1234567890","name":"S"},"buyer":{},"netAmount":1234.50,"grossAmount":0,)"
           R"("vatAmount":283.94,"currency":"PLN","invoicingMode":"Online","invoiceType":"Vat",)"
           R"("formCode":{"systemCode":"FA","schemaVersion":"1-0E","value":")" +
           form +
           R"("},"isSelfInvoicing":false,"hasAttachment":false,"invoiceHash":"H=","later":1})";
}

class Download : public SendFixture {
  protected:
    /// Invoices ZAK/1 and on were bought; the newest one is listed first.
    void begin(const std::string& sql, int count = 1) {
        begin_anew();
        // The sandbox notes purchases by its own clock, and what is asked for ends tomorrow.
        const std::chrono::year_month_day today(
            std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
        clock.now.year = int(today.year());
        clock.now.month = unsigned(today.month());
        clock.now.day = unsigned(today.day());
        connection->execute_script("delete from kontrahenci; delete from Kontrahenci_parametry;" +
                                   sql);
        const Json bought{{"seller", "1234567890"}, {"buyer", "5265877635"}, {"count", count}};
        sandbox->call("POST", "/sandbox/purchases", bought.dump());
    }
    /// One invoice is listed like this and has this document.
    void list_alone(const std::string& listed, const std::string& xml_text = "<F/>") {
        test::set_trouble(*sandbox, list,
                          status(200, R"({"hasMore":false,"invoices":[)" + listed + "]}", -1));
        test::set_trouble(*sandbox, document, status(200, xml_text));
    }
    std::string get(ports::Database& database, const base::Text& subject = u"") {
        KseF_comm client(ports());
        return base::to_utf8(client.GetFaktury(database, u"5265877635", base::SecretText(token), 7,
                                               environment, subject));
    }
    std::string get(const base::Text& subject = u"") {
        ports::SqliteDatabase database(connection);
        return get(database, subject);
    }
};

TEST_F(Download, ARowHoldsWhatTheServiceListsInTheOrderOfItsMembers) {
    begin("");
    ASSERT_EQ(get(), done);
    const char16_t* const columns =
        u"select In_nrdok,In_NEtto,In_Vat,In_nip,ksefNumber,in_numer_ksef,ZDJECIE_NAZWAPLIKU,"
        u"ZDJECIE_RODZAJ,in_id_grprod,ksefniezgodnyidwew,dok_ID from DOK_ZDJECIA";
    EXPECT_EQ(rows(columns), "ZAK/1|100,0|23,0|1234567890|K|K|K|xml|7|0|0");
    begin("");
    clock.now = test::FakeClock().now;
    list_alone(entry("N1"));
    ASSERT_EQ(get(), done);
    EXPECT_EQ(sandbox->requests(list).at(0).at("body").dump(),
              R"({"subjectType":"Subject2","dateRange":{"dateType":"PermanentStorage",)"
              R"("from":"2026-09-23T00:00:00.0+00:00","to":"2026-11-22T23:59:00.0+00:00"}})");
    EXPECT_EQ(rows(u"select ksefNumber_json,ksefHashFaktury,data,In_Data_Wyst,In_nrdok,In_NEtto,"
                   u"ZDJECIE_datawydruku,dane from DOK_ZDJECIA"),
              entry("N1") + "|H=|2026-11-21|2026-11-20|O'1/2026|1234,50|2026-11-21 12:30:15|<F/>");
    // A second time, and as another kind.
    for (const char16_t* subject : {u"Subject2", u"SubjectAuthorized", u"Subject1"}) get(subject);
    const char16_t* const kinds = u"select dok_rodz_id,ZDJECIE_kierunek from DOK_ZDJECIA";
    EXPECT_EQ(rows(kinds), "20|ksef_IN 10|ksef_OWN");
    begin("");
    list_alone(entry("N1", "PEF"));
    for (const char16_t* subject : {u"SubjectAuthorized", u"Subject1"}) get(subject);
    EXPECT_EQ(rows(kinds), "23|ksef_OWN 13|ksef_OWN");
}

TEST_F(Download, ContractorsAndFlagsDecideWhatIsKept) {
    const std::string kx_idle = "insert into kontrahenci values (4,'KX4',0,'1234567890','');";
    const std::string kd_idle =
        kx_idle + "insert into kontrahenci values (2,'KD',0,'1234567890','');";
    const std::string kx =
        kd_idle + "insert into kontrahenci values (3,'KX',1,'123 456 78 90','');";
    const std::string kd = kx + "insert into kontrahenci values (1,'KD',1,'123-456-78-90','');";
    const std::string ab =
        "insert into kontrahenci values (5,'AB',1,'1234567890',''),(6,'KD',1,'','');";
    const std::string pza059 =
        "insert into Kontrahenci_parametry values (3,1),(1,0);"
        "insert into setup values ('pza059','1');";
    const std::string pza060 = "insert into setup values ('pza060','1');";
    const std::tuple<std::string, const char*, const char*> hosts[] = {
        {kd + pza060, "1234567890", "ZAK/1|1"},
        {kx + pza059, "1234567890", "ZAK/1|3"},
        {kd_idle, "1234567890", "ZAK/1|2"},
        {kx_idle, "1234567890", "ZAK/1|4"},
        {ab + pza059, "", "ZAK/1|"},
        {kd, "1' or '1'='1", "ZAK/1|"},
        {ab + pza060, "1234567890", ""},
        {kd + pza059, "1234567890", ""},
    };
    for (const auto& [sql, seller, row] : hosts) {
        begin(sql);
        test::set_trouble(*sandbox, list, value_at("invoices[0].seller.nip", seller));
        get();
        EXPECT_EQ(rows(u"select In_nrdok,In_Konh_id from DOK_ZDJECIA"), row) << sql << seller;
    }
}

// Rows: the invoices that have their document, those that have none, and how long was waited.
TEST_F(Download, TroubleAtEachStepHasItsTextAndLeavesTheOthers) {
    const std::string prefix = "invoices/query/metadata:STATUS:";
    const std::string later = R"({"d":["Spr\u00f3buj ponownie po 2 sekundach."]})";
    const std::string gone = R"({"exception":{"exceptionDetailList":[{"exceptionCode":21165}]}})";
    const std::string other_hash = std::string(43, 'A') + "=";
    Json renamed = at_step(document, kind("header", 1));
    renamed["name"] = "x-ms-meta-hash";
    renamed["value"] = other_hash;
    const Json more = value_at("hasMore", true);
    const Json limit{{"kind", "429"}, {"retry_after", 1}, {"skip", 1}};
    const Json escaped = at_step(document, kind("escape", 0, -1));
    const test::Troubles any_way = {
        {"auth/challenge", kind("drop"), session_failed + "auth/challenge:STATUS:0", "/"},
        {"auth/status", wrong_token, session_failed + "{*", "/"},
        {"security/public-key-certificates", value_at("[1].usage", Json::array({"Other"})),
         "Load RSA Public Key failed: *", "/"},
        {list, harmless, done, "3 2 1/"},
        {list, status(429, "{}"), "{}", "/"},
        {list, status(500), prefix + "500", "/"},
        {list, kind("drop", 0, -1), prefix + "0", "/"},
        {list, kind("html"), failed, "/"},
        {list, kind("truncated"), failed, "/"},
        {list, {more, value_at("invoices", Json::array())}, done, "/"},
        {list, more, done, "3 2 1/"},
        {list, {more, status(503, "zapora", 1, 1)}, "zapora", "/3 2 1"},
        {list, value_at("invoices[1]", 7), failed, "3 1/"},
        {list, value_at("invoices[1]", {{"ksefNumber", "N2"}}), failed, "3 1/"},
        {list, value_at("invoices[1].ksefNumber", std::string(51, 'N')), failed, "3 1/"},
        // What the answer itself names holds as well.
        {list, value_at("invoices[1].invoiceHash", other_hash), done, "3 2 1/"},
        {list, {value_at("invoices[1].invoiceHash", other_hash), renamed}, failed, "3 1/2"},
        {document, status(200, "", 1, 1), failed, "3 1/2"},
        {document, kind("html", 1), failed, "3 1/2"},
        {document, kind("drop", 1, -1), "kod bładu:0", "3/2 1"},
        {document, status(401, "", 1, 1), "kod bładu:401", "3/2 1"},
    };
    const test::Troubles classic = {
        {document, limit, "{*", "3 1/2 1500 ms"},
        {document, {limit, escaped}, "{*", "3 1/2 1500 ms"},
        {document, status(429, later, 1, 1), later, "3 1/2 1500 ms"},
        {document, status(400, gone, 1, 1), gone, "3/2 1"},
        {document, status(406, "", 1, 1), "kod bładu:406", "3/2 1"},
    };
    const test::Troubles skipping = {
        {document, status(400, gone, 1, 1), gone, "3 1/2"},
        {document, status(406, "", 1, 1), done, "3 1/2"},
    };
    const auto expect_outcomes = [&](const test::Troubles& troubles) {
        run_through(
            *sandbox, troubles, [&] { begin("", 3); },
            [&]() -> test::Outcome {
                const std::string text = get();
                std::string waited;
                if (const auto ms = clock.slept.count(); ms != 0) waited = std::to_string(ms);
                const std::string all =
                    rows(u"select In_nrdok from DOK_ZDJECIA where dane<>''") + "/" +
                    rows(u"select In_nrdok from DOK_ZDJECIA where dane is null") +
                    (waited.empty() ? "" : " " + waited + " ms");
                return {text, std::regex_replace(all, std::regex("ZAK/"), "")};
            });
    };
    expect_outcomes(any_way);
    expect_outcomes(classic);
    settings.skip_unavailable = true;
    expect_outcomes(any_way);
    expect_outcomes(skipping);
}

// The host's settings or rules, a document, what is found of it, and who approves it.
TEST_F(Download, ADocumentIsComparedAndApproved) {
    const std::string setup = "insert into setup values ";
    const std::string rule = "insert into DOK_IMPORTY values ";
    const std::string plain = "<F><IDWew>5'1</IDWew></F>";
    const std::string six = rule +
                            "(1,null,0,'','','',''),(2,'9',7,'','','',''),(3,'9',0,'5-1',"
                            "'','',''),(4,'9',0,'','r','',''),(5,'9',0,'','','p',''),"
                            "(6,'9',0,'','','','FV'),(7,'3',0,'5''1','','','O''1/2026')";
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"", "<IDWew>5-1</IDWew><IDWew>5-2</IDWew>", "5-1|0//"},
        {"", "<IDWew a=\"b\">" + std::string(60, '5') + "</IDWew>",
         "a=\"b\">" + std::string(44, '5') + "|0//"},
        {setup + "('pza063','5''1')", std::string(7'000'000, 'x') + plain, "5'1|0//"},
        {setup + "('pza063','5-2')", "<F/>", "|1//"},
        {setup + "('pza065','5-2'),('pza063','')", plain, "5'1|2//"},
        {rule + "(1,' 3, ,4,3',0,'','','','')", plain, "5'1|0/1|3|0 1|4|0/3,4"},
        {rule + "(1,'x,4294967299,4',0,'','','','')", "<IDWew>5", "5|0/1|4|0/4"},
        {six, plain, "5'1|0/1|3|0/3"},
    };
    for (const auto& [sql, xml_text, expected] : cases) {
        begin(sql);
        list_alone(entry("N1"), xml_text);
        EXPECT_EQ(get(), sql.find('x') == std::string::npos ? done : failed);
        EXPECT_EQ(rows(u"select In_idwew,ksefniezgodnyidwew from DOK_ZDJECIA") + "/" +
                      rows(u"select id_zdjecia,user_id,etappodpisow from dok_zdjecia_podpisy") +
                      "/" + rows(u"select User_ids_do_podpisu from DOK_ZDJECIA"),
                  expected)
            << sql;
    }
}

TEST_F(Download, ADatabaseThatFailsAtAnyCallLeavesRowsWholeOrNone) {
    test::FailingAt failing;
    const int calls = test::fail_each_call(failing, test::access_denied, [&](int call) {
        begin("insert into DOK_IMPORTY values (1,'3',0,'','','','')");
        ports::SqliteDatabase real(connection);
        test::FailingDatabase database(real, failing);
        const std::string text = get(database);
        EXPECT_TRUE(text == done || failing.struck()) << call;
        EXPECT_EQ(rows(u"select 1 from DOK_ZDJECIA where dane<>'' and In_idwew is null"), "")
            << call;
        // Later calls look for invoices without a document only.
        EXPECT_EQ(rows(u"select user_id from dok_zdjecia_podpisy"),
                  rows(u"select 3 from DOK_ZDJECIA where dane<>''"))
            << call;
    });
    EXPECT_GT(calls, 50) << "the whole story";
}

}  // namespace
}  // namespace tavrix::ksef
