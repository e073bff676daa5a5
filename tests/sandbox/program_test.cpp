// The program itself: how it is started, found, trusted and ended.
#include <signal.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>

#include "tests/sandbox/fixture.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

class ProgramTest : public ::testing::Test {
  protected:
    void TearDown() override {
        if (pipe_ != nullptr) end(SIGKILL);
    }

    std::string path(const char* name) const { return folder_.path() / name; }

    /// Starts the program and returns its port once it listens; 0 when it ends instead.
    /// \param arguments as a shell reads them.
    int start(const std::string& arguments) {
        // The program takes the shell's place, and with it the number that the shell says.
        pipe_ = popen(
            ("echo $$; exec " TAVRIX_SANDBOX_PROGRAM " --port 0 --quiet " + arguments + " 2>&1")
                .c_str(),
            "r");
        child_ = std::stoi(read_line());
        greeting_ = read_line();
        if (!greeting_.starts_with("listening on ")) return 0;
        return std::stoi(greeting_.substr(greeting_.rfind(':') + 1));
    }

    /// Sends a signal and returns the exit status, -1 when the signal itself ended the program.
    int end(int signal) {
        kill(child_, signal);
        // Left unread, its last words would meet a closed pipe.
        while (!std::feof(pipe_)) read_line();
        const int status = pclose(std::exchange(pipe_, nullptr));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string read_line() {
        std::string line;
        for (int c = 0; (c = std::fgetc(pipe_)) != EOF && c != '\n';) line += static_cast<char>(c);
        return line;
    }
    std::string content(const char* name) const {
        std::ifstream file(path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    test::ScratchFolder folder_;
    std::FILE* pipe_ = nullptr;
    pid_t child_ = 0;
    /// The first line that it wrote.
    std::string greeting_;
};

TEST_F(ProgramTest, SaysWhereItListensAndStopsCleanly) {
    const int port = start("--port-file " + path("port") +
                           " --auth-polls 1 --fault "
                           "'step=auth/challenge kind=status status=503 body=later count=1'");
    ASSERT_NE(port, 0) << greeting_;
    EXPECT_EQ(greeting_, "listening on http://127.0.0.1:" + std::to_string(port));
    Client client(port);
    EXPECT_EQ(client.post("/auth/challenge").body, "later");
    EXPECT_EQ(client.sign_in(seller_nip).exception_code(), 21301)
        << "not finished at the first look";
    EXPECT_EQ(content("port"), std::to_string(port) + "\n");
    EXPECT_EQ(end(SIGTERM), 0) << "with a kept connection open";
}

TEST_F(ProgramTest, KilledAfterAcceptingItStillProcessesTheInvoice) {
    const std::string arguments = "--data " + path("data");
    Client before(start(arguments));
    before.sign_in(seller_nip);
    before.open_session();
    ASSERT_NE(before.send(SampleInvoice{.issue_date = "2026-01-02"}.xml()), "") << greeting_;
    EXPECT_EQ(end(SIGKILL), -1);
    Client after(start(arguments));
    after.bearer = before.access_token;
    const Json list = after.get("/sessions/" + before.session + "/invoices").json();
    EXPECT_EQ(list.at("invoices")[0].at("status").at("code"), 200) << list;
    using std::filesystem::perms;
    for (const auto& file : std::filesystem::directory_iterator(path("data")))
        EXPECT_EQ(file.status().permissions() & (perms::group_all | perms::others_all), perms::none)
            << file.path() << " holds private keys";
}

TEST_F(ProgramTest, TheLogNamesASchemaThatTheFolderLacks) {
    Client client(start("--schemas " + folder_.path().string()));
    client.sign_in(seller_nip);
    client.open_session();
    EXPECT_EQ(client.invoice_status(client.send(SampleInvoice().xml())).at("code"), 200);
    kill(child_, SIGTERM);
    EXPECT_NE(read_line().find("no Schemat_FA(3)_v1-0E.xsd in " + folder_.path().string()),
              std::string::npos);
}

TEST_F(ProgramTest, HttpsIsTrustedThroughTheAuthorityItWrites) {
    const std::string arguments =
        "--https --ca-file-out " + path("ca.pem") + " --data " + path("data");
    const int port = start(arguments);
    ASSERT_NE(port, 0) << greeting_;
    const std::string authority = content("ca.pem");
    for (const char* host : {"127.0.0.1", "localhost"}) {
        httplib::SSLClient client(host, port);
        client.set_ca_cert_path(path("ca.pem").c_str());
        client.enable_server_certificate_verification(true);
        const auto answer = client.Post("/v2/auth/challenge", "{}", "application/json");
        ASSERT_TRUE(answer) << host << " " << httplib::to_string(answer.error());
    }
    httplib::SSLClient untrusting("127.0.0.1", port);
    EXPECT_FALSE(untrusting.Post("/v2/auth/challenge", "{}", "application/json"));
    EXPECT_EQ(end(SIGTERM), 0);
    ASSERT_NE(start(arguments), 0);
    EXPECT_EQ(content("ca.pem"), authority) << "clients go on trusting it";
}

TEST_F(ProgramTest, TwoDoNotShareAFolder) {
    const std::string arguments = "--data " + path("data");
    ASSERT_NE(start(arguments), 0);
    std::FILE* first = std::exchange(pipe_, nullptr);
    const pid_t first_child = child_;
    EXPECT_EQ(start(arguments), 0);
    EXPECT_NE(greeting_.find("sandbox.sqlite is in use by another sandbox"), std::string::npos)
        << greeting_;
    EXPECT_EQ(end(0), 1);
    pipe_ = first;
    child_ = first_child;
    EXPECT_EQ(end(SIGTERM), 0);
}

TEST_F(ProgramTest, MistakesAreNamed) {
    const std::pair<const char*, const char*> cases[] = {
        {"--prot 1", "--prot"},
        {"--fault 'step=auth/challenge kind=explode'", "explode"},
        {"--fault 'step=auth/chalenge kind=drop'", "unknown step: auth/chalenge"},
        {"--token 'no bars'", "reference|nip-NNNNNNNNNN|secret"},
        {"--ca-file-out x", "--https"},
        {"--bind 256.0.0.1", "256.0.0.1"},
    };
    for (const auto& [arguments, text] : cases) {
        EXPECT_EQ(start(arguments), 0) << arguments;
        EXPECT_NE(greeting_.find(text), std::string::npos) << arguments << ": " << greeting_;
        EXPECT_GT(end(0), 0) << arguments;
    }
}

}  // namespace
}  // namespace tavrix::sandbox::testing
