// What fails on the host's own machine while an invoice is sent, and what is left in memory.

#include "tests/ksef/send_fixture.h"
#include "tests/support/failing.h"
#include "tests/support/freed_memory.h"

namespace tavrix::ksef {
namespace {

const std::string unknown = "Nieznany błąd";
const std::string session_failed = "Błąd inicjalizacji sesji KSeF:";

class SendTrouble : public SendFixture {
  protected:
    test::FailingAt failing;
};

TEST_F(SendTrouble, ADatabaseThatFailsAtAnyCallLeavesTheRowWholeOrUntouched) {
    for (const auto failure : {test::access_denied, test::out_of_memory}) {
        const int calls = test::fail_each_call(failing, failure, [&](int call) {
            sandbox->reset();
            today();
            ports::SqliteDatabase real(connection);
            test::FailingDatabase database(real, failing);
            KseF_comm client(ports());
            const std::string result = send_with(client, database);
            const Row document = row();
            const std::string number = document.at("numer_ksef");
            expect_whole_or_untouched(document, "call " + std::to_string(call));
            if (number.empty()) {
                EXPECT_EQ(result, unknown) << call;
            } else if (document.at("UPO_ksef").empty()) {
                EXPECT_EQ(result, "Faktura o numerze KSeF: " + number) << call;
            } else {
                EXPECT_EQ(result, "") << call;
            }
        });
        EXPECT_GT(calls, 20) << "the whole story";
    }
}

TEST_F(SendTrouble, CryptographyThatFailsAtAnyCallHasItsText) {
    const std::pair<const char*, std::string> texts[] = {
        {"key for tokens", session_failed + "Nieznany błą"},
        {"key for symmetric keys", "Load RSA Public Key failed: "},
        {"token", session_failed + "Nieznany błą"},
        {"session key", unknown},
        {"initialisation vector", unknown},
        {"loading the key", "Load RSA Public Key failed: brak miejsca"},
        {"wrapping the session key", "RSA Encrypt AES Key failed: brak miejsca"},
        {"invoice", unknown},
        {"hash", unknown},
        {"hash of the encrypted", unknown},
        {"nothing", ""},
    };
    const auto real = std::move(crypto);
    for (const auto failure : {test::out_of_space, test::out_of_memory}) {
        const int calls = test::fail_each_call(failing, failure, [&](int call) {
            sandbox->reset();
            today();
            crypto = std::make_unique<test::FailingCrypto>(*real, failing);
            const std::string result = send();
            const auto& [what, text] = texts[call - 1];
            if (failure == test::out_of_space || !failing.struck()) {
                EXPECT_TRUE(result.starts_with(text) && result.empty() == text.empty())
                    << what << ": " << result;
            } else {
                EXPECT_EQ(result, call <= 3 ? session_failed + "Nieznany błą" : unknown) << what;
            }
            expect_whole_or_untouched(row(), what);
        });
        EXPECT_EQ(calls, 10);
    }
}

/// Tells the watch of each token that the service gives.
class TokenTap final : public ports::Http {
  public:
    TokenTap(std::unique_ptr<ports::Http> http, test::FreedMemory& memory, int& tokens)
        : http_(std::move(http)), memory_(memory), tokens_(tokens) {}
    ports::HttpReply send(const ports::HttpRequest& request) override {
        ports::HttpReply reply = http_->send(request);
        constexpr std::string_view member = "\"token\":\"";
        const std::string_view body = reply.body.view();
        for (std::size_t at = 0; (at = body.find(member, at)) != body.npos; ++tokens_) {
            at += member.size();
            memory_.look_for(body.substr(at, body.find('"', at) - at));
        }
        return reply;
    }

  private:
    std::unique_ptr<ports::Http> http_;
    test::FreedMemory& memory_;
    int& tokens_;
};

TEST_F(SendTrouble, NoTokenIsLeftInFreedMemory) {
    int tokens = 0;
    test::FreedMemory memory;
    memory.look_for("0123456789abcdef");
    make_http = [&] {
        return std::make_unique<TokenTap>(ports::make_curl_http(connection_settings), memory,
                                          tokens);
    };
    ASSERT_EQ(send(), "");
    EXPECT_EQ(tokens, 3) << "to authenticate, to send, to refresh";
    EXPECT_EQ(memory.found(), 0);
    { const std::string careless("the secret is 0123456789abcdef"); }
    { const base::Text careless(token); }
    EXPECT_EQ(memory.found(), 2) << "the watch sees both kinds";
}

}  // namespace
}  // namespace tavrix::ksef
