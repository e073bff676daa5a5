// A sandbox of its own for each test, on a free port, with a clock that stands still.
#pragma once

#include <gtest/gtest.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "sandbox/http/dispatcher.h"
#include "sandbox/http/http_server.h"
#include "tests/sandbox/client.h"
#include "tests/sandbox/sample_invoice.h"

namespace tavrix::sandbox::testing {

/// Making keys takes longer than most tests; they share one pair, made by whichever test comes
/// first.
class SharedKeys : public NoStore {
  public:
    std::optional<std::string> read(std::string_view, std::string_view key) override {
        std::ifstream file(TAVRIX_KEY_CACHE);
        if (key != "keys" || !file) return std::nullopt;
        return std::string(std::istreambuf_iterator<char>(file), {});
    }
    void write(std::string_view, std::string_view key, std::string_view value) override {
        if (key != "keys" || std::filesystem::exists(TAVRIX_KEY_CACHE)) return;
        const std::string partial = TAVRIX_KEY_CACHE + std::string(".") + std::to_string(getpid());
        std::ofstream(partial) << value;
        std::filesystem::rename(partial, TAVRIX_KEY_CACHE);
    }
};

class RunningSandbox {
  public:
    explicit RunningSandbox(Options options = {},
                            std::unique_ptr<Store> store = std::make_unique<SharedKeys>(),
                            const Limits& limits = {}) {
        options.quiet = true;
        spdlog::set_level(spdlog::level::err);
        dispatcher_ = std::make_unique<Dispatcher>(options, clock_, std::move(store));
        server_ = std::make_unique<HttpServer>(nullptr, limits);
        port_ = server_->bind("127.0.0.1", 0);
        thread_ = std::thread([this] { server_->run(*dispatcher_); });
    }
    ~RunningSandbox() {
        server_->stop();
        thread_.join();
    }

    int port() const { return port_; }
    void advance(std::chrono::milliseconds step) { clock_.advance(step); }

  private:
    Clock clock_{*parse_instant("2026-11-21T08:15:30.1234567Z")};
    std::unique_ptr<Dispatcher> dispatcher_;
    std::unique_ptr<HttpServer> server_;
    int port_ = 0;
    std::thread thread_;
};

class SandboxTest : public ::testing::Test {
  protected:
    /// Starts the sandbox with changed options; the first use of client() does it with default
    /// ones.
    void start(const std::function<void(Options&)>& change = [](Options&) {}) {
        Options options;
        change(options);
        sandbox_ = std::make_unique<RunningSandbox>(std::move(options));
        client_ = std::make_unique<Client>(sandbox_->port());
        control_ = std::make_unique<Client>(sandbox_->port(), "");
    }
    Client& client() {
        if (!client_) start();
        return *client_;
    }
    RunningSandbox& sandbox() {
        client();
        return *sandbox_;
    }
    /// The sandbox's control interface, outside the versioned root.
    Client& control() {
        client();
        return *control_;
    }
    Json state() { return control().get("/sandbox/state?pageSize=1000").json(); }
    /// Another client, signed in.
    Client client_of(const std::string& nip) {
        Client other(sandbox().port());
        EXPECT_EQ(other.sign_in(nip).status, 200);
        return other;
    }

    /// Signed in as the seller, with a session open.
    void open_as_seller() {
        ASSERT_EQ(client().sign_in(seller_nip).status, 200);
        ASSERT_NE(client().open_session(), "");
    }
    // Of the session the client opened last.
    std::string session_path() { return "/sessions/" + client().session; }
    Reply post_invoice(const Json& body) {
        return client().post("/sessions/online/" + client().session + "/invoices", body);
    }
    Reply close() { return client().post("/sessions/online/" + client().session + "/close"); }
    /// What an invoice is answered with in the end.
    Json status_of(const std::string& xml) { return client().invoice_status(client().send(xml)); }
    int code_of(const std::string& xml) { return status_of(xml).at("code"); }
    /// A request that wants an access token and little else.
    Reply list_sessions() { return client().get("/sessions?sessionType=Online"); }

  private:
    std::unique_ptr<RunningSandbox> sandbox_;
    std::unique_ptr<Client> client_, control_;
};

}  // namespace tavrix::sandbox::testing

/// Skips, visibly, where the published interface is not at hand.
#define TAVRIX_NEEDS_CONTRACT()                                              \
    if (!std::filesystem::exists(TAVRIX_KSEF_CONTRACT_DIR "/open-api.json")) \
    GTEST_SKIP() << "the published interface is not in " TAVRIX_KSEF_CONTRACT_DIR
