// A package in parts: what is sent again, what is looked up, and what a second call goes on with.

#include "ksef/batch_parts.h"
#include "ksef/authentication.h"
#include "tests/ksef/batch_fixture.h"

namespace tavrix::ksef {
namespace {

using test::Json;
using namespace std::chrono_literals;

class BatchParts : public BatchFixture {
  protected:
    void SetUp() override {
        BatchFixture::SetUp();
        options.part_bytes = 300'000;
        options.state_file = base::from_utf8(state_file);
        options.on_sent = [this](std::int64_t bytes) { sent += bytes; };
    }

    /// Four parts.
    std::string send_parts() {
        sent = 0;
        const base::SecretText secret(token);
        const base::Text number = u"5265877635";
        const base::Text texts[] = {u"FA (3)", u"1-0E", u"FA"};
        KsefPorts with = ports();
        Client client(with);
        client.begin_call(environment);
        EXPECT_EQ(authenticate(with, client, number, secret), u"");
        return base::to_utf8(send_in_parts(with, client, path(), {texts[0], texts[1], texts[2]},
                                           {secret, number}, options));
    }
    std::size_t uploads() { return sandbox->requests("storage/batch-parts").size(); }
    std::size_t closings() { return sandbox->requests("sessions/batch/close").size(); }
    bool is_state_kept() const { return std::filesystem::exists(state_file); }

    std::string state_file = (folder.path() / "state").string();
    PartsOptions options;
    std::atomic<std::int64_t> sent = 0;
};

TEST_F(BatchParts, OnlyWhatMayPassIsTriedAgain) {
    const char* const put = "storage/batch-parts";
    const char* const close = "sessions/batch/close";
    const std::string refused = "wyysłka pliku:sessions/batch:STATUS:";
    struct Trouble {
        const char* step;
        Json fault;
        std::string text;
        std::size_t uploads;
        std::size_t closings;
        bool state_kept;
    };
    const Trouble troubles[] = {
        {put, harmless, "", 4, 1, false},
        {put, kind("drop"), "", 5, 1, false},
        {put, status(503, "", 3), "", 7, 1, false},
        {put, status(503, "", -1), refused + "503", 4, 0, true},
        {put, status(400, "<Error/>"), refused + "400", 1, 0, true},
        {put, status(403, "<Error/>"), refused + "403", 1, 0, false},
        {put, status(200), refused + "200", 1, 0, true},
        // The closing worked, its answer was lost.
        {close, kind("drop"), "", 4, 1, false},
        {close, status(500), "", 4, 2, false},
        {close, status(401), "", 4, 2, false},
        {close, status(400, "{\"e\":1}"), "{\"e\":1}", 4, 1, false},
    };
    for (const auto& [step, fault, text, puts, closes, kept] : troubles) {
        const std::string where = std::string(step) + " " + fault.dump();
        begin_anew();
        std::filesystem::remove(state_file);
        Json trouble = fault;
        trouble["step"] = step;
        sandbox->fault(trouble);
        EXPECT_EQ(send_parts(), text) << where;
        EXPECT_EQ(uploads(), puts) << where;
        EXPECT_EQ(closings(), closes) << where;
        EXPECT_EQ(is_state_kept(), kept) << where;
        EXPECT_TRUE(!text.empty() || sent == 1'000'064) << where << ' ' << sent;
    }
}

TEST_F(BatchParts, SeveralAtOnceGoWithTheHeadersOfTheAnswerUntilTheirTimeIsUp) {
    Storage storage;
    const auto elsewhere = [&](const std::string& expiry) {
        begin_anew();
        storage.arrived.clear();
        storage.expiry = expiry;
        sandbox->fault({{"step", "sessions/batch"},
                        {"kind", "header"},
                        {"name", "Date"},
                        {"value", "Sun, 22 Nov 2026 10:00:00 GMT"}});
        for (int i = 0; i < 4; ++i) {
            const std::string part = "partUploadRequests[" + std::to_string(i) + "].";
            for (Json fault : {value_at((part + "url").c_str(), storage.url(i)),
                               value_at((part + "headers").c_str(), {{"x-own", "a b"}})}) {
                fault["step"] = "sessions/batch";
                sandbox->fault(fault);
            }
        }
    };
    options.state_file.clear();
    options.uploads_at_once = 3;
    elsewhere("&se=2026-11-22T10%3A00%3A01Z");
    send_parts();
    ASSERT_EQ(storage.arrived.size(), 4u);
    for (const auto& [head, body] : storage.arrived) {
        EXPECT_NE(head.find("x-own: a b\r\n"), std::string::npos) << head;
        EXPECT_EQ(head.find("Bearer"), std::string::npos) << head;
        EXPECT_EQ(body.size(), head.find("/part/3?") == std::string::npos
                                   ? 300'000u / 16 * 16 + 16
                                   : 100'000u / 16 * 16 + 16);
    }
    elsewhere("&se=2026-11-22T10:00:00Z");
    EXPECT_EQ(send_parts(), "Upłynął czas na wysłanie części paczki");
    EXPECT_TRUE(storage.arrived.empty());
}

TEST_F(BatchParts, ASecondCallSendsWhatIsMissing) {
    Json third = status(400, "", 1);
    third["step"] = "storage/batch-parts";
    third["skip"] = 2;
    sandbox->fault(third);
    EXPECT_NE(send_parts(), "");
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(state_file).permissions(),
              perms::owner_read | perms::owner_write);
    EXPECT_EQ(uploads(), 3u);

    EXPECT_EQ(send_parts(), "");
    EXPECT_EQ(uploads(), 5u) << "the two that were missing";
    EXPECT_EQ(sandbox->requests("sessions/batch").size(), 1u) << "of the same session";
    EXPECT_FALSE(is_state_kept());

    // A file that is no state must not cost a session.
    std::ofstream(state_file) << "{}";
    EXPECT_EQ(send_parts(), "Plik stanu wysyłki jest uszkodzony: " + state_file);
    std::filesystem::remove(state_file);
    // More parts than the service takes.
    options.part_bytes = 19'999;
    EXPECT_EQ(send_parts(), "Paczka jest za duża: 1000000 bajtów");
    EXPECT_EQ(sandbox->requests("sessions/batch").size(), 1u);
}

}  // namespace
}  // namespace tavrix::ksef
