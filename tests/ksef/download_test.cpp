// Invoices that others have sent: the list, the documents, and who has to approve them.

#include "tests/ksef/scripted_exchange.h"

namespace tavrix::ksef {
namespace {

using base::Text;

const std::string unknown_later = "Nieznany błąd po prawidłowej inicializacji";
const std::string document_path = "/api/v2/invoices/ksef/";

std::string list_path(int page) {
    return "/api/v2/invoices/query/metadata?sortOrder=Desc&pageOffset=" + std::to_string(page) +
           "&pageSize=250";
}

/// An entry as the service writes it.
std::string entry(const std::string& number, const std::string& seller = "1234567890",
                  const std::string& form = "FA") {
    return R"({"ksefNumber":")" + number +
           R"(","invoiceNumber":"O'1/2026",)"
           R"("issueDate":"2026-11-20","invoicingDate":"i","acquisitionDate":"a",)"
           R"("permanentStorageDate":"2026-11-21T08:15:30.1234567+00:00","seller":{"nip":")" +
           seller +
           R"(","name":"S"},"buyer":{},"netAmount":1234.50,"grossAmount":0,)"
           R"("vatAmount":283.94,"currency":"PLN","invoicingMode":"Online","invoiceType":"Vat",)"
           R"("formCode":{"systemCode":"FA","schemaVersion":"1-0E","value":")" +
           form +
           R"("},"isSelfInvoicing":false,"hasAttachment":false,"invoiceHash":"H=","later":1})";
}
std::string page(const std::string& entries, const char* more = "false") {
    return std::string(R"({"hasMore":)") + more + R"(,"invoices":[)" + entries + "]}";
}

class Download : public ScriptedExchange {
  protected:
    void begin(const std::string& sql = "") {
        begin_anew();
        connection->execute_script("delete from kontrahenci; delete from Kontrahenci_parametry;" +
                                   sql);
        script = {{list_path(0), {{200, page(entry("N1"))}}},
                  {document_path + "N1", {{200, "<F/>"}}},
                  {document_path + "N2", {{200, "<F/>"}}},
                  {document_path + "N3", {{200, "<F/>"}}}};
        asked.clear();
    }
    std::string get(const Text& subject = u"") {
        KseF_comm client(ports());
        ports::SqliteDatabase database(connection);
        return base::to_utf8(client.GetFaktury(database, u"5265877635", base::SecretText(token), 7,
                                               environment, subject));
    }
    std::string recorded() {
        return rows(u"select ksefNumber,dok_rodz_id,ZDJECIE_kierunek,In_Konh_id from DOK_ZDJECIA");
    }
};

TEST_F(Download, ARowHoldsWhatTheServiceListsInTheOrderOfItsMembers) {
    begin();
    ASSERT_EQ(get(), "kod bładu:200");
    EXPECT_EQ(rows(u"select in_id_grprod,ksefniezgodnyidwew,in_numer_ksef,ksefNumber_json,"
                   u"ksefHashFaktury,dok_ID,data,In_Data_Wyst,In_nrdok,In_NEtto,In_Vat,In_nip,"
                   u"ZDJECIE_NAZWAPLIKU,ZDJECIE_datawydruku,ZDJECIE_RODZAJ,dane from DOK_ZDJECIA"),
              "7|0|N1|" + entry("N1") +
                  "|H=|0|2026-11-21|2026-11-20|O'1/2026|1234,50|283,94|"
                  "1234567890|N1|2026-11-21 12:30:15|xml|<F/>");
    EXPECT_EQ(asked.at(0), list_path(0) +
                               R"( {"subjectType":"Subject2","dateRange":{"dateType":)"
                               R"("PermanentStorage","from":"2026-09-23T00:00:00.0+00:00",)"
                               R"("to":"2026-11-22T23:59:00.0+00:00"}})");
    EXPECT_EQ(get(), "kod bładu:200");
    EXPECT_EQ(recorded(), "N1|20|ksef_IN|") << "once";
    const std::tuple<const char16_t*, const char*, const char*> kinds[] = {
        {u"Subject1", "FA", "N1|10|ksef_OWN|"},   {u"Subject1", "PEF", "N1|13|ksef_OWN|"},
        {u"Subject2", "FA_RR", "N1|23|ksef_IN|"}, {u"SubjectAuthorized", "FA", "N1|20|ksef_OWN|"},
        {u"Subject3", "FA", "N1|20|ksef_IN|"},
    };
    for (const auto& [subject, form, row] : kinds) {
        begin();
        script[list_path(0)] = {{200, page(entry("N1", "1", form))}};
        get(subject);
        EXPECT_EQ(recorded(), row);
    }
    get();
    EXPECT_EQ(recorded(), "N1|20|ksef_IN|") << "another kind is another row";
}

TEST_F(Download, ContractorsAndFlagsDecideWhatIsKept) {
    const std::string kd = "insert into kontrahenci values (1,'KD1',1,'123-456-78-90','');";
    const std::string kd_idle = "insert into kontrahenci values (2,'KD2',0,'1234567890','');";
    const std::string kx = "insert into kontrahenci values (3,'KX3',1,'123 456 78 90','');";
    const std::string kx_idle = "insert into kontrahenci values (4,'KX4',0,'1234567890','');";
    const std::string strange =
        "insert into kontrahenci values (5,'AB5',1,'1234567890','');"
        "insert into kontrahenci values (6,'KD6',1,'','');";
    const std::string pza059 = "insert into setup values ('pza059','1');";
    const std::string pza060 = "insert into setup values ('pza060','1');";
    const std::string through_ksef = "insert into Kontrahenci_parametry values (3,1),(1,0);";
    const std::tuple<std::string, const char*, const char*> hosts[] = {
        {kx_idle + kd_idle + kx + kd, "1234567890", "N1|20|ksef_IN|1"},
        {kx_idle + kd_idle + kx, "1234567890", "N1|20|ksef_IN|3"},
        {kx_idle + kd_idle, "1234567890", "N1|20|ksef_IN|2"},
        {kx_idle, "1234567890", "N1|20|ksef_IN|4"},
        {strange, "1234567890", "N1|20|ksef_IN|"},
        {strange, "", "N1|20|ksef_IN|"},
        {kd, "1' or '1'='1", "N1|20|ksef_IN|"},
        {strange + pza060, "1234567890", ""},
        {kd + pza060, "1234567890", "N1|20|ksef_IN|1"},
        {kd + through_ksef + pza059, "1234567890", ""},
        {kx + through_ksef + pza059, "1234567890", "N1|20|ksef_IN|3"},
        {kx_idle + pza059, "1234567890", ""},
        {pza059, "1234567890", "N1|20|ksef_IN|"},
    };
    for (const auto& [sql, seller, row] : hosts) {
        begin(sql);
        script[list_path(0)] = {{200, page(entry("N1", seller))}};
        get();
        EXPECT_EQ(recorded(), row) << sql << seller;
    }
}

// What goes wrong in the list, the text, and the rows.
TEST_F(Download, FaultsOfTheListHaveTheirText) {
    const std::string broken_date =
        base::to_utf8(base::replace_all(base::from_utf8(entry("N2")), u"2026-11-20", u"wczoraj"));
    const std::string all = "N1|20|ksef_IN| N3|20|ksef_IN|";
    const auto between = [](const std::string& broken) {
        return page(entry("N1") + "," + broken + "," + entry("N3"));
    };
    const std::tuple<std::vector<Answer>, std::string, std::string> faults[] = {
        {{{429, R"({"status":{"code":429}})"}}, R"({"status":{"code":429}})", ""},
        {{{500, ""}}, "invoices/query/metadata:STATUS:500", ""},
        {{{0, ""}}, "invoices/query/metadata:STATUS:0", ""},
        {{{200, "<html>"}}, unknown_later, ""},
        {{{200, R"({"hasMore":false})"}}, unknown_later, ""},
        {{{200, page("", "true")}}, "kod bładu:200", ""},
        {{{200, between(R"({"ksefNumber":"N2"})")}}, unknown_later, all},
        {{{200, between("7")}}, unknown_later, all},
        {{{200, between(broken_date)}}, unknown_later, all},
        {{{200, between(entry(std::string(51, 'N')))}}, unknown_later, all},
        {{{200, between(entry("N3"))}}, "kod bładu:200", all},
    };
    for (const auto& [answers, text, expected] : faults) {
        begin();
        script[list_path(0)] = answers;
        EXPECT_EQ(get(), text) << answers[0].body;
        EXPECT_EQ(recorded(), expected) << answers[0].body;
        EXPECT_EQ(rows(u"select countt from DOK_ZDJECIA where dane is null"), "") << "all fetched";
    }
    begin();
    script[list_path(0)] = {{200, page(entry("N1"), "true")}};
    script[list_path(1)] = {{503, "zapora"}};
    EXPECT_EQ(get(), "zapora");
    EXPECT_EQ(recorded(), "N1|20|ksef_IN|") << "what was recorded stays";
}

// What is answered to the second of three, the text, and whose document is there.
TEST_F(Download, FaultsOfADocumentHaveTheirText) {
    const std::string later = R"({"status":{"details":["Spr\u00f3buj ponownie po 2 sekundach."]}})";
    const std::string gone = R"({"exception":{"exceptionDetailList":[{"exceptionCode":21165}]}})";
    const std::tuple<Answer, bool, std::string, std::string, int> faults[] = {
        {{429, "Spróbuj ponownie po 1 sekundach"},
         false,
         "Spróbuj ponownie po 1 sekundach",
         "N1 N3",
         1500},
        {{429, later}, false, later, "N1 N3", 1500},
        {{429, "Spróbuj ponownie po 30 sekundach"},
         true,
         "Spróbuj ponownie po 30 sekundach",
         "N1",
         0},
        {{400, gone}, false, gone, "N1", 0},
        {{400, gone}, true, gone, "N1 N3", 0},
        {{406, ""}, true, "kod bładu:200", "N1 N3", 0},
        {{406, ""}, false, "kod bładu:406", "N1", 0},
        {{403, "{}"}, true, "{}", "N1", 0},
        {{0, ""}, true, "kod bładu:0", "N1", 0},
    };
    for (const auto& [answer, skips, text, fetched, slept] : faults) {
        begin();
        settings.skip_unavailable = skips;
        script[list_path(0)] = {{200, page(entry("N1") + "," + entry("N2") + "," + entry("N3"))}};
        script[document_path + "N2"] = {answer};
        EXPECT_EQ(get(), text) << answer.body;
        EXPECT_EQ(rows(u"select ksefNumber from DOK_ZDJECIA where dane<>''"), fetched) << text;
        EXPECT_EQ(clock.slept.count(), slept) << text;
    }
}

TEST_F(Download, TheInternalIdentifierIsTakenOutAndCompared) {
    const std::string long_xml = "<F>" + std::string(40'000'000, 'x') + "<IDWew>5-1</IDWew></F>";
    const std::tuple<std::string, std::string, std::string> documents[] = {
        {"<F><IDWew>5-1</IDWew></F>", "", "5-1|0"},
        {"<F><IDWew>5-1</IDWew><IDWew>5-2</IDWew></F>", "", "5-1|0"},
        {"<F><IDWew a=\"b\">5-1</IDWew></F>", "", "a=\"b\">5-1|0"},
        {"<F/>", "('pza063','5-1')", "|1"},
        {"<F><IDWew>5-1</IDWew></F>", "('pza063','5-1')", "5-1|0"},
        {"<F><IDWew>5-1</IDWew></F>", "('pza065','5-1')", "5-1|0"},
        {"<F><IDWew>5-1</IDWew></F>", "('pza063','5-2')", "5-1|1"},
        {"<F><IDWew>5-1</IDWew></F>", "('pza065','5-2'),('pza063','')", "5-1|2"},
        {"<IDWew>" + std::string(60, '5') + "</IDWew>", "", std::string(50, '5') + "|0"},
        {long_xml, "", "5-1|0"},
    };
    for (const auto& [document, setup, expected] : documents) {
        begin(setup.empty() ? "" : "insert into setup values " + setup);
        script[document_path + "N1"] = {{200, document}};
        EXPECT_EQ(get(), "kod bładu:200");
        EXPECT_EQ(rows(u"select In_idwew,ksefniezgodnyidwew from DOK_ZDJECIA"), expected);
        EXPECT_EQ(rows(u"select len(dane) from DOK_ZDJECIA"), std::to_string(document.size()));
    }
}

TEST_F(Download, TheFirstRuleThatFitsNamesWhoApproves) {
    const std::string done = "kod bładu:200";
    const std::string all = "1|3|0 1|4|0;3,4";
    const std::tuple<std::string, std::string, std::string> rules[] = {
        {"(1,' 3, ,4,',0,'','','','')", done, all},
        {"(1,null,0,'','','',''),(2,'',0,'','','',''),(3,'3,4',0,'','','','')", done, all},
        {"(1,'9',7,'','','',''),(2,'9',0,'5-1','','',''),(3,'9',0,'','r','',''),"
         "(4,'9',0,'','','p',''),(5,'9',0,'','','','FV'),(6,'3,4',0,'','','','a O''1/2026 b')",
         done, all},
        {"(1,'3,4',0,'5''1','','','')", done, all},
        {"(1,'9',7,'','','','')", done, ";"},
        {"(1,'3,x',0,'','','','')", unknown_later, "1|3|0;3"},
    };
    for (const auto& [values, text, expected] : rules) {
        begin("insert into DOK_IMPORTY values " + values);
        script[document_path + "N1"] = {{200, "<IDWew>5'1</IDWew>"}};
        EXPECT_EQ(get(), text) << values;
        EXPECT_EQ(rows(u"select id_zdjecia,user_id,etappodpisow from dok_zdjecia_podpisy") + ";" +
                      rows(u"select User_ids_do_podpisu from DOK_ZDJECIA"),
                  expected)
            << values;
    }
}

TEST_F(Download, ADatabaseThatFailsAtAnyCallLeavesRowsWholeOrNone) {
    test::FailingAt failing;
    const int calls = test::fail_each_call(failing, test::access_denied, [&](int call) {
        begin("insert into DOK_IMPORTY values (1,'3',0,'','','','')");
        ports::SqliteDatabase real(connection);
        test::FailingDatabase database(real, failing);
        KseF_comm client(ports());
        const Text text = client.GetFaktury(database, u"5265877635", base::SecretText(token), 7,
                                            environment, u"");
        EXPECT_EQ(base::to_utf8(text), failing.struck() ? unknown_later : "kod bładu:200") << call;
        EXPECT_EQ(rows(u"select countt from DOK_ZDJECIA where ZDJECIE_kierunek is null or "
                       u"(dane<>'' and In_idwew is null)"),
                  "")
            << call;
    });
    EXPECT_GT(calls, 50) << "the whole story";
}

TEST_F(Download, TheDocumentsCanBeFetchedByThemselves) {
    begin("insert into DOK_ZDJECIA (ksefNumber,ZDJECIE_kierunek) values ('N1','ksef_IN')");
    KseF_comm client(ports());
    ports::SqliteDatabase database(connection);
    client.set_baseUrl(base::from_utf8(sandbox->origin()));
    EXPECT_EQ(client.GetFaktury_xml(database), u"kod bładu:200");
    connection->execute_script("drop table DOK_ZDJECIA");
    EXPECT_EQ(client.GetFaktury_xml(database), u"Nieznany błąd");
    token = u"R|nip-1111111111|s";
    EXPECT_EQ(get(), "Błędny token (Niezgodny nip):1111111111");
}

}  // namespace
}  // namespace tavrix::ksef
