// Invoices that others have sent: the list, the documents, and who has to approve them.

#include "tests/ksef/scripted_exchange.h"

namespace tavrix::ksef {
namespace {

const std::string failed = "Nieznany błąd po prawidłowej inicializacji";
const std::string done = "kod bładu:200";
const std::string document = "/api/v2/invoices/ksef/";
const std::string list = "/api/v2/invoices/query/metadata?sortOrder=Desc&pageOffset=0&pageSize=250";

const std::string second_page =
    "/api/v2/invoices/query/metadata?sortOrder=Desc&pageOffset=1&pageSize=250";

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
    void begin(const std::string& sql, const std::string& entries = entry("N1")) {
        begin_anew();
        connection->execute_script("delete from kontrahenci; delete from Kontrahenci_parametry;" +
                                   sql);
        script = {{list, {{200, page(entries)}}}, {second_page, {{200, page("")}}}};
        for (const char* n : {"N1", "N2", "N3"}) script[document + n] = {{200, "<F/>"}};
        asked.clear();
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
    EXPECT_EQ(rows(u"select in_id_grprod,ksefniezgodnyidwew,in_numer_ksef,ksefNumber_json,"
                   u"ksefHashFaktury,dok_ID,data,In_Data_Wyst,In_nrdok,In_NEtto,In_Vat,In_nip,"
                   u"ZDJECIE_NAZWAPLIKU,ZDJECIE_datawydruku,ZDJECIE_RODZAJ,dane from DOK_ZDJECIA"),
              "7|0|N1|" + entry("N1") +
                  "|H=|0|2026-11-21|2026-11-20|O'1/2026|1234,50|283,94|"
                  "1234567890|N1|2026-11-21 12:30:15|xml|<F/>");
    EXPECT_EQ(asked.at(0), list + R"({"subjectType":"Subject2","dateRange":{"dateType":)"
                                  R"("PermanentStorage","from":"2026-09-23T00:00:00.0+00:00",)"
                                  R"("to":"2026-11-22T23:59:00.0+00:00"}})");
    // A second time, and as another kind.
    for (const char16_t* subject : {u"Subject2", u"SubjectAuthorized", u"Subject1"}) get(subject);
    const char16_t* const kinds = u"select dok_rodz_id,ZDJECIE_kierunek from DOK_ZDJECIA";
    EXPECT_EQ(rows(kinds), "20|ksef_IN 10|ksef_OWN");
    begin("", entry("N1", "1", "PEF"));
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
        {kd + pza060, "1234567890", "N1|1"},
        {kx + pza059, "1234567890", "N1|3"},
        {kd_idle, "1234567890", "N1|2"},
        {kx_idle, "1234567890", "N1|4"},
        {ab + pza059, "", "N1|"},
        {kd, "1' or '1'='1", "N1|"},
        {ab + pza060, "1234567890", ""},
        {kd + pza059, "1234567890", ""},
    };
    for (const auto& [sql, seller, row] : hosts) {
        begin(sql, entry("N1", seller));
        get();
        EXPECT_EQ(rows(u"select ksefNumber,In_Konh_id from DOK_ZDJECIA"), row) << sql << seller;
    }
}

// What is answered at which path, whether what is not there is passed over, the text, which
// invoices have their document and which have none, and how long was waited.
TEST_F(Download, FaultsHaveTheirTextAndLeaveTheOthers) {
    const std::string prefix = "invoices/query/metadata:STATUS:";
    const std::string n2 = document + "N2";
    const std::string soon = "Spróbuj ponownie po 1 sekundach";
    const std::string later = R"({"d":["Spr\u00f3buj ponownie po 2 sekundach."]})";
    const std::string gone = R"({"exception":{"exceptionDetailList":[{"exceptionCode":21165}]}})";
    const std::string broken = page(entry("N1") + R"(,{"ksefNumber":"N2"},7,)" + entry("N3"));
    std::string hashed = entry("N1");
    hashed.replace(hashed.find("H="), 2, std::string(43, 'A') + "=");
    const std::string too_long = page(entry(std::string(51, 'N')) + "," + entry("N3"));
    const std::tuple<std::string, Answer, bool, std::string, std::string, int> faults[] = {
        {list, {429, "{}"}, true, "{}", "/", 0},
        {list, {0, ""}, true, prefix + "0", "/", 0},
        {list, {200, "<html>"}, true, failed, "/", 0},
        {list, {200, page("", "true")}, true, done, "/", 0},
        {list, {200, page(entry("N1"), "true")}, true, done, "N1/", 0},
        {list, {200, page(hashed)}, true, failed, "/N1", 0},
        {n2, {200, ""}, true, failed, "N1 N3/N2", 0},
        {list, {200, broken}, true, failed, "N1 N3/", 0},
        {list, {200, too_long}, true, failed, "N3/", 0},
        {n2, {429, soon}, false, soon, "N1 N3/N2", 1500},
        {n2, {429, later}, false, later, "N1 N3/N2", 1500},
        {n2, {400, gone}, false, gone, "N1/N2 N3", 0},
        {n2, {400, gone}, true, gone, "N1 N3/N2", 0},
        {n2, {406, ""}, true, done, "N1 N3/N2", 0},
        {n2, {406, ""}, false, "kod bładu:406", "N1/N2 N3", 0},
    };
    for (const auto& [path, answer, skips, text, expected, slept] : faults) {
        begin("", entry("N1") + "," + entry("N2") + "," + entry("N3"));
        settings.skip_unavailable = skips;
        script[path] = {answer};
        EXPECT_EQ(get(), text) << answer.body;
        EXPECT_EQ(rows(u"select ksefNumber from DOK_ZDJECIA where dane<>''") + "/" +
                      rows(u"select ksefNumber from DOK_ZDJECIA where dane is null"),
                  expected)
            << answer.status << answer.body;
        EXPECT_EQ(clock.slept.count(), slept) << text;
    }
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
        {setup + "('pza063','5''1')", std::string(40'000'000, 'x') + plain, "5'1|0//"},
        {setup + "('pza063','5-2')", "<F/>", "|1//"},
        {setup + "('pza065','5-2'),('pza063','')", plain, "5'1|2//"},
        {rule + "(1,' 3, ,4,3',0,'','','','')", plain, "5'1|0/1|3|0 1|4|0/3,4"},
        {rule + "(1,'x,4294967299,4',0,'','','','')", "<IDWew>5", "5|0/1|4|0/4"},
        {six, plain, "5'1|0/1|3|0/3"},
    };
    for (const auto& [sql, xml_text, expected] : cases) {
        begin(sql);
        script[document + "N1"] = {{200, xml_text}};
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
        if (text == done) {
            EXPECT_EQ(rows(u"select user_id from dok_zdjecia_podpisy"), "3") << call;
        }
        EXPECT_EQ(rows(u"select 1 from DOK_ZDJECIA where dane<>'' and In_idwew is null"), "")
            << call;
    });
    EXPECT_GT(calls, 50) << "the whole story";
}

}  // namespace
}  // namespace tavrix::ksef
