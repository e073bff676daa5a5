// A package in parts: what is sent again, what is looked up, and what a second call goes on with.

#include "ksef/batch_parts.h"

#include "ksef/authentication.h"
#include "tests/ksef/batch_fixture.h"

namespace tavrix::ksef {
namespace {

using test::Json;
const char* const put = "storage/batch-parts";
const char* const close = "sessions/batch/close";

class BatchParts : public BatchFixture {
  protected:
    /// Four of them.
    std::string send_parts() {
        const base::SecretText secret(token);
        const base::Text texts[] = {u"FA (3)", u"1-0E", u"FA", u"5265877635"};
        KsefPorts with = ports();
        Client client(with);
        client.begin_call(environment);
        EXPECT_EQ(authenticate(with, client, texts[3], secret), u"");
        options.state_file = base::from_utf8(state_file);
        return base::to_utf8(send_in_parts(with, client, path, {texts[0], texts[1], texts[2]},
                                           {secret, texts[3]}, options));
    }
    std::size_t count(const char* step) { return sandbox->requests(step).size(); }

    std::string state_file = (folder.path() / "state").string();
    PartsOptions options{.part_bytes = 300'000};
};

TEST_F(BatchParts, OnlyWhatMayPassIsTriedAgain) {
    const std::string refused = "wyysłka pliku:sessions/batch:STATUS:";
    // Rows: uploads, closings, and whether the state is kept.
    const test::Troubles troubles = {
        {put, harmless, "", "4 1"},
        {put, kind("drop"), "", "5 1"},
        {put, status(503, "", 3), "", "7 1"},
        {put, status(503, "", -1), refused + "503", "4 0 state"},
        {put, status(400, "<Error/>"), refused + "400", "1 0 state"},
        {put, status(403, "<Error/>"), refused + "403", "1 0"},
        {put, status(200), refused + "200", "1 0 state"},
        // The closing worked, its answer was lost.
        {close, kind("drop"), "", "4 1"},
        {close, status(500), "", "4 2"},
        {close, status(401), "", "4 2"},
        {close, status(400, "{\"e\":1}"), "{\"e\":1}", "4 1"},
    };
    run_through(
        *sandbox, troubles,
        [&] {
            std::filesystem::remove(state_file);
            begin(1'000'000);
        },
        [&]() -> test::Outcome {
            const std::string result = send_parts();
            return {result, std::to_string(count(put)) + " " + std::to_string(count(close)) +
                                (std::filesystem::exists(state_file) ? " state" : "")};
        });
}

TEST_F(BatchParts, GoWithTheHeadersOfTheAnswerUntilTheirTimeIsUp) {
    const std::pair<const char*, std::size_t> expiries[] = {{"&se=2026-11-22T10%3A00%3A01Z", 4},
                                                            {"&se=2026-11-22T10:00:00Z", 0}};
    for (const auto& [expiry, arrived] : expiries) {
        Storage storage;
        begin(1'000'000, "sessions/batch",
              {{"kind", "header"}, {"name", "Date"}, {"value", "Sun, 22 Nov 2026 10:00:00 GMT"}});
        for (const char digit : {'0', '1', '2', '3'}) {
            const std::string part = std::string("partUploadRequests[") + digit + "].";
            add_fault("sessions/batch", value_at((part + "url").c_str(), storage.url(expiry)));
            add_fault("sessions/batch", value_at((part + "headers").c_str(), {{"x-own", "a b"}}));
        }
        EXPECT_EQ(send_parts() == "Upłynął czas na wysłanie części paczki", arrived == 0);
        EXPECT_EQ(storage.heads.size(), arrived) << expiry;
        for (const std::string& head : storage.heads)
            EXPECT_NE(head.find("\nx-own: a b\r"), std::string::npos) << head;
    }
}

TEST_F(BatchParts, ASecondCallSendsWhatIsMissing) {
    Json third = status(400);
    third["skip"] = 2;
    begin(1'000'000, put, third);
    EXPECT_NE(send_parts(), "");
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(state_file).permissions(),
              perms::owner_read | perms::owner_write);
    EXPECT_EQ(send_parts(), "");
    EXPECT_EQ(count(put), 5u) << "the third, and the two that were missing";
    EXPECT_EQ(count("sessions/batch"), 1u) << "of the same session";
    EXPECT_FALSE(std::filesystem::exists(state_file));

    std::ofstream(state_file) << "{}";
    EXPECT_EQ(send_parts(), "Plik stanu wysyłki jest uszkodzony: " + state_file);
    std::filesystem::remove(state_file);
    options.part_bytes = 19'999;
    EXPECT_EQ(send_parts(), "Paczka jest za duża: 1000000 bajtów") << "51 parts";
    EXPECT_EQ(count("sessions/batch"), 1u);
}

}  // namespace
}  // namespace tavrix::ksef
