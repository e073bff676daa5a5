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
    Json before, first;
    std::string token, certificate;
    {
        const auto sandbox = run();
        Client client(sandbox->port());
        client.sign_in(seller_nip);
        client.post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}});
        client.open_session();
        client.send(SampleInvoice().xml());
        client.send(SampleInvoice().xml());
        client.post("/sessions/online/" + client.session + "/close");
        first = client.get("/sessions/" + client.session + "/invoices").json().at("invoices").at(0);
        token = client.access_token;
        certificate = client.certificate("SymmetricKeyEncryption");
        before = records(client, sandbox->port());
    }
    {
        const auto sandbox = run();
        Client client(sandbox->port());
        client.bearer = token;
        EXPECT_EQ(records(client, sandbox->port()), before);
        EXPECT_EQ(client.download(first.at("upoDownloadUrl")).status, 200);
        const std::string number = first.at("ksefNumber");
        EXPECT_EQ(client.get("/invoices/ksef/" + number).body, SampleInvoice().xml());
        client.open_session();
        EXPECT_EQ(client.invoice_status(client.send(SampleInvoice().xml())).at("code"), 440)
            << "duplicates are known over a restart";
        Client(sandbox->port(), "").post("/sandbox/reset");
    }
    const auto sandbox = run();
    const Json after = Client(sandbox->port(), "").get("/sandbox/state").json();
    for (const char* list : {"sessions", "invoices", "authentications"})
        EXPECT_EQ(after.at(list).size(), 0u) << list;
    EXPECT_EQ(Client(sandbox->port()).certificate("SymmetricKeyEncryption"), certificate)
        << "keys outlive a reset";
}

TEST_F(RestartTest, InvoicesKeptWithoutTheirDateOfStorageGetItBack) {
    Client client(0);
    const auto invoices = [&] {
        const auto sandbox = run();
        Client now(sandbox->port());
        now.bearer = client.access_token;
        return now.get("/sessions/" + client.session + "/invoices").json().at("invoices");
    };
    {
        const auto sandbox = run();
        client = Client(sandbox->port());
        client.sign_in(seller_nip);
        client.open_session();
        client.send(SampleInvoice().xml());
    }
    const std::string date = invoices()[0].at("permanentStorageDate");
    sqlite3* database = nullptr;
    sqlite3_open(file().c_str(), &database);
    sqlite3_exec(database,
                 "update record set value = json_remove(value, '$.stored') where kind = 'invoice'",
                 nullptr, nullptr, nullptr);
    EXPECT_EQ(sqlite3_changes(database), 1);
    sqlite3_close(database);
    EXPECT_EQ(invoices()[0].at("permanentStorageDate"), date);
}

TEST_F(RestartTest, ForeignBusyAndOlderFilesAreRefused) {
    std::ofstream(file())
        << "This is a letter, not a database, and longer than a page header is, to be sure.";
    EXPECT_NE(refusal(), "");
    std::filesystem::remove(file());
    {
        const auto first = open_sqlite_store(file());
        first->write("setting", "a", "b");
        EXPECT_NE(refusal(), "");
    }
    sqlite3* database = nullptr;
    sqlite3_open(file().c_str(), &database);
    sqlite3_exec(database, "pragma user_version = 1", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    EXPECT_NE(refusal().find("written by another version of the sandbox"), std::string::npos)
        << refusal();
}

}  // namespace
}  // namespace tavrix::sandbox::testing
