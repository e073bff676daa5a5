// How long the sending of an invoice waits, and that it ends.

#include "tests/ksef/send_faults.h"

namespace tavrix::ksef {
namespace {

using test::Json;
using namespace std::chrono_literals;

/// A server each of whose answers takes `pace`, a byte now and then: as long as the client lets it.
class SlowHttp final : public ports::Http {
  public:
    SlowHttp(std::unique_ptr<ports::Http> real, test::FakeClock& clock,
             std::chrono::milliseconds pace)
        : real_(std::move(real)), clock_(clock), pace_(pace) {}
    ports::HttpReply send(const ports::HttpRequest& request) override {
        const auto limit = request.time_limit.value_or(1000h);
        clock_.slept += std::min(pace_, limit);
        return pace_ < limit ? real_->send(request) : ports::HttpReply();
    }
    ports::AddressKind kind_of(std::string_view url) const override { return real_->kind_of(url); }

  private:
    std::unique_ptr<ports::Http> real_;
    test::FakeClock& clock_;
    std::chrono::milliseconds pace_;
};

using SendTime = SendFixture;

TEST_F(SendTime, EveryWaitHasItsEnd) {
    const Json in_progress = {{"code", 100}, {"description", "W toku"}};
    Json still_open = status(200, R"({"status":{"code":170}})", -1);
    still_open["skip"] = 1;
    const char* const escaped =
        R"({"status":{"code":1,"description":"UWIERZYTELNIANIE zako\u0144czone sukcesem"}})";
    Json code_1000 = value_at("status.code", "1000");
    code_1000["count"] = 1;
    // Instead of rows: for how long was waited.
    const test::Troubles waits = {
        {"auth/status", value_at("status", in_progress), session_failed + "{*", "32000 ms"},
        {"auth/status", wrong_token, session_failed + "{*", "0 ms"},
        // However its letters are written, it is a success.
        {"auth/status", status(200, escaped), "", "0 ms"},
        {"sessions/invoices", value_at("invoices[0].status.code", 150), "{*", "232000 ms"},
        {"sessions/status", still_open, "sessions:STATUS:timeout", "232000 ms"},
        {"sessions/invoices/status", status(404, "", -1), accepted + "*", "238000 ms"},
        {"sessions/invoices/status", status(404, "", 5), "", "10000 ms"},
        // The invoice's page may be there before its UPO is.
        {"sessions/invoices/status", without("upoDownloadUrl"), accepted + "*", "238000 ms"},
        {"sessions/invoices/status", without("upoDownloadUrl", 3), "", "6000 ms"},
        {"sessions/invoices/status", kind("truncated"), "", "2000 ms"},
        // Read as a text, this code comes before 300: the session goes on.
        {"sessions/status", code_1000, "", "0 ms"},
        {"sessions/status", status(500), "", "0 ms"},
    };
    run_through(
        *sandbox, waits, [&] { begin_anew(); },
        [&]() -> test::Outcome {
            return {send(), std::to_string(clock.slept.count()) + " ms"};
        });
}

TEST_F(SendTime, TheWholeCallHasItsEndHoweverSlowlyTheServerAnswers) {
    const std::pair<std::chrono::milliseconds, std::string> servers[] = {
        {1000h, session_failed + "auth/challenge:STATUS:0"},
        {4min, "sessions/online/STATUS:0"},
        {170s, accepted + "*"},  // it is recorded, the closing takes too long
        {100s, ""},
    };
    for (const auto& [pace, text] : servers) {
        begin_anew();
        make_http = [&] {
            return std::make_unique<SlowHttp>(ports::make_curl_http(connection_settings), clock,
                                              pace);
        };
        const std::string result = send();
        expect_text(result, text, std::to_string(pace.count()));
        expect_whole_or_untouched(result, text);
        EXPECT_LE(clock.slept, 30min + 2s) << text << " and a pause";
    }
}

// A session's invoices may be asked for 20 times a minute.
TEST_F(SendTime, RateLimitCostsTheInvoiceOrTheWait) {
    struct CommonClock final : test::FakeClock {
        explicit CommonClock(test::Sandbox& shared) : sandbox_(shared) {}
        void sleep(std::chrono::milliseconds duration) override {
            FakeClock::sleep(duration);
            sandbox_.advance(duration);
        }
        test::Sandbox& sandbox_;
    };
    test::Sandbox limiting("--rate-limits --invoice-delay 40000");
    settings.service.test = base::from_utf8(limiting.origin());
    const std::tuple<std::chrono::seconds, std::string, std::size_t> limits[] = {
        {0s, "sessions//invoicesSTATUS:429", 0}, {60s, "", 35}};
    for (const auto& [limit, text, number_size] : limits) {
        limiting.reset();
        begin_anew();
        settings.retry_after_limit = limit;
        CommonClock common_clock(limiting);
        ports::SqliteDatabase database(connection);
        KseF_comm client(ports_with(*crypto, common_clock, *files));
        EXPECT_EQ(send_with(client, database), text);
        EXPECT_EQ(row().at("numer_ksef").size(), number_size);
        expect_whole_or_untouched(text, text);
        EXPECT_GT(limiting.requests("sessions/invoices").size(), 20u) << "the limit was met";
    }
}

TEST_F(SendTime, OnlyAWaitWithinTheLimitIsWaited) {
    const auto later = [](int seconds, int count) {
        Json fault = kind("429");
        fault["retry_after"] = seconds;
        fault["count"] = count;
        return fault;
    };
    // An answer that is none to wait for.
    Json header = kind("header");
    header["name"] = "Retry-After";
    header["value"] = "5";
    const std::tuple<std::chrono::seconds, Json, std::string, std::chrono::seconds> waits[] = {
        {0s, later(0, 1), session_unknown, 0s},
        {60s, later(60, 1), "", 60s},
        {60s, later(61, 1), session_unknown, 0s},
        {60s, later(0, 2), "", 2s},
        // A second one would pass the end of the whole call.
        {900s, later(900, -1), session_unknown, 900s},
        {900s, header, "", 0s},
    };
    for (const auto& [limit, fault, text, slept] : waits) {
        settings.retry_after_limit = limit;
        EXPECT_EQ(send_with_fault("auth/challenge", fault), text) << fault.dump();
        EXPECT_EQ(clock.slept, slept) << fault.dump();
    }
}

TEST_F(SendTime, SilentServerCostsTheTimeoutAndNoMore) {
    connection_settings.no_progress_timeout = 300ms;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(send_with_fault("auth/challenge", kind("hang")),
              session_failed + "auth/challenge:STATUS:0");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

}  // namespace
}  // namespace tavrix::ksef
