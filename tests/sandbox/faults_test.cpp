// Trouble on demand: each kind as a client meets it.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

RawReply raw_challenge(int port) {
    return raw_exchange(
        port, "POST /v2/auth/challenge HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\n\r\n{}");
}

class FaultsTest : public SandboxTest {
  protected:
    void spoil(const char* step, Json fault) {
        fault["step"] = step;
        EXPECT_EQ(control().post("/sandbox/faults", fault).status, 200) << fault;
    }
    /// What a client gets when it asks for a challenge.
    Reply challenge_with(const Json& fault) {
        spoil("auth/challenge", fault);
        return client().post("/auth/challenge");
    }
    RawReply raw_challenge_with(const char* kind) {
        spoil("auth/challenge", {{"kind", kind}});
        return raw_challenge(sandbox().port());
    }
};

TEST_F(FaultsTest, BodiesAreSpoiltAsAsked) {
    const std::tuple<Json, std::string, std::string> cases[] = {
        {{{"kind", "status"}, {"status", 418}, {"body", "short"}, {"type", "text/plain"}},
         "text/plain",
         "short"},
        {{{"kind", "malformed"}, {"body", "{\"a\":"}}, "application/json", "{\"a\":"},
        {{{"kind", "html"}, {"body", "<p>no"}}, "text/html; charset=utf-8", "<p>no"},
        {{{"kind", "empty"}}, "", ""},
    };
    for (const auto& [fault, type, body] : cases) {
        const Reply reply = challenge_with(fault);
        EXPECT_EQ(reply.header("Content-Type"), type) << fault;
        EXPECT_EQ(reply.body, body) << fault;
    }
    const Reply busy = challenge_with({{"kind", "429"}, {"retry_after", 7}});
    EXPECT_EQ(busy.header("Retry-After"), "7");
    const Reply cut = challenge_with({{"kind", "truncated"}});
    EXPECT_TRUE(cut.json().is_null() && !cut.body.empty());
}

TEST_F(FaultsTest, ValuesInAnAnswerAreReplacedAndRemoved) {
    const char* step = "security/public-key-certificates";
    spoil(step, {{"kind", "json"}, {"path", "[*].usage"}, {"value", {"a", "b"}}});
    spoil(step, {{"kind", "remove"}, {"path", "[0].certificate"}});
    spoil(step, {{"kind", "header"}, {"name", "X-Y"}, {"value", "z"}});
    const Reply reply = client().get(std::string("/") + step);
    const Json list = reply.json();
    ASSERT_EQ(list.size(), 2u);
    for (const Json& entry : list) EXPECT_EQ(entry.at("usage"), Json({"a", "b"}));
    EXPECT_FALSE(list[0].contains("certificate"));
    EXPECT_TRUE(list[1].contains("certificate"));
    EXPECT_EQ(reply.header("X-Y"), "z");
}

/// The answer is lost but the invoice is there: sending again is a duplicate.
TEST_F(FaultsTest, ADroppedAnswerLeavesTheInvoiceBehind) {
    open_as_seller();
    spoil("sessions/online/invoices", {{"kind", "refuse"}, {"count", -1}});
    EXPECT_EQ(client().send(SampleInvoice().xml()), "");
    EXPECT_EQ(state().at("invoices").size(), 0u) << "refused, it never arrived";
    control().remove("/sandbox/faults");

    spoil("sessions/online/invoices", {{"kind", "drop"}, {"count", -1}});
    EXPECT_EQ(client().send(SampleInvoice().xml()), "");
    control().remove("/sandbox/faults");
    EXPECT_EQ(code_of(SampleInvoice().xml()), 440);
}

TEST_F(FaultsTest, ConnectionsBreakTheWayTheKindSays) {
    const RawReply refused = raw_challenge_with("refuse");
    EXPECT_EQ(refused.data, "");
    EXPECT_EQ(refused.error, 0);

    const RawReply cut = raw_challenge_with("cut");
    EXPECT_NE(cut.data.find("\r\n\r\n{\"challenge\""), std::string::npos) << cut.data;
    EXPECT_EQ(cut.data.find("clientIp"), std::string::npos) << cut.data;
    EXPECT_EQ(cut.error, 0);

    const RawReply reset = raw_challenge_with("reset");
    EXPECT_NE(reset.data.find("{\"challenge\""), std::string::npos) << reset.data;
    EXPECT_EQ(reset.error, ECONNRESET);

    EXPECT_EQ(challenge_with({{"kind", "drip"}, {"bytes", 100}, {"interval_ms", 1}}).status, 200);
}

TEST_F(FaultsTest, AHangingAnswerDoesNotHoldUpTheStop) {
    spoil("auth/challenge", {{"kind", "hang"}});
    RawReply reply;
    std::thread waiting([&, port = sandbox().port()] { reply = raw_challenge(port); });
    while (state().at("counters").at("requests") == 0) std::this_thread::yield();
    start();  // ends the first sandbox
    waiting.join();
    EXPECT_EQ(reply.data, "");
}

TEST_F(FaultsTest, VerdictsDecideWhatProcessingFinds) {
    spoil("processing/authentication", {{"kind", "verdict"}, {"code", 415}});
    spoil("processing/invoice", {{"kind", "verdict"}, {"code", 405}});
    spoil("processing/invoice", {{"kind", "verdict"}, {"code", 999}, {"description", "Coś"}});
    EXPECT_EQ(client().sign_in(seller_nip).exception_code(), 21301);
    open_as_seller();
    const std::string xml = SampleInvoice().xml();
    EXPECT_EQ(status_of(xml).at("description"), "Przetwarzanie anulowane z powodu błędu sesji");
    EXPECT_EQ(status_of(xml), Json({{"code", 999}, {"description", "Coś"}}));
    EXPECT_EQ(code_of(xml), 200);
}

TEST_F(FaultsTest, AFaultThatMakesNoSenseIsRefusedWhole) {
    const Json good = {{"step", "auth/challenge"}, {"kind", "empty"}};
    const Json bad[] = {
        {{"step", "auth/chalenge"}, {"kind", "empty"}},
        {{"step", "auth/challenge"}, {"kind", "explode"}},
        {{"step", "auth/challenge"}, {"kind", "empty"}, {"often", 3}},
        {{"step", "auth/challenge"}, {"kind", "json"}, {"path", "a[b]"}},
        {{"step", "auth/challenge"}, {"kind", "verdict"}, {"code", 405}},
        {{"step", "processing/invoice"}, {"kind", "empty"}},
        "empty",
    };
    for (const Json& it : bad)
        EXPECT_EQ(control().post("/sandbox/faults", Json::array({good, it})).status, 400) << it;
    EXPECT_EQ(control().get("/sandbox/faults").json(), Json::array());
}

TEST(FaultText, ReadsQuotedValuesAndJson) {
    const Json fault = {{"path", "a b"}, {"value", 150}, {"body", "{\"a b\": 1}"}, {"count", "-1"}};
    EXPECT_EQ(parse_fault_text("path='a b'  value=150 body='{\"a b\": 1}' count=-1"), fault);
    EXPECT_THROW(parse_fault_text("step"), std::invalid_argument);
    EXPECT_THROW(parse_fault_text("body='open"), std::invalid_argument);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
