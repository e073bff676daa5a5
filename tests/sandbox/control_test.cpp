// Watching and steering the sandbox over HTTP.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

class ControlTest : public SandboxTest {};

TEST_F(ControlTest, TheStateShowsWhatAClientSentAndNoSecrets) {
    client().headers["X-Trace"] = "abc";
    open_as_seller();
    const std::string xml = SampleInvoice().xml();
    client().send(xml);
    client().get("/sessions?sessionType=Online&pageSize=10&x=a%2Bb+c");
    const Json all = state();
    const std::string text = dump(all);
    EXPECT_EQ(text.find(client().access_token), std::string::npos);
    EXPECT_EQ(text.find(client().refresh_token), std::string::npos);

    const Json last = all.at("requests").back();
    EXPECT_EQ(last.at("method"), "GET");
    EXPECT_EQ(last.at("target"), "/v2/sessions?sessionType=Online&pageSize=10&x=a%2Bb+c");
    EXPECT_EQ(last.at("query")[2], Json({{"name", "x"}, {"value", "a+b c"}}));
    EXPECT_EQ(last.at("authorization"), "access");
    EXPECT_EQ(last.at("step"), "sessions");
    EXPECT_NE(dump(last.at("headers")).find("{\"name\":\"X-Trace\",\"value\":\"abc\"}"),
              std::string::npos);
    EXPECT_EQ(all.at("requests")[0].at("authorization"), "none");
    EXPECT_EQ(all.at("requests")[0].at("connection"), last.at("connection"))
        << "one kept connection";

    const Json invoice = all.at("invoices")[0];
    EXPECT_EQ(invoice.at("xmlHash"), invoice.at("invoiceHash"));
    EXPECT_EQ(invoice.at("xmlSize"), xml.size());
    EXPECT_EQ(invoice.at("offlineMode"), false);
    const std::string reference = invoice.at("referenceNumber");
    EXPECT_EQ(control_get("/sandbox/invoices/" + reference + "/xml").body, xml);
}

TEST_F(ControlTest, ConnectionsAreToldApart) {
    Client first(sandbox().port()), second(sandbox().port());
    first.post("/auth/challenge");
    second.post("/auth/challenge");
    first.post("/auth/challenge");
    const Json requests = state().at("requests");
    EXPECT_EQ(requests[0].at("connection"), requests[2].at("connection"));
    EXPECT_NE(requests[0].at("connection"), requests[1].at("connection"));
}

TEST_F(ControlTest, ResetForgetsAllButTheKeys) {
    open_as_seller();
    client().send(SampleInvoice().xml());
    const std::string certificate = client().certificate("SymmetricKeyEncryption");
    set_fault({{"step", "auth/challenge"}, {"kind", "empty"}});
    EXPECT_EQ(control_post("/sandbox/reset").status, 204);
    const Json all = state();
    for (const char* list : {"sessions", "invoices", "authentications", "faults", "requests"})
        EXPECT_EQ(all.at(list).size(), 0u) << list;
    EXPECT_EQ(list_sessions().status, 401);
    EXPECT_EQ(client().certificate("SymmetricKeyEncryption"), certificate);
    open_as_seller();
    EXPECT_EQ(code_of(SampleInvoice().xml()), 200);
}

TEST_F(ControlTest, TheClockMovesForwardAndThePaceChanges) {
    open_as_seller();
    EXPECT_EQ(control_post("/sandbox/clock", {{"advance_ms", 900'000}}).json().at("now"),
              "2026-11-21T08:30:30.1234567+00:00");
    EXPECT_EQ(list_sessions().status, 401);
    for (const Json& bad :
         {Json{{"advance_ms", -1}}, Json{{"advance_ms", "1"}}, Json::object(), Json(5)})
        EXPECT_EQ(control_post("/sandbox/clock", bad).status, 400) << bad;

    EXPECT_EQ(control_post("/sandbox/pace", {{"invoice", {{"polls", 1}}}}).status, 200);
    EXPECT_EQ(control_post("/sandbox/pace", {{"invoices", {{"polls", 1}}}}).status, 400);
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    EXPECT_EQ(client().invoice_status(reference).at("code"), 100);
    EXPECT_EQ(client().invoice_status(reference).at("code"), 200);
}

TEST_F(ControlTest, PagesOfOtherSitesCannotSteer) {
    Client control(sandbox().port(), "");
    control.headers["Origin"] = "https://example.com";
    EXPECT_EQ(control.post("/sandbox/reset").status, 403);
    EXPECT_EQ(control.get("/sandbox/state").status, 403);
}

TEST_F(ControlTest, RateLimitsAreCountedPerContextAndTellWhenToComeBack) {
    start([](Options& it) { it.rate_limits = true; });
    client().sign_in(seller_nip);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(list_sessions().status, 200) << i;
        sandbox().advance(std::chrono::milliseconds(1500));
    }
    const Reply refused = list_sessions();
    EXPECT_EQ(refused.status, 429);
    EXPECT_EQ(refused.header("Retry-After"), "45");
    EXPECT_EQ(refused.json().at("status").at("details")[0],
              "Przekroczono limit 10 żądań na minutę. Spróbuj ponownie po 45 sekundach.");
    Client other = client_of(buyer_nip);
    EXPECT_EQ(other.get("/sessions?sessionType=Online").status, 200);
    sandbox().advance(std::chrono::milliseconds(44'999));
    EXPECT_EQ(list_sessions().status, 429);
    sandbox().advance(std::chrono::milliseconds(1));
    EXPECT_EQ(list_sessions().status, 200);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
