// The outcome of packages: by the position of what the service lists, and by the names of today's.

#include "tests/ksef/scripted_exchange.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {
namespace {

using test::Json;

const std::string failed = "Nieznany błąd pobierania upo";
const std::string list = "/api/v2/sessions?pageSize=1000&sessionType=Batch&statuses=";
const std::string all = list + "Succeeded&statuses=Failed&statuses=Cancelled";
const std::string of_s1 = "/api/v2/sessions/S1/invoices";
const std::string of_s2 = "/api/v2/sessions/S2/invoices";
const std::string paged = "?pageSize=1000";

std::string page(const char* name, const std::string& entries, const char* token = "") {
    return Json{{"continuationToken", token}, {name, Json::parse("[" + entries + "]")}}.dump();
}
std::string sessions(const std::string& first, const std::string& second, const char* token = "") {
    const Json a{{"referenceNumber", "S1"}, {"number", first}};
    const Json b{{"referenceNumber", "S2"}, {"number", second}};
    return page("sessions", a.dump() + "," + b.dump(), token);
}
std::string placed(const char* reference, const char* number) {
    return Json{{"ordinalNumber", 1}, {"r", reference}, {"k", number}}.dump();
}
/// Today's: S1 with this code, S2 accepted.
std::string named_sessions(int code, const char* token = "") {
    return page("sessions",
                R"({"referenceNumber":"S1","status":{"code":)" + std::to_string(code) + "}}," +
                    R"({"referenceNumber":"S2","status":{"code":200},"dateUpdated":"2026-03-01T"})",
                token);
}
std::string named(const char* key, const char* value, int code, const char* number = "") {
    const Json extensions{{"originalKsefNumber", "O"}};
    const Json status{{"code", code}, {"extensions", extensions}};
    return Json{{"referenceNumber", "R2"},
                {key, value},
                {"invoiceFileName", "h.xml"},
                {"ksefNumber", number},
                {"status", status}}
        .dump();
}

class Reconciliation : public ScriptedExchange {
  protected:
    void begin(ReconcileBy by = ReconcileBy::position) {
        begin_anew();
        settings.reconcile_by = by;
        connection->execute_script(
            "delete from dok_fak; insert into dok_fak (ddout_id,ddout_numer,HashFaktury,"
            "NumerRef_ksef,numer_ksef) values (1,'A','H1','R1',''),(2,'A','','R2',''),"
            "(3,'B''1','','R3','old')");
        const Answer nobody{200, page("sessions", "")};
        script = {{list + "Succeeded", {{200, sessions("A", "A")}}},
                  {list + "Failed", {nobody}},
                  {list + "Cancelled", {nobody}},
                  {of_s1, {{200, page("invoices", placed("R1", "K1"))}}},
                  {of_s2, {{200, page("invoices", placed("R2", "K2"))}}},
                  {all, {{200, named_sessions(200)}}},
                  {of_s1 + paged, {{200, page("invoices", "")}}},
                  {of_s2 + paged, {{200, page("invoices", "")}}}};
        asked.clear();
    }
    std::string get_upo(const base::Text& folder = u"", const base::Text& user_folder = u"") {
        KsefPorts ports = this->ports();
        ports.settings_folder = folder;
        ports.user_folder = user_folder;
        KseF_comm client(ports);
        ports::SqliteDatabase host(connection);
        return base::to_utf8(client.GetUpo(host, u"5265877635", base::SecretText(token), false));
    }
    std::string documents(const char16_t* from = u"dok_fak") {
        const base::Text sql = u"select numer_ksef,status_ksef,Export_Opis_bledu_ksef from ";
        return rows((sql + from).c_str());
    }
};

TEST_F(Reconciliation, EachPassLeavesItsOutcomeAndTheLastOneStays) {
    begin();
    const std::string second_page = list + "Failed&x-continuation-token=t=+/&";
    script[list + "Failed"] = {{200, sessions("", "A", "t=+/&")}};
    script[second_page] = {{503, ""}, {401, "{}"}, {200, page("sessions", "")}};
    script[list + "Cancelled"] = {{200, sessions("A", "")}};
    EXPECT_EQ(get_upo(), "");
    EXPECT_EQ(documents(), "|500|Canseled |500|Failed old||");
    EXPECT_EQ(asked, (std::vector<std::string>{list + "Succeeded", of_s1, of_s2, list + "Failed",
                                               of_s1, of_s2, second_page, second_page, second_page,
                                               list + "Cancelled", of_s1, of_s2}));
    EXPECT_EQ(clock.slept.count(), 0) << "nothing is waited for";
}

// What is answered at which path, the text, and the rows.
TEST_F(Reconciliation, FaultsHaveTheirTextAndLeaveWhatWasWritten) {
    const std::string succeeded = list + "Succeeded";
    const std::string none = "|| || old||";
    const std::string first = "K1|201|OK. || old||";
    const std::string second = "|| K2|201|OK. old||";
    const std::string both = "K1|201|OK. K2|201|OK. old||";
    const std::tuple<std::string, Answer, std::string, std::string> faults[] = {
        {succeeded, {0, ""}, failed, none},
        {succeeded, {200, "<html>"}, failed, none},
        {succeeded,
         {200, page("sessions", R"({"r":"S1"},7,null,[],{"r":"S1","d":null})")},
         "",
         none},
        {succeeded, {200, named_sessions(200)}, "", none},
        {succeeded, {200, sessions("A'", "A")}, failed, none},
        {of_s1, {500, ""}, "", second},
        {of_s2, {200, R"({"invoices":[)"}, failed, first},
        {of_s1, {200, page("invoices", R"({"n":1},{"n":1,"r":"R1"},"R1",1)")}, "", second},
        {of_s1, {200, page("invoices", placed("R9", "K9") + "," + placed("R1", "K1"))}, "", both},
        {of_s1, {200, page("invoices", placed("R1", "K1") + "," + placed("R2", "K9"))}, "", both},
        {succeeded + "&x-continuation-token=T", {200, sessions("A", "A", "T")}, "", both},
    };
    for (const auto& [path, answer, text, expected] : faults) {
        begin();
        if (!script.contains(path)) script[succeeded] = {{200, sessions("A", "A", "T")}};
        script[path] = {answer};
        EXPECT_EQ(get_upo(), text) << path << answer.body;
        EXPECT_EQ(documents(), expected) << path << answer.body;
    }
    begin();
    connection->execute_script(
        "create trigger t before update on dok_fak when new.ddout_id=2 "
        "begin select raise(abort,'locked'); end");
    EXPECT_EQ(get_upo(), failed);
    EXPECT_EQ(documents(), first);
}

// What is listed of an invoice, its session's code, and the rows.
TEST_F(Reconciliation, ByNameEachInvoiceIsFoundAndJudgedByItself) {
    const test::ScratchFolder scratch;
    const base::Text folder = base::from_utf8(scratch.path().string() + "/");
    const std::string noted =
        R"({"session":"S1","file":"f.xml","hash":"x","table":"dok_KFA","ddout_id":2001})"
        "\n"
        R"({"session":"S1","file":"g.xml","hash":"y","table":"setup --","ddout_id":1})"
        "\n"
        R"({"session":"S1","file":"h.xml","hash":"z","table":"","ddout_id":0})"
        "\n"
        R"({"session":"S1","file":"i.xml","hash":"x","table":"dok_fak","ddout_id":1})"
        "\n"
        R"({"session":"S9","file":"f.xml","hash":"x","table":"dok_fak","ddout_id":1})";
    files->append(folder + u"Tavrix.sent-packages.jsonl", base::bytes_of(noted));
    const std::string none = "|| || old||";
    const std::tuple<std::string, int, std::string, std::string> cases[] = {
        {named("invoiceHash", "H1", 200, "K"), 200, "K|201|OK. || old||", "||"},
        {named("invoiceHash", "H1", 440), 200, "O|201|OK. || old||", "||"},
        {named("invoiceHash", "H1", 450), 200, "|500|Failed || old||", "||"},
        {named("invoiceNumber", "A", 200, "K"), 200, "|| K|201|OK. old||", "||"},
        {named("invoiceNumber", "B'1", 200, "K"), 200, none, "||"},
        {named("invoiceNumber", "B'1", 200, "old"), 200, "|| || old|201|OK.", "||"},
        {named("invoiceHash", "H1", 100), 200, none, "||"},
        {R"({"invoiceHash":"H1"})", 0, none, "||"},
        {named("invoiceNumber", "B'1", 450), 200, none, "||"},
        {named("invoiceFileName", "f.xml", 200, "K"), 200, none, "K|201|OK."},
        {"7,null,{}", 445, none, "|500|Failed"},
        {"", 440, none, "|500|Canseled"},
    };
    for (const auto& [listed, code, expected, correction] : cases) {
        begin(ReconcileBy::name);
        script[all] = {{200, named_sessions(code)}};
        script[of_s1 + paged] = {{200, page("invoices", listed)}};
        EXPECT_EQ(get_upo(folder), "") << listed;
        EXPECT_EQ(documents(), expected) << listed;
        EXPECT_EQ(documents(u"dok_KFA"), correction) << listed << code;
        std::filesystem::remove(scratch.path() / "Tavrix.reconciled.json");
    }
    // To the end of the lists with one new login, and from there the next time.
    begin(ReconcileBy::name);
    script[all] = {{200, named_sessions(200, "T")}, {401, ""}, {200, named_sessions(200, "T")}};
    EXPECT_EQ(get_upo(folder), "");
    EXPECT_EQ(asked.at(2), all + "T");
    begin(ReconcileBy::name);
    std::string later = named_sessions(200);
    later.replace(later.find("03-01"), 5, "03-02");
    script[all + "&dateModifiedFrom=2026-02-28T00%3A00%3A00Z"] = {{200, later}};
    script[of_s1 + paged] = {{500, "zapora"}};
    script[of_s2 + paged] = {{200, page("invoices", named("invoiceHash", "H1", 200, "K"))}};
    EXPECT_EQ(get_upo(folder), "zapora") << "one session costs the others nothing";
    EXPECT_EQ(documents(), "K|201|OK. || old||");
    for (const auto& [answer, text] : std::initializer_list<std::pair<Answer, std::string>>{
             {{401, ""}, "sessions:STATUS:401"}, {{503, "e"}, "e"}, {{0, ""}, failed}}) {
        begin(ReconcileBy::name);
        script[all] = {answer};
        EXPECT_EQ(get_upo(), text);
    }
}

// What is answered at which path, the text, and which invoices the first run and the next ask for.
TEST_F(Reconciliation, ByNameARunBeginsWhereTheLastOneEnded) {
    const std::string both =
        page("sessions",
             R"({"referenceNumber":"S2","status":{"code":200},"dateUpdated":"2026-03-02T"},)"
             R"({"referenceNumber":"S1","status":{"code":200},"dateUpdated":"2026-03-01T"})");
    const std::string one = of_s1 + paged;
    const std::string two = of_s2 + paged;
    const std::string half = of_s1 + "?pageSize=500";
    using Paths = std::vector<std::string>;
    const std::tuple<std::string, Answer, std::string, Paths, Paths> runs[] = {
        {two, {429, "limit"}, "limit", {one, two}, {two}},
        {one, {403, "e"}, "e", {one, two}, {one}},
        {one, {0, ""}, failed, {one, two}, {one}},
        {one, {200, page("invoices", named("invoiceHash", "H1", 200))}, failed, {one, two}, {one}},
        {one, {200, std::string(5 << 20, ' ')}, "", {one, half, two}, {}},
    };
    for (const auto& [path, answer, text, asked_first, asked_next] : runs) {
        const test::ScratchFolder scratch;
        for (const bool is_first : {true, false}) {
            begin(ReconcileBy::name);
            for (const char* from : {"", "&dateModifiedFrom=2026-02-28T00%3A00%3A00Z"}) {
                script[all + from] = {{200, both}};
            }
            script[all + "&dateModifiedFrom=2026-03-01T00%3A00%3A00Z"] = {
                {200, page("sessions", "")}};
            script[half] = {{200, page("invoices", "")}};
            if (is_first) script[path] = {answer};
            // The folder of the settings refuses, the user's own does not.
            EXPECT_EQ(get_upo(u"/no/such/", base::from_utf8(scratch.path().string() + "/")),
                      is_first ? text : "");
            EXPECT_EQ(Paths(asked.begin() + 1, asked.end()), is_first ? asked_first : asked_next)
                << answer.status;
            EXPECT_EQ(documents(), "|| || old||") << answer.status;
        }
    }
}

}  // namespace
}  // namespace tavrix::ksef
