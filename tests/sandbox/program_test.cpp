// The program itself: how it is started, found, trusted and ended.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/sandbox/fixture.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

class ProgramTest : public ::testing::Test {
  protected:
    void TearDown() override {
        if (child_ > 0) end(SIGKILL);
    }

    std::string path(const char* name) const { return folder_.path() / name; }

    /// Starts the program and returns its port once it listens; 0 when it ends instead.
    int start(std::vector<std::string> arguments) {
        std::filesystem::remove(path("port"));
        for (const char* more : {"--port", "0", "--quiet", "--port-file"})
            arguments.emplace_back(more);
        arguments.push_back(path("port"));
        fflush(nullptr);  // or the child would print once more what waits in the buffers
        child_ = fork();
        if (child_ == 0) {
            std::vector<char*> pointers{const_cast<char*>(TAVRIX_SANDBOX_PROGRAM)};
            for (std::string& argument : arguments) pointers.push_back(argument.data());
            pointers.push_back(nullptr);
            freopen(path("output").c_str(), "w", stdout);
            freopen(path("errors").c_str(), "w", stderr);
            execv(TAVRIX_SANDBOX_PROGRAM, pointers.data());
            _exit(127);
        }
        for (;;) {
            int port = 0;
            if (std::ifstream(path("port")) >> port) return port;
            int status = 0;
            if (waitpid(child_, &status, WNOHANG) == child_) {
                child_ = 0;
                exit_status_ = WEXITSTATUS(status);
                return 0;
            }
            usleep(2000);
        }
    }

    /// Sends a signal and returns the exit status, -1 when the signal itself ended the program.
    int end(int signal) {
        int status = 0;
        kill(child_, signal);
        waitpid(child_, &status, 0);
        child_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string content(const char* name) const {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    test::ScratchFolder folder_;
    pid_t child_ = 0;
    int exit_status_ = 0;
};

TEST_F(ProgramTest, SaysWhereItListensAndStopsCleanly) {
    const int port = start({});
    ASSERT_NE(port, 0) << content("errors");
    EXPECT_EQ(content("output"), "listening on http://127.0.0.1:" + std::to_string(port) + "\n");
    Client client(port);
    EXPECT_EQ(client.post("/auth/challenge").status, 200);
    EXPECT_EQ(end(SIGTERM), 0) << "with a kept connection open";
}

TEST_F(ProgramTest, KilledAfterAcceptingItStillProcessesTheInvoice) {
    const std::vector<std::string> arguments = {"--data", path("data")};
    int port = start(arguments);
    ASSERT_NE(port, 0) << content("errors");
    std::string session, token;
    {
        Client client(port);
        client.sign_in(seller_nip);
        session = client.open_session();
        SampleInvoice invoice;
        invoice.issue_date = "2026-01-02";
        ASSERT_NE(client.send(invoice.xml()), "");
        token = client.access_token;
    }
    EXPECT_EQ(end(SIGKILL), -1);
    port = start(arguments);
    ASSERT_NE(port, 0) << content("errors");
    Client client(port);
    client.bearer = token;
    const Json list = client.get("/sessions/" + session + "/invoices").json();
    EXPECT_EQ(list.at("invoices")[0].at("status").at("code"), 200) << list;
    using std::filesystem::perms;
    for (const auto& file : std::filesystem::directory_iterator(path("data")))
        EXPECT_EQ(file.status().permissions() & (perms::group_all | perms::others_all), perms::none)
            << file.path() << " holds private keys";
}

TEST_F(ProgramTest, HttpsIsTrustedThroughTheAuthorityItWrites) {
    const std::vector<std::string> arguments = {"--https", "--ca-file-out", path("ca.pem"),
                                                "--data", path("data")};
    int port = start(arguments);
    ASSERT_NE(port, 0) << content("errors");
    const std::string authority = content("ca.pem");
    for (const char* host : {"127.0.0.1", "localhost"}) {
        httplib::SSLClient client(host, port);
        client.set_ca_cert_path(path("ca.pem").c_str());
        client.enable_server_certificate_verification(true);
        const auto answer = client.Post("/v2/auth/challenge", "{}", "application/json");
        ASSERT_TRUE(answer) << host << " " << httplib::to_string(answer.error());
        EXPECT_EQ(answer->status, 200);
    }
    httplib::SSLClient untrusting("127.0.0.1", port);
    EXPECT_FALSE(untrusting.Post("/v2/auth/challenge", "{}", "application/json"));
    EXPECT_EQ(end(SIGTERM), 0);
    ASSERT_NE(start(arguments), 0);
    EXPECT_EQ(content("ca.pem"), authority) << "clients go on trusting it";
}

TEST_F(ProgramTest, MistakesAreNamed) {
    struct Case {
        std::vector<std::string> arguments;
        const char* text;
    };
    const Case cases[] = {
        {{"--prot", "1"}, "--prot"},
        {{"--fault", "step=auth/challenge kind=explode"}, "explode"},
        {{"--token", "no bars"}, "reference|nip-NNNNNNNNNN|secret"},
        {{"--schemas", "/nowhere"}, "/nowhere"},
        {{"--ca-file-out", "x"}, "--https"},
        {{"--bind", "256.0.0.1"}, "256.0.0.1"},
    };
    for (const Case& it : cases) {
        EXPECT_EQ(start(it.arguments), 0) << it.arguments[0];
        EXPECT_NE(exit_status_, 0) << it.arguments[0];
        EXPECT_NE((content("errors") + content("output")).find(it.text), std::string::npos)
            << it.arguments[0] << ": " << content("errors");
    }
}

TEST_F(ProgramTest, FaultsOfTheCommandLineWork) {
    const int port =
        start({"--fault", "step=auth/challenge kind=status status=503 body='later' count=1",
               "--auth-polls", "1"});
    ASSERT_NE(port, 0) << content("errors");
    Client client(port);
    const Reply first = client.post("/auth/challenge");
    EXPECT_EQ(first.status, 503);
    EXPECT_EQ(first.body, "later");
    EXPECT_EQ(client.post("/auth/challenge").status, 200);
    EXPECT_EQ(client.sign_in(seller_nip).exception_code(), 21301)
        << "not finished at the first look";
}

}  // namespace
}  // namespace tavrix::sandbox::testing
