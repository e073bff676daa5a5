// The outcome of packages: by the position of what the service lists, and by the names of today's.

#include <fstream>

#include "tests/ksef/send_faults.h"
#include "tests/sandbox/packed.h"
#include "tests/sandbox/sample_invoice.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {
namespace {

using sandbox::testing::SampleInvoice;
using test::Json;

const std::string not_fetched = "Nieznany błąd pobierania upo";
const char* const session_list = "sessions";
const char* const invoices = "sessions/invoices";
const std::string one_by_one = "/api/v2/sessions?pageSize=1000&sessionType=Batch&statuses=";

const std::string at_once = one_by_one + "Succeeded&statuses=Failed&statuses=Cancelled";
const std::string first = "1/invoices?pageSize=1000";
const std::string second = "2/invoices?pageSize=1000";

// The first package's list of invoices holds this one alone.
Json listed(const char* key, const char* value, int code, const char* number = "") {
    const Json entry{{"referenceNumber", "R2"},
                     {key, value},
                     {"ksefNumber", number},
                     {"status", {{"code", code}}}};
    return value_at("invoices", Json::array({entry}), 0, 1);
}
// The status of the first package's first invoice.
Json first_status(const Json& status) {
    return value_at("invoices[0].status", status, 0, 1);
}
std::string page(const Json& sessions, const char* token = "") {
    return Json{{"continuationToken", token}, {"sessions", sessions}}.dump();
}

/// Two packages were sent to a sandbox that lists in the older order: the first one with the
/// invoices FV/1 and FV/2, the second one with FV/3.
class Reconciliation : public SendFixture {
  protected:
    static void SetUpTestSuite() {
        sandbox = std::make_unique<test::Sandbox>("--wire-order classic");
    }
    void SetUp() override {
        SendFixture::SetUp();
        settings.service.demo = settings.service.test;
        for (const auto& numbers : {std::vector{"FV/1", "FV/2"}, {"FV/3"}}) {
            sandbox::testing::Files packed_files;
            for (const std::string number : numbers) {
                SampleInvoice sample;
                sample.number = number;
                packed_files.emplace_back(number.substr(3) + ".xml", sample.xml());
            }
            std::ofstream(package(numbers[0]), std::ios::binary)
                << sandbox::testing::packed(packed_files);
        }
    }
    std::string package(const std::string& number) {
        return (folder.path() / number.substr(3)).string() + ".zip";
    }
    void send_package(const char* number) {
        ports::SqliteDatabase host(connection);
        EXPECT_EQ(
            KseF_comm(ports()).SendBach(host, base::from_utf8(package(number)), u"FA (3)", u"1-0E",
                                        u"FA", base::SecretText(token), u"", environment),
            u"");
    }
    /// All documents of a package go by its first number. By position they have their references;
    /// by name those of FV/1 and FV/3 have their hashes. One has another number already.
    void begin(ReconcileBy by = ReconcileBy::position) {
        begin_anew();
        settings.reconcile_by = by;
        send_package("FV/1");
        send_package("FV/3");
        sessions.clear();
        connection->execute_script(
            "delete from dok_fak; insert into dok_fak (ddout_id,ddout_numer,numer_ksef) values "
            "(1,'FV/1',''),(2,'FV/1',''),(3,'FV/3',''),(4,'B''1','old')");
        const Json state = sandbox->state();
        for (const Json& session : state.at("sessions"))
            sessions.push_back(session.at("referenceNumber"));
        for (const Json& sent : state.at("invoices")) {
            const std::string number = sent.at("invoiceNumber"),
                              reference = sent.at("referenceNumber"), hash = sent.at("invoiceHash");
            const std::string value = by == ReconcileBy::position ? "NumerRef_ksef='" + reference
                                      : number == "FV/2"          ? "NumerRef_ksef='R2"
                                                                  : "HashFaktury='" + hash;
            connection->execute_script("update dok_fak set " + value +
                                       "' where ddout_id=" + number.substr(3));
        }
        asked_before = 0;
        asked_before = asked().size();
    }
    std::string get_upo(const base::Text& settings_folder = u"",
                        const base::Text& user_folder = u"") {
        KsefPorts ports = this->ports();
        ports.settings_folder = settings_folder;
        ports.user_folder = user_folder;
        KseF_comm client(ports);
        ports::SqliteDatabase host(connection);
        return base::to_utf8(client.GetUpo(host, u"5265877635", base::SecretText(token), false));
    }
    std::string documents(const char16_t* from = u"dok_fak") {
        const base::Text sql = u"select numer_ksef,status_ksef,Export_Opis_bledu_ksef from ";
        return rows((sql + from).c_str());
    }
    /// What was asked for of lists and invoices, in order; sessions go by their number.
    std::vector<std::string> asked() {
        std::vector<std::string> targets;
        const Json state = sandbox->state();
        for (const Json& request : state.at("requests")) {
            if (request.at("step") != session_list && request.at("step") != invoices) continue;
            std::string target = request.at("target");
            for (std::size_t i = 0; i < sessions.size(); ++i)
                target = base::to_utf8(base::replace_all(
                    base::from_utf8(target), base::from_utf8("/api/v2/sessions/" + sessions[i]),
                    base::from_utf8(std::to_string(i + 1))));
            targets.push_back(std::move(target));
        }
        targets.erase(targets.begin(), targets.begin() + std::ptrdiff_t(asked_before));
        return targets;
    }

    test::ScratchFolder folder;
    std::vector<std::string> sessions;
    std::size_t asked_before = 0;
};

TEST_F(Reconciliation, EachPassLeavesItsOutcomeAndTheLastOneStays) {
    begin();
    const auto session = [&](std::size_t index, const char* number) {
        return Json::array({{{"referenceNumber", sessions[index]}, {"number", number}}});
    };
    const std::string next = one_by_one + "Failed&x-continuation-token=t=+/&";
    test::set_trouble(*sandbox, session_list,
                      {status(200, page(session(0, "FV/1"), "t=+/&"), 1, 1), status(503, "", 1, 2),
                       status(401, "{}", 1, 3), status(200, page(Json::array()), 1, 4),
                       status(200, page(session(1, "FV/3")), 1, 5)});
    EXPECT_EQ(get_upo(), "");
    EXPECT_EQ(documents(), "|500|Failed || |500|Canseled old||");
    EXPECT_EQ(asked(),
              (std::vector<std::string>{one_by_one + "Succeeded", "2/invoices", "1/invoices",
                                        one_by_one + "Failed", "1/invoices", next, next, next,
                                        one_by_one + "Cancelled", "2/invoices"}));
    EXPECT_EQ(clock.slept.count(), 0) << "nothing is waited for";
}

// The newest package is listed first.
TEST_F(Reconciliation, TroubleAtEachStepHasItsTextAndLeavesWhatWasWritten) {
    const std::string none = "|| || || old||";
    const std::string oldest = "K|201|OK. || || old||";
    const std::string newest = "|| || K|201|OK. old||";
    const std::string both = "K|201|OK. || K|201|OK. old||";
    const Json entries = {{{"r", "S1"}}, 7, nullptr, Json::array(), {{"r", "S1"}, {"d", nullptr}}};
    const Json short_ones = {{{"n", 1}}, {{"n", 1}, {"r", "R1"}}, "R1", 1};
    const test::Troubles troubles = {
        {"auth/challenge", kind("drop"), session_failed + "auth/challenge:STATUS:0", none},
        {"auth/status", wrong_token, session_failed + "{*", none},
        {session_list, harmless, "", both},
        {session_list, status(503, "", 7), "", both},
        {session_list, kind("drop", 0, -1), not_fetched, none},
        {session_list, kind("html"), not_fetched, none},
        {session_list, kind("empty"), not_fetched, none},
        {session_list, value_at("sessions", entries), "", none},
        // As the service writes them today.
        {session_list, without("sessions[*].invoiceNumber"), "", none},
        {session_list, value_at("sessions[1].invoiceNumber", "A'"), not_fetched, newest},
        // Somebody who does not look at the token.
        {session_list,
         {value_at("continuationToken", "T", 0, 1), status(200, page(Json::array(), "T"), 9, 1)},
         "",
         both},
        {invoices, status(500), "", oldest},
        {invoices, kind("truncated", 1), not_fetched, newest},
        {invoices, kind("drop", 1, -1), not_fetched, newest},
        {invoices, value_at("invoices", short_ones, 0, 1), "", oldest},
        {invoices, value_at("invoices[0].referenceNumber", "R9", 1, 1), "",
         "|| K|201|OK. K|201|OK. old||"},
    };
    const auto call = [&]() -> test::Outcome {
        const std::string text = get_upo();
        return {text, documents()};
    };
    run_through(
        *sandbox, troubles, [&] { begin(); }, call);
    const auto lock = [&] {
        begin();
        connection->execute_script(
            "create trigger t before update on dok_fak when new.ddout_id=1 "
            "begin select raise(abort,'locked'); end");
    };
    run_through(*sandbox, {{session_list, harmless, not_fetched, newest}}, lock, call);
}

// Rows: those of dok_fak, and the correction that was noted.
TEST_F(Reconciliation, ByNameEachInvoiceIsFoundAndJudgedByItself) {
    const auto write_notes = [&] {
        begin(ReconcileBy::name);
        std::filesystem::remove(folder.path() / "Tavrix.reconciled.json");
        std::ofstream notes(folder.path() / "Tavrix.sent-packages.jsonl");
        const std::tuple<const char*, const char*, int, bool> noted[] = {
            {"f.xml", "dok_KFA", 2001, false}, {"g.xml", "setup --", 1, false},
            {"h.xml", "", 0, false},           {"i.xml", "dok_fak", 4, false},
            {"f.xml", "dok_fak", 4, true},
        };
        for (const auto& [file, where, id, was_sent_again] : noted) {
            notes << Json{{"session", was_sent_again ? "S9" : sessions[0]},
                          {"file", file},
                          {"hash", "x"},
                          {"table", where},
                          {"ddout_id", id}}
                  << '\n';
        }
    };
    const std::string none = "|| || K|201|OK. old|| / ||";
    const std::string whole = "K|201|OK. || K|201|OK. old|| / ||";
    const Json nothing =
        at_step(invoices, value_at("invoices", {7, nullptr, Json::object()}, 0, 1));
    const Json duplicate{{"code", 440}, {"extensions", {{"originalKsefNumber", "O"}}}};
    const test::Troubles troubles = {
        {session_list, harmless, "", whole},
        {session_list,
         {value_at("sessions[1].status.code", 445), nothing},
         "",
         "|| || K|201|OK. old|| / |500|Failed"},
        {session_list,
         {value_at("sessions[1].status.code", 440), nothing},
         "",
         "|| || K|201|OK. old|| / |500|Canseled"},
        {session_list, without("sessions[1].status"), "", whole},
        // To the end of the lists, with one new login.
        {session_list,
         {value_at("continuationToken", "T"), status(401, "", 1, 1),
          status(200, page(Json::array(), "T"), 1, 2)},
         "",
         whole},
        {session_list, status(401, "", -1), "sessions:STATUS:401", "|| || || old|| / ||"},
        {session_list, status(503, "e"), "e", "|| || || old|| / ||"},
        {session_list, kind("drop", 0, -1), not_fetched, "|| || || old|| / ||"},
        {session_list, kind("html"), not_fetched, "|| || || old|| / ||"},
        {invoices, first_status(duplicate), "", "O|201|OK. || K|201|OK. old|| / ||"},
        {invoices, first_status({{"code", 450}}), "", "|500|Failed || K|201|OK. old|| / ||"},
        {invoices, first_status({{"code", 100}}), "", none},
        {invoices, without("invoices[0].status", 1), "", none},
        {invoices, status(500, "zapora"), "zapora", none},
        {invoices, listed("invoiceNumber", "FV/1", 200, "N"), "",
         "|| N|201|OK. K|201|OK. old|| / ||"},
        // What has another number is another invoice.
        {invoices, listed("invoiceNumber", "B'1", 200, "N"), "", none},
        {invoices, listed("invoiceNumber", "B'1", 450), "", none},
        {invoices, listed("invoiceNumber", "B'1", 200, "old"), "",
         "|| || K|201|OK. old|201|OK. / ||"},
        {invoices, listed("invoiceFileName", "f.xml", 200, "N"), "",
         "|| || K|201|OK. old|| / N|201|OK."},
    };
    run_through(*sandbox, troubles, write_notes, [&]() -> test::Outcome {
        const std::string text = get_upo(base::from_utf8(folder.path().string() + "/"));
        return {text, documents() + " / " + documents(u"dok_KFA")};
    });
}

// What goes wrong at the lists of invoices, and which of them the first run and the next ask for.
TEST_F(Reconciliation, ByNameARunBeginsWhereTheLastOneEnded) {
    using Paths = std::vector<std::string>;
    const auto behind_list = [](const Paths& all) { return Paths(all.begin() + 1, all.end()); };
    const std::string half = "1/invoices?pageSize=500";
    const std::tuple<Json, std::string, Paths, Paths> runs[] = {
        {status(429, "limit", 1, 1), "limit", {first, second}, {second}},
        {status(403, "e"), "e", {first, second}, {first}},
        {kind("cut"), not_fetched, {first, second}, {first}},
        {value_at("invoices[0].ksefNumber", "", 0, 1), not_fetched, {first, second}, {first}},
        {without("invoices[0].status", 1), "", {first, second}, {first}},
        {status(200, std::string(5 << 20, ' ')), "", {first, half, second}, {}},
    };
    for (const auto& [fault, text, asked_first, asked_next] : runs) {
        const test::ScratchFolder scratch;
        const base::Text own = base::from_utf8(scratch.path().string() + "/");
        begin(ReconcileBy::name);
        test::set_trouble(*sandbox, invoices, fault);
        // The folder of the settings refuses, the user's own does not.
        EXPECT_EQ(get_upo(u"/no/such/", own), text);
        EXPECT_EQ(behind_list(asked()), asked_first) << text;
        asked_before = 0;
        asked_before = asked().size();
        sandbox->call("DELETE", "/sandbox/faults");
        EXPECT_EQ(get_upo(u"/no/such/", own), "");
        EXPECT_EQ(behind_list(asked()), asked_next) << text;
    }
}

// The service gives out a limited number of answers an hour, and a company may have more packages.
TEST_F(Reconciliation, ByNameAFirstRunOfManyPackagesEndsInSeveralCalls) {
    begin(ReconcileBy::name);
    Json many = Json::array();
    for (int i = 0; i < 250; ++i) {
        many.push_back({{"referenceNumber", "S" + std::to_string(i)},
                        {"status", {{"code", 200}}},
                        {"dateUpdated", "2026-03-01T00:00:" + std::to_string(100 + i)}});
    }
    test::set_trouble(*sandbox, session_list, status(200, page(many), -1));
    test::set_trouble(*sandbox, invoices,
                      {status(200, R"({"invoices":[]})", 200), status(429, "limit", 1, 200),
                       status(200, R"({"invoices":[]})", -1, 201)});
    const base::Text own = base::from_utf8(folder.path().string() + "/");
    const std::pair<const char*, std::size_t> calls[] = {{"limit", 201}, {"", 251}, {"", 251}};
    for (const auto& [text, asked_for] : calls) {
        EXPECT_EQ(get_upo(own), text);
        EXPECT_EQ(sandbox->requests(invoices).size(), asked_for);
    }
    // Another token may see other sessions.
    token = u"20261121-EC-0000000003-0000000004-AB|nip-5265877635|0123456789abcdef";
    EXPECT_EQ(get_upo(own), "");
    EXPECT_EQ(sandbox->requests(invoices).size(), 501u);
    // Nothing can be kept anywhere, which costs the next run its time.
    EXPECT_EQ(get_upo(u"/no/such/", u"/no/such/"), "");
    EXPECT_EQ(sandbox->requests(invoices).size(), 751u);
}

}  // namespace
}  // namespace tavrix::ksef
