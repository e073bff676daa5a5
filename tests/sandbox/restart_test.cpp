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

TEST_F(RestartTest, EverythingIsThereAgain) {
    Json before;
    std::string session, invoice_page, token, certificate, upo_url;
    {
        const auto sandbox = run();
        Client client(sandbox->port());
        client.sign_in(seller_nip);
        client.open_session();
        client.send(SampleInvoice().xml());
        client.send(SampleInvoice().xml());
        client.post("/sessions/online/" + client.session + "/close");
        session = "/sessions/" + client.session;
        before = client.get(session + "/invoices").json();
        token = client.access_token;
        certificate = client.certificate("KsefTokenEncryption");
        upo_url = before.at("invoices")[0].at("upoDownloadUrl");
    }
    const auto sandbox = run();
    Client client(sandbox->port());
    client.bearer = token;
    Json after = client.get(session + "/invoices").json();
    for (Json* list : {&before, &after})
        for (Json& invoice : list->at("invoices")) invoice.erase("upoDownloadUrl");
    EXPECT_EQ(after, before);
    EXPECT_EQ(client.get(session).json().at("status").at("code"), 200);
    EXPECT_EQ(client.certificate("KsefTokenEncryption"), certificate);
    EXPECT_EQ(client.download(upo_url).status, 200);
    const std::string number = after.at("invoices")[0].at("ksefNumber");
    EXPECT_EQ(client.get("/invoices/ksef/" + number).body, SampleInvoice().xml());
    client.open_session();
    EXPECT_EQ(client.invoice_status(client.send(SampleInvoice().xml())).at("code"), 440)
        << "duplicates are known over a restart";
}

TEST_F(RestartTest, AnInvoiceAcceptedButNotYetProcessedIsProcessedAfterwards) {
    Options slow;
    slow.invoice_accepted.delay_ms = 60'000;
    std::string session, token;
    {
        const auto sandbox = run(slow);
        Client client(sandbox->port());
        client.sign_in(seller_nip);
        session = client.open_session();
        ASSERT_NE(client.send(SampleInvoice().xml()), "");
        token = client.access_token;
    }
    const auto sandbox = run(slow);
    Client client(sandbox->port());
    client.bearer = token;
    const auto code = [&] {
        return client.get("/sessions/" + session + "/invoices")
            .json()
            .at("invoices")[0]
            .at("status")
            .at("code")
            .get<int>();
    };
    EXPECT_EQ(code(), 100);
    sandbox->advance(std::chrono::minutes(1));
    EXPECT_EQ(code(), 200);
}

TEST_F(RestartTest, AResetIsKeptToo) {
    {
        const auto sandbox = run();
        Client client(sandbox->port()), control(sandbox->port(), "");
        client.sign_in(seller_nip);
        client.open_session();
        control.post("/sandbox/reset");
    }
    const auto sandbox = run();
    EXPECT_EQ(Client(sandbox->port(), "").get("/sandbox/state").json().at("sessions").size(), 0u);
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
