#include "tests/sandbox/fixture.h"

#include <spdlog/spdlog.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace tavrix::sandbox::testing {
namespace {

/// Making keys takes longer than most tests; they share one pair, made by whichever test comes
/// first.
class SharedKeys : public NoStore {
  public:
    std::optional<std::string> read(std::string_view, std::string_view key) override {
        if (key != "keys") return std::nullopt;
        std::ifstream file(TAVRIX_KEY_CACHE);
        if (!file) return std::nullopt;
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }
    void write(std::string_view, std::string_view key, std::string_view value) override {
        if (key != "keys" || std::filesystem::exists(TAVRIX_KEY_CACHE)) return;
        const std::string partial = TAVRIX_KEY_CACHE + std::string(".") + std::to_string(getpid());
        std::ofstream(partial) << value;
        std::filesystem::rename(partial, TAVRIX_KEY_CACHE);
    }
};

}  // namespace

Instant test_start() {
    return *parse_instant("2026-11-21T08:15:30.1234567Z");
}

RunningSandbox::RunningSandbox(Options options, std::unique_ptr<Store> store) {
    options.quiet = true;
    spdlog::set_level(spdlog::level::err);
    if (!store) store = std::make_unique<SharedKeys>();
    dispatcher_ = std::make_unique<Dispatcher>(options, clock_, std::move(store));
    server_ = std::make_unique<HttpServer>(*dispatcher_, nullptr);
    port_ = server_->bind("127.0.0.1", 0);
    thread_ = std::thread([this] { server_->run(); });
}

RunningSandbox::~RunningSandbox() {
    server_->stop();
    thread_.join();
}

void SandboxTest::start(const std::function<void(Options&)>& change) {
    Options options;
    change(options);
    sandbox_ = std::make_unique<RunningSandbox>(std::move(options));
    client_ = std::make_unique<Client>(sandbox_->port());
    control_ = std::make_unique<Client>(sandbox_->port(), "");
}

Client& SandboxTest::client() {
    if (!client_) start();
    return *client_;
}

RunningSandbox& SandboxTest::sandbox() {
    client();
    return *sandbox_;
}

Client SandboxTest::client_of(const std::string& nip) {
    Client other(sandbox().port());
    EXPECT_EQ(other.sign_in(nip).status, 200);
    return other;
}

Reply SandboxTest::post_invoice(const Json& body) {
    return client().post("/sessions/online/" + client().session + "/invoices", body);
}

void SandboxTest::open_as_seller() {
    ASSERT_EQ(client().sign_in(seller_nip).status, 200);
    ASSERT_NE(client().open_session(), "");
}

Reply SandboxTest::control_get(const std::string& path) {
    client();
    return control_->get(path);
}

Reply SandboxTest::control_post(const std::string& path, const Json& body) {
    client();
    return control_->post(path, body);
}

void SandboxTest::set_fault(const Json& fault) {
    const Reply reply = control_post("/sandbox/faults", fault);
    ASSERT_EQ(reply.status, 200) << reply.body;
}

std::string contract_folder() {
    return std::filesystem::exists(TAVRIX_KSEF_CONTRACT_DIR "/open-api.json")
               ? TAVRIX_KSEF_CONTRACT_DIR
               : "";
}

}  // namespace tavrix::sandbox::testing
