// What goes wrong at each step of the commands that speak to the service, and in what the others
// are given. Texts begin with the exit code; programs read the rest of them as "result".

#include "tests/support/trouble.h"

#include "tests/cli/cli_fixture.h"
#include "tests/support/openssl_tool.h"

namespace tavrix::cli {
namespace {

using test::expect_text;
using test::harmless;
using test::kind;
using test::run_through;
using test::Sandbox;
using test::status;
using test::Trouble;
using test::Troubles;
using test::value_at;

const Json wrong_token = value_at("status", {{"code", 450}, {"description", "Zły token"}});
const char* const login = "auth/challenge";
const std::string no_login = "1 auth/challenge:STATUS:0";

Json verdict(int code) {
    return {{"kind", "verdict"}, {"code", code}};
}

class CliTrouble : public Cli {
  protected:
    static void SetUpTestSuite() { sandbox = std::make_unique<Sandbox>("--wire-order classic"); }
    static void TearDownTestSuite() { sandbox.reset(); }

    void begin() {
        sandbox->reset();
        send_ = ready_to_send(*sandbox);
        access_ = " --json --token-file '" + folder_ + "token.txt'";
    }
    /// A package of one invoice.
    void begin_with_package() {
        begin();
        std::filesystem::create_directory(folder_ + "faktury");
        write("faktury/dok_fak-1001.xml", test::demonstration_invoice_file());
        ASSERT_EQ(run("pack '" + folder_ + "faktury' '" + folder_ + "p.zip'").exit_code, 0);
        for (const char* kept : {"p.zip.upload-state", "Tavrix.reconciled.json"})
            std::filesystem::remove(folder_ + kept);
    }
    /// The exit code and the "result" of what was answered.
    test::Outcome call(const std::string& arguments) {
        const Outcome outcome = run(arguments, "2>/dev/null");
        answer_ = Json::parse(outcome.output, nullptr, false);
        const std::string result = answer_.is_object() ? answer_.value("result", "") : "";
        return {std::to_string(outcome.exit_code) + (result.empty() ? "" : " " + result), ""};
    }

    static inline std::unique_ptr<Sandbox> sandbox;
    Json answer_;
    std::string send_, access_;
};

// Rows: whether it was accepted, and its UPO stored. The text of a second answer says nothing of
// the number that was recorded before.
TEST_F(CliTrouble, Send) {
    const Troubles troubles = {
        {login, harmless, "0", "true true"},
        {login, kind("drop"), "1 Błąd inicjalizacji sesji KSeF:auth/challenge:STATUS:0",
         "false false"},
        {"storage/invoice-upo", status(500), "3 Faktura o numerze KSeF: *", "true false"},
        {"sessions/status", kind("429", 1), "3 429 Too many Requests", "true false"},
    };
    const auto send = [&] {
        test::Outcome outcome = call(send_);
        outcome.rows = answer_.at("accepted").dump() + " " + answer_.at("upo_stored").dump();
        return outcome;
    };
    run_through(
        *sandbox, troubles, [&] { begin(); }, send);
    // That the row has the number of an earlier sending does not count.
    run_through(
        *sandbox, {{"processing/invoice", verdict(450), "1 *", "false false"}},
        [&] { sandbox->reset(); }, send);
    EXPECT_EQ(answer_.at("row").at("numer_ksef").get<std::string>().size(), 35u);
}

// Rows: what the session came to, and whether the state is kept for a second call.
TEST_F(CliTrouble, Batch) {
    const std::string refused = "1 wyysłka pliku:sessions/batch:STATUS:";
    const Troubles troubles = {
        {"sessions/batch", harmless, "0", "200: 1 of 1"},
        {login, kind("drop"), no_login},
        {"auth/status", wrong_token, "1 {*"},
        {"sessions/batch", status(400, "{}"), "1 {}"},
        {"storage/batch-parts", status(403), refused + "403"},
        {"storage/batch-parts", status(400), refused + "400", "state"},
        {"sessions/batch/close", status(400, "zapora"), "1 zapora"},
        {"processing/package", verdict(415), "1", "415: 0 of 0"},
        {"processing/invoice", verdict(450), "1", "445: 0 of 1"},
        {"sessions/status", status(401), "0", "200: 1 of 1"},
        {"sessions/status", kind("html", 0, -1), "1", "0: 0 of 0"},
    };
    run_through(
        *sandbox, troubles, [&] { begin_with_package(); },
        [&] {
            test::Outcome outcome = call("batch --wait 1 '" + folder_ + "p.zip'" + access_);
            if (const auto came = answer_.find("outcome"); came != answer_.end()) {
                outcome.rows = came->at("code").dump() + ": " + came->at("accepted").dump() +
                               " of " + came->at("invoices").dump();
            }
            if (std::filesystem::exists(folder_ + "p.zip.upload-state")) outcome.rows += "state";
            return outcome;
        });
}

// Rows: the accepted, the failed, the cancelled documents.
TEST_F(CliTrouble, Reconcile) {
    const char* const list = "sessions";
    const char* const invoices = "sessions/invoices";
    const Troubles by_either = {
        {list, harmless, "0", "1 0 0"},
        {login, kind("drop"), no_login, "0 0 0"},
        {"auth/status", wrong_token, "1 {*", "0 0 0"},
        {list, kind("drop", 0, -1), "1 KSeF nie odpowiedział: *", "0 0 0"},
        {list, kind("html"), "1 *", "0 0 0"},
    };
    const Troubles by_name = {
        {list, status(503, "zapora"), "1 zapora", "0 0 0"},
        {list, value_at("sessions[0].status.code", 440), "0", "1 0 0"},
        {invoices, status(500), "1 sessions:STATUS:500", "0 0 0"},
        {invoices, value_at("invoices[0].status.code", 450), "0", "0 1 0"},
    };
    const Troubles by_position = {
        {list, status(503, "zapora"), "0", "1 0 0"},
        {invoices, status(500), "0", "0 0 0"},
        {invoices, kind("html"), "1 Odpowiedź KSeF nie jest dokumentem JSON", "0 0 0"},
    };
    const auto expect_outcomes = [&](const Troubles& troubles, const std::string& by) {
        const auto send = [&] {
            begin_with_package();
            ASSERT_EQ(call("batch '" + folder_ + "p.zip'" + access_).text, "0");
            const Json sent = sandbox->state().at("invoices").at(0);
            ports::SqliteConnection::open(folder_ + "firma.db")
                ->execute_script("update dok_fak set NumerRef_ksef='" +
                                 sent.at("referenceNumber").get<std::string>() +
                                 "' where ddout_id=1001");
        };
        run_through(*sandbox, troubles, send, [&] {
            test::Outcome outcome =
                call("reconcile --by " + by + " --db '" + folder_ + "firma.db'" + access_);
            const Json& counts = answer_.at("documents");
            outcome.rows = counts.at("accepted").dump() + " " + counts.at("failed").dump() + " " +
                           counts.at("cancelled").dump();
            return outcome;
        });
    };
    expect_outcomes(by_either, "name");
    expect_outcomes(by_name, "name");
    expect_outcomes(by_either, "position");
    expect_outcomes(by_position, "position");
}

// Rows: recorded, fetched, missing.
TEST_F(CliTrouble, Pull) {
    const char* const list = "invoices/query/metadata";
    const char* const document = "invoices/ksef";
    const std::string unknown = "1 Nieznany błąd po prawidłowej inicializacji";
    const Troubles troubles = {
        {list, harmless, "0 kod bładu:200", "2 2 0"},
        {login, kind("drop"), "1 Błąd inicjalizacji sesji KSeF:auth/challenge:STATUS:0", "0 0 0"},
        {"auth/status", wrong_token, "1 Błąd inicjalizacji sesji KSeF:{*", "0 0 0"},
        {list, status(500), "1 invoices/query/metadata:STATUS:500", "0 0 0"},
        {list, value_at("invoices[0]", 7), unknown, "1 1 0"},
        {document, kind("html"), unknown, "2 1 1"},
        {document, status(406, "", 1, 1), "1 kod bładu:406", "2 1 1"},
    };
    const auto buy = [&] {
        begin();
        sandbox->call("POST", "/sandbox/purchases",
                      R"({"seller":"1111111111","buyer":"5265877635","count":2})");
    };
    run_through(*sandbox, troubles, buy, [&] {
        test::Outcome outcome =
            call("pull --nip 5265877635 --db '" + folder_ + "firma.db'" + access_);
        outcome.rows = answer_.at("recorded").dump() + " " + answer_.at("fetched").dump() + " " +
                       answer_.at("missing").dump();
        return outcome;
    });
}

// Rows: whether a token is shown, and how often its state was asked for.
TEST_F(CliTrouble, NewToken) {
    const char* const state = "tokens/status";
    const Troubles troubles = {
        {state, value_at("status", "Pending", 0, 1), "0", "token 2"},
        {state, status(500), "0", "token 2"},
        {state, value_at("status", "Failed"), "1", "token 1"},
        {login, kind("drop"), no_login, "0"},
        {"auth/status", wrong_token, "1 {*", "0"},
        {"tokens/create", status(403, "{}"), "1 {}", "0"},
        {"tokens/create", kind("drop"), "1 /tokens:STATUS:0", "0"},
    };
    run_through(
        *sandbox, troubles, [&] { begin(); },
        [&] {
            test::Outcome outcome =
                call("token new --permission InvoiceRead --permission CredentialsRead" + access_);
            outcome.rows = std::to_string(sandbox->requests(state).size());
            if (answer_.value("token", "").find("|nip-5265877635|") != std::string::npos)
                outcome.rows = "token " + outcome.rows;
            return outcome;
        });
    EXPECT_EQ(sandbox->requests("tokens/create").at(0).at("body").at("permissions"),
              Json({"InvoiceRead", "CredentialsRead"}));
}

// The command, what is done to its files before, and whether its file is there then. These need no
// service.
TEST_F(CliTrouble, Files) {
    begin();
    const std::string hash = " --hash UtQp9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE=";
    const std::string pack = "pack faktury made";
    const std::string split = "split package .";
    const std::string link = "certlink --serial 01F20A5D352AE590 --nip 5265877635 --key key" + hash;
    const std::string invoicelink = "invoicelink --nip 5265877635 --date ";
    const std::string locked = "2 err:Hasło nie otwiera klucza prywatnego: *";
    setenv("TAVRIX_KEY_PASS", "inne", 1);
    const Troubles troubles = {
        {pack, "true", "0", "made"},
        {pack, "touch faktury/ż.xml", "2 ż.xml: nazwa ma się składać *"},
        {pack, "mkdir faktury/b.xml", "2 b.xml: w folderze mają być same faktury"},
        {pack, ": > faktury/a.xml", "2 a.xml: faktura ma mieć od 1 do 3 000 000 bajtów"},
        {pack, "truncate -s 3000001 faktury/a.xml", "2 a.xml: faktura ma mieć *"},
        {pack, "printf '\\xEF\\xBB\\xBF<F/>' > faktury/a.xml", "2 a.xml: faktura zaczyna się *"},
        {pack, "mv faktury/a.xml faktury/$(printf %0125d 1).xml", "2 0*"},
        {pack, "rm faktury/a.xml", "2 faktury: w folderze ma być od 1 do 10 000 faktur"},
        {pack, "mkdir made", "1 *", "made"},
        {split, "true", "0"},
        {split, "mkdir package.001", "1 *"},
        {split, "rm package", "2 file: *"},
        {link, "true", "0"},
        {link, "rm key", "2 key: nie można odczytać pliku"},
        {link, "date > key", "2 BŁĄD PEM: *"},
        {link, "openssl genrsa -out key 1024", "2 klucz RSA ma mniej niż 2048 bitów"},
        {link, "openssl ec -in key -aes256 -passout pass:haslo -out key", locked},
        {link + " --context a/b", "true", "2 --context: *"},
        {link + " --context-type InternalId", "true", "2 brak --context"},
        {link + " --xml faktury/a.xml", "true", "2 tylko jedna z: --xml,--hash; podano 2"},
        {link + " faktury/a.xml", "true", "2 niezrozumiałe: faktury/a.xml"},
        {link + " --context-type X", "true", "2 --context-type: X nie jest jednym z: N*"},
        {invoicelink + "2026-02-30" + hash, "true", "2 --date: oczekiwano daty RRRR-MM-DD"},
        {invoicelink + "2026-02-01 --hash abc", "true", "2 --hash: *"},
        {invoicelink + "2026-02-01 --xml none", "true", "2 none: nie można odczytać pliku"},
        {"send --nip 1 --xml /dev/null --table t --id 1 --db none --token-file none", "true",
         "2 none: nie można odczytać pliku"},
        {"batch package --token-file none", "true", "2 none: nie można odczytać pliku"},
        {"reconcile --db firma.db --token-file none", "true", "2 none: nie można odczytać pliku"},
        {"pull --nip 1 --db firma.db --token-file none", "true",
         "2 none: nie można odczytać pliku"},
        {"pull --nip 1 --db none --token-file token.txt", "true", "1 *"},
        {"token new --token-file none", "true", "2 none: nie można odczytać pliku"},
        {"token new --token tajne", "true", "1 Błędny token: brak części rozdzielonych znakiem |"},
    };
    std::filesystem::current_path(folder_);
    for (const Trouble& line : troubles) {
        const std::string spoil = line.fault;
        SCOPED_TRACE(line.step + " after " + spoil);
        test::run_in(scratch_,
                     "rm -rf faktury made made.* package* key; mkdir faktury; "
                     "echo '<F/>' > faktury/a.xml; echo 1 > package; "
                     "openssl ecparam -name prime256v1 -genkey -noout -out key; " +
                         spoil);
        expect_text(call(line.step + " --json").text, line.text);
        EXPECT_EQ(std::filesystem::exists(folder_ + "made"), line.rows == "made");
    }
    std::filesystem::current_path("/");
}

}  // namespace
}  // namespace tavrix::cli
