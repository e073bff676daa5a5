// What is kept on disk.
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

#include "tests/sandbox/fixture.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

class RestartTest : public ::testing::Test {
  protected:
    std::string file() const { return folder_.path() / "sandbox.sqlite"; }
    std::unique_ptr<RunningSandbox> run() {
        return std::make_unique<RunningSandbox>(Options(), open_sqlite_store(file()));
    }
    /// The number of records that a change of the file touched.
    int change(const char* sql) const {
        sqlite3* database = nullptr;
        sqlite3_open(file().c_str(), &database);
        sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
        const int changes = sqlite3_changes(database);
        sqlite3_close(database);
        return changes;
    }
    /// Why the file cannot be opened; empty when it can.
    std::string refusal() const {
        try {
            open_sqlite_store(file());
            return "";
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    test::ScratchFolder folder_;
};

/// All that the sandbox shows of its records; what it has been asked for is not kept.
Json records(Client& client, int port) {
    Json all = Client(port, "").get("/sandbox/state").json();
    for (const char* forgotten : {"requests", "counters"}) all.erase(forgotten);
    for (const char* list : {"/sessions?sessionType=Online", "/tokens", "/auth/sessions",
                             "/security/public-key-certificates"})
        all[list] = client.get(list).json();
    return all;
}

TEST_F(RestartTest, EverythingIsThereAgainUntilItIsReset) {
    auto sandbox = run();
    Client first(sandbox->port());
    first.sign_in(seller_nip);
    first.post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}});
    first.open_session();
    first.send(SampleInvoice().xml());
    first.send(SampleInvoice().xml());
    first.post("/sessions/online/" + first.session + "/close");
    const std::string invoices = "/sessions/" + first.session + "/invoices";
    const Json before = records(first, sandbox->port()),
               invoice = first.get(invoices).json().at("invoices")[0];
    const std::string certificate = first.certificate("SymmetricKeyEncryption");

    sandbox.reset();
    EXPECT_EQ(change("update record set value = json_remove(value, '$.stored') "
                     "where kind = 'invoice'"),
              2)
        << "older files lack the date of storage";
    sandbox = run();
    Client again(sandbox->port());
    again.bearer = first.bearer;
    EXPECT_EQ(records(again, sandbox->port()), before);
    EXPECT_EQ(again.get(invoices).json().at("invoices")[0].at("permanentStorageDate"),
              invoice.at("permanentStorageDate"));
    EXPECT_EQ(again.download(invoice.at("upoDownloadUrl")).status, 200);
    const std::string number = invoice.at("ksefNumber");
    EXPECT_EQ(again.get("/invoices/ksef/" + number).body, SampleInvoice().xml());
    again.open_session();
    EXPECT_EQ(again.invoice_status(again.send(SampleInvoice().xml())).at("code"), 440)
        << "duplicates are known over a restart";
    Client(sandbox->port(), "").post("/sandbox/reset");

    sandbox.reset();
    sandbox = run();
    const Json after = Client(sandbox->port(), "").get("/sandbox/state").json();
    for (const char* list : {"sessions", "invoices", "authentications"})
        EXPECT_EQ(after.at(list).size(), 0u) << list;
    EXPECT_EQ(Client(sandbox->port()).certificate("SymmetricKeyEncryption"), certificate)
        << "keys outlive a reset";
}

TEST_F(RestartTest, ForeignAndOlderFilesAreRefused) {
    std::ofstream(file())
        << "This is a letter, not a database, and longer than a page header is, to be sure.";
    EXPECT_NE(refusal(), "");
    std::filesystem::remove(file());
    open_sqlite_store(file())->write("setting", "a", "b");
    change("pragma user_version = 1");
    EXPECT_NE(refusal().find("written by another version of the sandbox"), std::string::npos)
        << refusal();
}

}  // namespace
}  // namespace tavrix::sandbox::testing
