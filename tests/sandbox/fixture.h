// A sandbox of its own for each test, on a free port, with a clock that stands still.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "sandbox/http/dispatcher.h"
#include "sandbox/http/http_server.h"
#include "tests/sandbox/client.h"
#include "tests/sandbox/sample_invoice.h"

namespace tavrix::sandbox::testing {

/// 2026-11-21T08:15:30.1234567Z
Instant test_start();

class RunningSandbox {
  public:
    /// \param store null for one that remembers only the keys tests share.
    explicit RunningSandbox(Options options = {}, std::unique_ptr<Store> store = nullptr);
    ~RunningSandbox();

    int port() const { return port_; }
    void advance(std::chrono::milliseconds step) { clock_.advance(step); }

  private:
    Clock clock_{test_start()};
    std::unique_ptr<Dispatcher> dispatcher_;
    std::unique_ptr<HttpServer> server_;
    int port_ = 0;
    std::thread thread_;
};

class SandboxTest : public ::testing::Test {
  protected:
    /// Starts the sandbox with changed options; the first use of client() does it with default
    /// ones.
    void start(const std::function<void(Options&)>& change = [](Options&) {});
    Client& client();
    RunningSandbox& sandbox();
    /// Another client, signed in.
    Client client_of(const std::string& nip);

    /// Signed in as the seller, with a session open.
    void open_as_seller();
    // Of the session the client opened last.
    std::string session_path() { return "/sessions/" + client().session; }
    Reply post_invoice(const Json& body);
    Reply close() { return client().post("/sessions/online/" + client().session + "/close"); }
    /// What an invoice is answered with in the end.
    Json status_of(const std::string& xml) { return client().invoice_status(client().send(xml)); }
    int code_of(const std::string& xml) { return status_of(xml).at("code"); }
    /// A request that wants an access token and little else.
    Reply list_sessions() { return client().get("/sessions?sessionType=Online"); }
    /// The sandbox's control interface, outside the versioned root.
    Reply control_get(const std::string& path);
    Reply control_post(const std::string& path, const Json& body = Json::object());
    Json state() { return control_get("/sandbox/state").json(); }
    void set_fault(const Json& fault);

  private:
    std::unique_ptr<RunningSandbox> sandbox_;
    std::unique_ptr<Client> client_, control_;
};

/// Folder with the published interface, or empty where a developer does not have it.
std::string contract_folder();

}  // namespace tavrix::sandbox::testing

/// Skips, visibly, where the published interface is not at hand.
#define TAVRIX_NEEDS_CONTRACT()                              \
    if (tavrix::sandbox::testing::contract_folder().empty()) \
    GTEST_SKIP() << "the published interface is not in " TAVRIX_KSEF_CONTRACT_DIR
