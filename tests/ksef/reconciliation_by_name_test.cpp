// The outcome of packages as today's service lists it, each invoice by its own status.

#include "tests/ksef/scripted_exchange.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {
namespace {

const std::string list =
    "/api/v2/sessions?pageSize=1000&sessionType=Batch&statuses=Succeeded&statuses=Failed"
    "&statuses=Cancelled";
const std::string of_s1 = "/api/v2/sessions/S1/invoices?pageSize=1000";
const std::string of_s2 = "/api/v2/sessions/S2/invoices?pageSize=1000";

std::string page(const char* name, const std::string& entries, const std::string& token = "") {
    return Json{{"continuationToken", token}, {name, Json::parse("[" + entries + "]")}}.dump();
}
std::string session(const std::string& reference, int code) {
    return Json{{"referenceNumber", reference},
                {"status", {{"code", code}}},
                {"dateUpdated", "2026-03-01T09:10:11.1234567+00:00"}}
        .dump();
}
std::string entry(const char* key, const char* value, int code, const char* number = "") {
    return Json{{"ordinalNumber", 1},
                {"referenceNumber", "R2"},
                {key, value},
                {"ksefNumber", number},
                {"status", {{"code", code}, {"extensions", {{"originalKsefNumber", "O"}}}}}}
        .dump();
}

class ReconciliationByName : public ScriptedExchange {
  protected:
    void begin(const std::string& s1_invoices = "", int s1_code = 200) {
        begin_anew();
        settings.reconcile_by = ReconcileBy::name;
        connection->execute_script(
            "delete from dok_fak; insert into dok_fak (ddout_id,ddout_numer,HashFaktury,"
            "NumerRef_ksef,numer_ksef) values (1,'A','H1','R1',''),(2,'A','','R2',''),"
            "(3,'B''1','','','old')");
        script = {
            {list, {{200, page("sessions", session("S1", s1_code) + "," + session("S2", 200))}}},
            {of_s1, {{200, page("invoices", s1_invoices)}}},
            {of_s2, {{200, page("invoices", "")}}}};
        asked.clear();
    }
    std::string get_upo() {
        KsefPorts ports = this->ports();
        ports.settings_folder = folder;
        KseF_comm client(ports);
        ports::SqliteDatabase database(connection);
        return base::to_utf8(
            client.GetUpo(database, u"5265877635", base::SecretText(token), false));
    }
    std::string documents() {
        return rows(u"select ddout_id,numer_ksef,status_ksef,Export_Opis_bledu_ksef from dok_fak");
    }

    test::ScratchFolder scratch;
    base::Text folder = base::from_utf8(scratch.path().string() + "/");
};

// What is listed of an invoice, or of a package, and the rows.
TEST_F(ReconciliationByName, EachInvoiceIsFoundAndJudgedByItself) {
    const std::string noted =
        R"({"session":"S1","file":"f.xml","hash":"x","table":"dok_KFA","ddout_id":2001})"
        "\n"
        R"({"session":"S1","file":"g.xml","hash":"y","table":"setup where 1=1 --","ddout_id":1})"
        "\n"
        R"({"session":"S9","file":"f.xml","hash":"x","table":"dok_fak","ddout_id":1})";
    files->append(folder + u"Tavrix.sent-packages.jsonl", base::bytes_of(noted));
    const std::string untouched = "1||| 2||| 3|old||";
    const std::tuple<std::string, int, std::string, std::string> cases[] = {
        {entry("invoiceHash", "H1", 200, "K"), 200, "1|K|201|OK. 2||| 3|old||", "||"},
        {entry("invoiceHash", "H1", 440), 200, "1|O|201|OK. 2||| 3|old||", "||"},
        {entry("invoiceHash", "H1", 450), 200, "1||500|Failed 2||| 3|old||", "||"},
        {entry("invoiceHash", "H1", 150), 200, untouched, "||"},
        {entry("invoiceHash", "' or ''='", 200, "K"), 200, untouched, "||"},
        {entry("invoiceNumber", "A", 200, "K"), 200, "1||| 2|K|201|OK. 3|old||", "||"},
        {entry("invoiceNumber", "B'1", 200, "K"), 200, "1||| 2||| 3|K|201|OK.", "||"},
        {entry("invoiceNumber", "B'1", 450), 200, untouched, "||"},
        {entry("invoiceFileName", "f.xml", 200, "K"), 200, untouched, "K|201|OK."},
        {"7,null,{}", 445, untouched, "|500|Failed"},
        {"", 430, untouched, "|500|Failed"},
        {"", 440, untouched, "|500|Canseled"},
    };
    for (const auto& [listed, code, expected, corrections] : cases) {
        begin(listed, code);
        EXPECT_EQ(get_upo(), "") << listed;
        EXPECT_EQ(documents(), expected) << listed;
        EXPECT_EQ(rows(u"select numer_ksef,status_ksef,Export_Opis_bledu_ksef from dok_KFA"),
                  corrections)
            << listed << code;
        std::filesystem::remove(scratch.path() / "Tavrix.reconciled.json");
    }
}

TEST_F(ReconciliationByName, ListsAreReadToTheirEndAndOnlyFromTheLastCompleteRun) {
    begin();
    script[list] = {{200, page("sessions", session("S1", 200), "T")}};
    script[of_s1] = {{200, page("invoices", "", "U")},
                     {401, ""},
                     {200, page("invoices", entry("invoiceHash", "H1", 200, "K"))}};
    EXPECT_EQ(get_upo(), "");
    EXPECT_EQ(documents(), "1|K|201|OK. 2||| 3|old||");
    const std::string header = " x-continuation-token=";
    EXPECT_EQ(asked, (std::vector<std::string>{list, list + header + "T", of_s1, of_s1 + header + "U",
                                               of_s1 + header + "U", of_s1}));
    const std::string later = list + "&dateModifiedFrom=2026-02-28T00%3A00%3A00Z";
    begin();
    script[later] = {{200, page("sessions", session("S1", 200) + "," + session("S2", 200))}};
    script[of_s1] = {{500, "zapora"}};
    script[of_s2] = {{200, page("invoices", entry("invoiceHash", "H1", 200, "K"))}};
    EXPECT_EQ(get_upo(), "zapora") << "one session costs the others nothing";
    EXPECT_EQ(documents(), "1|K|201|OK. 2||| 3|old||");
}

// What the list is answered with, and the text.
TEST_F(ReconciliationByName, FaultsHaveTheirTextAndAnEnd) {
    const std::tuple<Answer, std::string, std::size_t> faults[] = {
        {{401, ""}, "sessions:STATUS:401", 2},
        {{503, "zapora"}, "zapora", 1},
        {{0, ""}, "Nieznany błąd pobierania upo", 1},
        {{200, "<html>"}, "Nieznany błąd pobierania upo", 1},
    };
    for (const auto& [answer, text, requests] : faults) {
        begin();
        script[list] = {answer};
        EXPECT_EQ(get_upo(), text);
        EXPECT_EQ(asked.size(), requests) << text;
    }
    begin(entry("invoiceHash", "H1", 200, "K") + "," + entry("invoiceNumber", "A", 200, "K"));
    connection->execute_script(
        "create trigger t before update on dok_fak when new.ddout_id=1 "
        "begin select raise(abort,'locked'); end");
    EXPECT_EQ(get_upo(), "Nieznany błąd pobierania upo");
    EXPECT_EQ(documents(), "1||| 2|K|201|OK. 3|old||");
}

}  // namespace
}  // namespace tavrix::ksef
