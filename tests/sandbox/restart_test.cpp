// What is kept on disk.
#include <filesystem>
#include <fstream>

#include "tests/sandbox/fixture.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

class RestartTest : public ::testing::Test {
  protected:
    std::string file() const { return folder_.path() / "sandbox.sqlite"; }
    std::unique_ptr<RunningSandbox> run(const Options& options = {}) {
        return std::make_unique<RunningSandbox>(options, open_sqlite_store(file()));
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
    Json before;
    std::string session, token, upo_url, number, pending;
    {
        const auto sandbox = run();
        Client client(sandbox->port()), control(sandbox->port(), "");
        client.sign_in(seller_nip);
        client.post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}});
        session = client.open_session();
        client.send(SampleInvoice().xml());
        client.send(SampleInvoice().xml());
        client.post("/sessions/online/" + session + "/close");
        const Json first =
            client.get("/sessions/" + session + "/invoices").json().at("invoices").at(0);
        upo_url = first.at("upoDownloadUrl");
        number = first.at("ksefNumber");
        control.post("/sandbox/pace", {{"invoice", {{"delay_ms", 60'000}}}});
        session = client.open_session();
        pending = client.send(SampleInvoice{.number = "FV/2"}.xml());
        token = client.access_token;
        before = records(client, sandbox->port());
    }
    {
        Options slow;
        slow.invoice_accepted.delay_ms = 60'000;
        const auto sandbox = run(slow);
        Client client(sandbox->port()), control(sandbox->port(), "");
        client.bearer = token;
        EXPECT_EQ(records(client, sandbox->port()), before);
        EXPECT_EQ(client.download(upo_url).status, 200);
        EXPECT_EQ(client.get("/invoices/ksef/" + number).body, SampleInvoice().xml());
        client.session = session;
        EXPECT_EQ(client.invoice_status(pending).at("code"), 100);
        sandbox->advance(std::chrono::minutes(1));
        EXPECT_EQ(client.invoice_status(pending).at("code"), 200);
        client.open_session();
        const std::string again = client.send(SampleInvoice().xml());
        sandbox->advance(std::chrono::minutes(1));
        EXPECT_EQ(client.invoice_status(again).at("code"), 440)
            << "duplicates are known over a restart";
        control.post("/sandbox/reset");
    }
    const auto sandbox = run();
    const Json after = Client(sandbox->port(), "").get("/sandbox/state").json();
    for (const char* list : {"sessions", "invoices", "authentications"})
        EXPECT_EQ(after.at(list).size(), 0u) << list;
}

TEST_F(RestartTest, ForeignAndBusyFilesAreRefused) {
    std::ofstream(file())
        << "This is a letter, not a database, and longer than a page header is, to be sure.";
    EXPECT_THROW(open_sqlite_store(file()), std::runtime_error);
    std::filesystem::remove(file());
    const auto first = open_sqlite_store(file());
    first->write("setting", "a", "b");
    EXPECT_THROW(open_sqlite_store(file()), std::runtime_error);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
