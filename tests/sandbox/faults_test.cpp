// Trouble on demand: each kind as a client meets it.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

/// What a bare socket receives for one request, and how the connection ended.
struct RawReply {
    std::string data;
    int error = 0;
};

RawReply raw_request(int port, const std::string& text) {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    RawReply reply;
    if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        reply.error = errno;
    } else {
        ::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
        char buffer[4096];
        ssize_t count = 0;
        while ((count = ::recv(socket, buffer, sizeof buffer, 0)) > 0)
            reply.data.append(buffer, std::size_t(count));
        if (count < 0) reply.error = errno;
    }
    ::close(socket);
    return reply;
}

constexpr const char* challenge_request =
    "POST /v2/auth/challenge HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\n\r\n{}";

class FaultsTest : public SandboxTest {
  protected:
    void spoil_challenge(Json fault) {
        fault["step"] = "auth/challenge";
        set_fault(fault);
    }
    /// What a client gets when it asks for a challenge.
    Reply challenge_with(const Json& fault) {
        spoil_challenge(fault);
        return client().post("/auth/challenge");
    }
    RawReply raw_challenge_with(const char* kind) {
        spoil_challenge({{"kind", kind}});
        return raw_request(sandbox().port(), challenge_request);
    }
    void clear_faults() { Client(sandbox().port(), "").remove("/sandbox/faults"); }
};

TEST_F(FaultsTest, FaultsHitTheChosenRequestsOnly) {
    spoil_challenge({{"kind", "status"}, {"status", 503}, {"skip", 1}, {"count", 2}});
    std::vector<int> statuses;
    for (int i = 0; i < 5; ++i) {
        statuses.push_back(client().post("/auth/challenge").status);
        EXPECT_EQ(client().get("/security/public-key-certificates").status, 200);
    }
    EXPECT_EQ(statuses, (std::vector<int>{200, 503, 503, 200, 200}));
    EXPECT_EQ(state().at("requests")[2].at("faults"), Json::array({"status"}));

    EXPECT_EQ(challenge_with({{"kind", "empty"}, {"count", -1}}).body, "");
    EXPECT_EQ(client().post("/auth/challenge").body, "");
    clear_faults();
    EXPECT_NE(client().post("/auth/challenge").body, "");
}

TEST_F(FaultsTest, BodiesAreSpoiltAsAsked) {
    struct Case {
        Json fault;
        int status;
        std::string type, body;
    };
    const Case cases[] = {
        {{{"kind", "status"}, {"status", 500}}, 500, "", ""},
        {{{"kind", "status"}, {"status", 418}, {"body", "short"}, {"type", "text/plain"}},
         418,
         "text/plain",
         "short"},
        {{{"kind", "malformed"}, {"body", "{\"a\":"}}, 200, "application/json", "{\"a\":"},
        {{{"kind", "html"}, {"body", "<p>no"}}, 200, "text/html; charset=utf-8", "<p>no"},
        {{{"kind", "empty"}}, 200, "", ""},
    };
    for (const Case& it : cases) {
        const Reply reply = challenge_with(it.fault);
        EXPECT_EQ(reply.status, it.status) << it.fault;
        EXPECT_EQ(reply.header("Content-Type"), it.type) << it.fault;
        EXPECT_EQ(reply.body, it.body) << it.fault;
    }
    const Reply busy = challenge_with({{"kind", "429"}, {"retry_after", 7}});
    EXPECT_EQ(busy.status, 429);
    EXPECT_EQ(busy.header("Retry-After"), "7");
    const Reply cut = challenge_with({{"kind", "truncated"}});
    EXPECT_EQ(cut.status, 200);
    EXPECT_TRUE(cut.json().is_null() && !cut.body.empty());
}

TEST_F(FaultsTest, ValuesInAnAnswerAreReplacedAndRemoved) {
    const Json faults[] = {{{"kind", "json"}, {"path", "[*].usage"}, {"value", {"a", "b"}}},
                           {{"kind", "remove"}, {"path", "[0].certificate"}},
                           {{"kind", "header"}, {"name", "X-Y"}, {"value", "z"}}};
    for (Json fault : faults) {
        fault["step"] = "security/public-key-certificates";
        set_fault(fault);
    }
    const Reply reply = client().get("/security/public-key-certificates");
    const Json list = reply.json();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].at("usage"), Json({"a", "b"}));
    EXPECT_EQ(list[1].at("usage"), Json({"a", "b"}));
    EXPECT_FALSE(list[0].contains("certificate"));
    EXPECT_TRUE(list[1].contains("certificate"));
    EXPECT_EQ(reply.header("X-Y"), "z");
}

/// The answer is lost but the invoice is there: sending again is a duplicate.
TEST_F(FaultsTest, ADroppedAnswerLeavesTheInvoiceBehind) {
    open_as_seller();
    set_fault({{"step", "sessions/online/invoices"}, {"kind", "drop"}, {"count", -1}});
    EXPECT_EQ(client().send(SampleInvoice().xml()), "");
    // The library repeats a request whose kept connection turned out closed; what counts is that it
    // arrived.
    EXPECT_GE(state().at("invoices").size(), 1u);
    clear_faults();
    EXPECT_EQ(code_of(SampleInvoice().xml()), 440);

    set_fault({{"step", "sessions/online/invoices"}, {"kind", "refuse"}, {"count", -1}});
    const std::size_t before = state().at("invoices").size();
    EXPECT_EQ(client().send(SampleInvoice{.number = "FV/2"}.xml()), "");
    EXPECT_EQ(state().at("invoices").size(), before);
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
    spoil_challenge({{"kind", "hang"}});
    RawReply reply;
    std::thread waiting(
        [&, port = sandbox().port()] { reply = raw_request(port, challenge_request); });
    while (state().at("counters").at("requests") == 0) std::this_thread::yield();
    start();  // ends the first sandbox
    waiting.join();
    EXPECT_EQ(reply.data, "");
}

TEST_F(FaultsTest, VerdictsDecideWhatProcessingFinds) {
    Json own = {{"code", 999}, {"description", "Coś innego"}, {"details", {"szczegół"}}};
    const auto order = [&](const char* what, Json verdict) {
        verdict["step"] = std::string("processing/") + what;
        verdict["kind"] = "verdict";
        set_fault(verdict);
    };
    order("invoice", {{"code", 405}});
    order("invoice", own);
    order("authentication", {{"code", 415}});
    EXPECT_EQ(client().sign_in(seller_nip).exception_code(), 21301);
    open_as_seller();
    const Json first = status_of(SampleInvoice().xml());
    EXPECT_EQ(first.at("description"), "Przetwarzanie anulowane z powodu błędu sesji");
    const Json second = status_of(SampleInvoice().xml());
    for (const auto& [name, value] : own.items()) EXPECT_EQ(second.at(name), value);
    EXPECT_EQ(code_of(SampleInvoice().xml()), 200);
}

TEST_F(FaultsTest, AFaultThatMakesNoSenseIsRefusedWhole) {
    const Json good = {{"step", "auth/challenge"}, {"kind", "empty"}};
    const Json bad[] = {
        {{"kind", "empty"}},
        {{"step", "auth/chalenge"}, {"kind", "empty"}},
        {{"step", "auth/challenge"}, {"kind", "explode"}},
        {{"step", "auth/challenge"}, {"kind", "empty"}, {"often", 3}},
        {{"step", "auth/challenge"}, {"kind", "json"}, {"path", "a[b]"}},
        {{"step", "auth/challenge"}, {"kind", "json"}},
        {{"step", "auth/challenge"}, {"kind", "status"}, {"status", "many"}},
        {{"step", "auth/challenge"}, {"kind", "verdict"}, {"code", 405}},
        {{"step", "processing/invoice"}, {"kind", "empty"}},
        "empty",
    };
    for (const Json& it : bad)
        EXPECT_EQ(control_post("/sandbox/faults", Json::array({good, it})).status, 400) << it;
    EXPECT_EQ(control_get("/sandbox/faults").json().size(), 0u);
}

TEST(FaultText, ReadsQuotedValuesAndJson) {
    EXPECT_EQ(
        parse_fault_text("step=a/b  kind=json path='invoices[0].status.code' value=150 count=-1"),
        Json({{"step", "a/b"},
              {"kind", "json"},
              {"path", "invoices[0].status.code"},
              {"value", 150},
              {"count", "-1"}}));
    EXPECT_EQ(parse_fault_text("body='{\"a b\": 1}'").at("body"), "{\"a b\": 1}");
    EXPECT_EQ(parse_fault_text("value=plain").at("value"), "plain");
    EXPECT_THROW(parse_fault_text("step"), std::invalid_argument);
    EXPECT_THROW(parse_fault_text("body='open"), std::invalid_argument);
    const Json text = parse_fault_text("step=auth/challenge kind=status status=404");
    EXPECT_EQ(Fault::from_json(text).status, 404);
}

TEST(JsonText, NestsSixtyFourLevelsAndNoMore) {
    EXPECT_TRUE(read_json(std::string(64, '[') + std::string(64, ']')));
    EXPECT_FALSE(read_json(std::string(65, '[') + std::string(65, ']')));
    EXPECT_TRUE(read_json("\"" + std::string(65, '[') + "\\\"\"")) << "brackets in a text";
}

TEST(JsonPath, ChangesExactlyWhatItNames) {
    Json value = Json::parse(R"({"a":[{"b":1},{"b":2}],"c":null})");
    EXPECT_EQ(set_at_path(value, "a[1].b", 5), 1u);
    EXPECT_EQ(set_at_path(value, "a[7].b", 5), 0u);
    EXPECT_EQ(set_at_path(value, "a[*].n.m", "x"), 2u);
    EXPECT_EQ(set_at_path(value, "a.b", 5), 0u) << "an array has no members";
    EXPECT_EQ(remove_at_path(value, "a[0].b"), 1u);
    EXPECT_EQ(remove_at_path(value, "a[0].b"), 0u);
    EXPECT_EQ(dump(value), R"({"a":[{"n":{"m":"x"}},{"b":5,"n":{"m":"x"}}],"c":null})");
    EXPECT_EQ(remove_at_path(value, "a[*]"), 2u);
    for (const char* bad : {"", "a..b", "a[", "a[x]", "[]", "a."})
        EXPECT_THROW(check_path(bad), std::invalid_argument) << bad;
}

}  // namespace
}  // namespace tavrix::sandbox::testing
