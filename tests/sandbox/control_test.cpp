// Watching and steering the sandbox over HTTP.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

using ControlTest = SandboxTest;

TEST_F(ControlTest, TheStateShowsWhatAClientSentAndNoSecrets) {
    client().headers["X-Trace"] = "abc";
    client().headers["X-Test-System-Warning"] = "[17]: Przerwa w środę o ŻÓŁTEJ porze €5";
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    const Reply warned = client().get("/sessions?sessionType=Online&pageSize=10&x=a%2Bb+c");
    EXPECT_EQ(warned.header("X-System-Warning"), "[17]: Przerwa w srode o ZOLTEJ porze 5");
    Client(sandbox().port()).post("/auth/challenge");
    const Json all = state();
    const std::string text = dump(all);
    EXPECT_EQ(text.find(client().access_token), std::string::npos);
    EXPECT_EQ(text.find(client().refresh_token), std::string::npos);

    const Json other = all.at("requests").back();
    const Json last = *(all.at("requests").end() - 2);
    EXPECT_EQ(last.at("target"), "/v2/sessions?sessionType=Online&pageSize=10&x=a%2Bb+c");
    EXPECT_EQ(last.at("query")[2], Json({{"name", "x"}, {"value", "a+b c"}}));
    EXPECT_NE(dump(last.at("headers")).find("{\"name\":\"X-Trace\",\"value\":\"abc\"}"),
              std::string::npos);
    EXPECT_NE(other.at("connection"), last.at("connection")) << "another client's";
    EXPECT_EQ(control().get("/sandbox/invoices/" + reference + "/xml").body, SampleInvoice().xml());
}

TEST_F(ControlTest, TheClockMovesForwardAndThePaceChanges) {
    open_as_seller();
    EXPECT_EQ(control().post("/sandbox/clock", {{"advance_ms", 900'000}}).json().at("now"),
              "2026-11-21T08:30:30.1234567+00:00");
    EXPECT_EQ(list_sessions().status, 401);
    EXPECT_EQ(control().post("/sandbox/clock", {{"advance_ms", -1}}).status, 400);

    const Json pace = {{"invoice", {{"polls", 2}}}, {"invoice_processing", {{"polls", 1}}}};
    EXPECT_EQ(control().post("/sandbox/pace", pace).status, 200);
    for (const Json& wrong : {Json{{"invoices", {{"polls", 1}}}}, Json{{"invoice", {{"poll", 1}}}},
                              Json{{"invoice", {{"polls", 0}}}, {"session", {{"polls", -1}}}},
                              Json{{"invoice", {{"delay_ms", 86'400'001}}}}})
        EXPECT_EQ(control().post("/sandbox/pace", wrong).status, 400) << wrong;
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    for (int code : {100, 100, 150, 200})
        EXPECT_EQ(client().invoice_status(reference).at("code"), code);
    control().post("/sandbox/reset");
    EXPECT_EQ(control().post("/sandbox/pace").json().at("invoice").at("polls"), 0);
}

TEST_F(ControlTest, TheStateComesInPages) {
    for (int i = 0; i < 3; ++i) client().post("/auth/challenge");
    const auto page = [&](const char* query) {
        return control().get(std::string("/sandbox/state?") + query).json();
    };
    const Json first = page("pageSize=2"), last = page("page=1&pageSize=2");
    EXPECT_EQ(first.at("requests").size(), 2u);
    EXPECT_EQ(first.at("hasMore"), true);
    EXPECT_EQ(last.at("requests")[0].at("number"), 3);
    EXPECT_EQ(last.at("hasMore"), false);
    EXPECT_EQ(page("page=9").at("requests"), Json::array());
    for (const char* wrong : {"pageSize=0", "pageSize=1001", "page=-1", "page="})
        EXPECT_NE(page(wrong).value("error", ""), "") << wrong;
}

TEST_F(ControlTest, PagesOfOtherSitesCannotSteer) {
    using Headers = std::map<std::string, std::string>;
    const std::tuple<const char*, Headers, int> cases[] = {
        {"127.0.0.1", {{"Host", "127.0.0.1"}}, 204},
        {"127.0.0.1", {{"Host", "LOCALHOST:1"}}, 204},
        {"127.0.0.1", {{"Host", "[::1]:8517"}}, 204},
        {"127.0.0.1", {{"Host", "rebound.example.com:8517"}}, 403},
        {"127.0.0.1", {{"Host", "buildserver"}}, 403},
        {"0.0.0.0", {{"Host", "buildserver:8517"}}, 204},
        {"0.0.0.0", {{"Host", "192.168.1.5"}}, 204},
        {"0.0.0.0", {{"Host", "rebound.example.com"}}, 403},
        {"test.example.com", {{"Host", "Test.example.com"}}, 204},
        {"127.0.0.1", {{"Host", "localhost:1"}, {"Origin", "http://localhost:1"}}, 204},
        {"127.0.0.1", {{"Origin", "https://example.com"}}, 403},
        {"127.0.0.1", {{"Origin", "null"}}, 403},
        {"127.0.0.1", {{"Sec-Fetch-Site", "cross-site"}}, 403},
        {"127.0.0.1", {{"Sec-Fetch-Site", "same-origin"}}, 204},
    };
    for (const auto& [bound, headers, status] : cases) {
        start([&, address = bound](Options& it) { it.bind_address = address; });
        control().headers = headers;
        EXPECT_EQ(control().post("/sandbox/reset").status, status) << bound << Json(headers);
        EXPECT_EQ(control().get("/sandbox/state").status, status == 204 ? 200 : 403);
        const bool other_name = status == 403 && headers.contains("Host");
        EXPECT_EQ(control().get("/").status, other_name ? 403 : 200) << Json(headers);
        EXPECT_EQ(client().post("/auth/challenge").status, 200) << "the interface has any name";
    }
}

TEST_F(ControlTest, RateLimitsAreCountedPerContextAndTellWhenToComeBack) {
    start([](Options& it) { it.rate_limits = true; });
    client().sign_in(seller_nip);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(list_sessions().status, 200) << i;
        sandbox().advance(1500ms);
    }
    const Reply refused = list_sessions();
    EXPECT_EQ(refused.header("Retry-After"), "45");
    EXPECT_NE(refused.body.find("limit 10 żądań na minutę. Spróbuj ponownie po 45 sekundach."),
              std::string::npos);
    EXPECT_EQ(client_of(buyer_nip).get("/sessions?sessionType=Online").status, 200);
    sandbox().advance(44'999ms);
    EXPECT_EQ(list_sessions().status, 429);
    sandbox().advance(1ms);
    EXPECT_EQ(list_sessions().status, 200);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
