// Input nobody sends by accident. The sandbox must answer, stay small and go on.
#include <fstream>

#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

class HostileTest : public SandboxTest {
  protected:
    void TearDown() override {
        EXPECT_EQ(client().post("/auth/challenge").status, 200) << "still alive";
    }
};

TEST_F(HostileTest, DocumentTypesAndEntitiesAreNeverRead) {
    open_as_seller();
    const std::string secret = ::testing::TempDir() + "/secret.txt";
    std::ofstream(secret) << "TOP-SECRET";
    const std::string bomb = "<!DOCTYPE Faktura [<!ENTITY j \"" + std::string(100'000, 'x') + "\">";
    const std::string cases[] = {
        bomb + "<!ENTITY k \"&j;&j;&j;&j;&j;&j;&j;&j;\">]><Faktura>&k;&k;&k;&k;</Faktura>",
        "<!DOCTYPE Faktura [<!ENTITY x SYSTEM \"file://" + secret + "\">]><Faktura>&x;</Faktura>",
        "<!DOCTYPE Faktura SYSTEM \"http://127.0.0.1:1/x.dtd\"><Faktura/>",
    };
    for (const std::string& xml : cases) {
        const Json status = status_of(xml);
        EXPECT_EQ(status.at("code"), 450) << xml;
        EXPECT_EQ(status.at("details")[0], "Deklaracja DOCTYPE jest niedozwolona.") << xml;
    }
    EXPECT_EQ(dump(state()).find("TOP-SECRET"), std::string::npos);
}

TEST_F(HostileTest, DepthAndNonsenseAreRefused) {
    open_as_seller();
    std::string deep;
    for (int i = 0; i < 50'000; ++i) deep += "<a>";
    EXPECT_EQ(code_of(deep), 450);
    EXPECT_EQ(code_of(std::string("<Faktura>\0</Faktura>", 20)), 450);

    const std::string path = "/sessions/online/" + client().session + "/invoices";
    const std::string deep_json = "{\"a\":" + std::string(500'000, '[');
    for (const char* body : {"", "[]", "{\"invoiceHash\": \"\xFF\xFE\"}", deep_json.c_str()})
        EXPECT_EQ(client().post_text(path, body).exception_code(), 21405);
    std::string wide_json = "{\"advance_ms\":0";
    for (int i = 1; i < 128; ++i) wide_json += ",\"" + std::to_string(i) + "\":0";
    EXPECT_EQ(control().post_text("/sandbox/clock", wide_json + "}").status, 200);
    EXPECT_EQ(control().post_text("/sandbox/clock", wide_json + ",\"x\":0}").status, 400);
    EXPECT_EQ(control().get("/sandbox/state").status, 200) << "the log can still be shown";
}

TEST_F(HostileTest, StrangePathsFindNothing) {
    client().sign_in(seller_nip);
    const std::string slashes(4000, '/');
    for (const char* path : {"/", slashes.c_str(), "/%00", "/auth/a/b", "/../../etc/passwd"})
        EXPECT_EQ(client().get(path).status, 404) << path;
    EXPECT_EQ(client().get("/sessions/%ZZ").exception_code(), 21405);
    EXPECT_EQ(client().get("/auth/challenge%2Fx").status, 401)
        << "an encoded slash stays in its segment";
    EXPECT_EQ(client().remove("/sessions").status, 405);
    EXPECT_EQ(client().post("/auth/xades-signature").status, 404) << "of a form that is known";
    EXPECT_NE(control().post("/auth/challenge").body.find("/v2"), std::string::npos);
    EXPECT_EQ(state().at("requests").back().at("path"), "/auth/challenge");
}

TEST_F(HostileTest, WhatTheTransportRefusesEndsTheConnection) {
    std::string body(8 * 1024 * 1024, ' ');
    EXPECT_EQ(client().post_text("/auth/challenge", body).status, 200);
    EXPECT_EQ(client().post_text("/auth/challenge", body + ' ').status, 413);
    EXPECT_EQ(control().put("http://x/storage/00/x/batch-parts/1", body + ' ').status, 413)
        << "no address";
    const Reply too_long = client().get("/" + std::string(9000, 'x'));
    EXPECT_EQ(too_long.status, 414);
    EXPECT_EQ(too_long.header("Connection"), "close");
    EXPECT_EQ(state().at("requests").back().at("method"), "POST")
        << "nothing unread became a request";
}

/// The statuses of all answers, in their order.
std::string statuses_of(const RawReply& reply) {
    std::string statuses;
    for (std::size_t at = 0; (at = reply.data.find("HTTP/1.1 ", at)) != std::string::npos; at += 9)
        statuses += (statuses.empty() ? "" : " ") + reply.data.substr(at + 9, 3);
    return statuses;
}

/// Each case is followed by a second request: what is refused ends the connection before it, and
/// what is accepted ends exactly where it begins.
TEST_F(HostileTest, NothingHidesInTheFramingOfARequest) {
    const std::string post = "POST /v2/auth/challenge HTTP/1.1\r\n", host = "Host: x\r\n";
    const std::string start = post + host, chunked = start + "Transfer-Encoding: chunked\r\n\r\n";
    const std::string inner = "GET /inner HTTP/1.1\r\nHost: x\r\n\r\n";
    const std::pair<std::string, const char*> cases[] = {
        {start + "Content-Length: 2\r\n\r\n{}", "200 404"},
        {"\r\n" + start + "\r\n", "200 404"},
        {"GET /v2/security/public-key-certificates HTTP/1.1\r\nHost: x\r\nContent-Length: " +
             std::to_string(inner.size()) + "\r\n\r\n" + inner,
         "200 404"},
        {start + "Content-Length: 2\r\nContent-Length: 2\r\n\r\n{}", "400"},
        {start + "Content-Length: 2, 2\r\n\r\n{}", "400"},
        {start + "Content-Length: two\r\n\r\n{}", "400"},
        {start + "Content-Length: +2\r\n\r\n{}", "400"},
        {start + "Content-Length: -2\r\n\r\n{}", "400"},
        {start + "Content-Length: 18446744073709551618\r\n\r\n{}", "400"},
        {start + "Content-Length: 8388609\r\n\r\n", "413"},
        {start + "Content-Length : 2\r\n\r\n{}", "400"},
        {start + "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400"},
        {start + "Transfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n0\r\n\r\n", "400"},
        {start + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n", "501"},
        {start + "Transfer-Encoding: identity\r\n\r\n", "501"},
        {start + "Transfer-Encoding: x\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "501"},
        {"POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", "400"},
        {chunked + "2;a=b;c=\"d\"\r\n{}\r\n0\r\nX-Trailer: x\r\n\r\n", "200 404"},
        {chunked + "2\r\n{}x\r\n0\r\n\r\n", "400"},
        {chunked + "0x2\r\n{}\r\n0\r\n\r\n", "400"},
        {chunked + "10000000000000002\r\n{}\r\n0\r\n\r\n", "400"},
        {chunked + "2\n{}\r\n0\r\n\r\n", "400"},
        {chunked + "2\r\n{}\r\n0\r\nContent-Length: 9\r\n\r\n", "400"},
        {chunked + "800001\r\n", "413"},
        {chunked + "2;" + std::string(80'000, 'x'), "431"},
        {post + "\r\n", "400"},
        {start + host + "\r\n", "400"},
        {post + "Host: a/\"b\r\n\r\n", "400"},
        {"POST /v2/auth/challenge HTTP/1.0\r\n\r\n", "200"},
        {"POST http://other/v2/auth/challenge HTTP/1.1\r\nHost: x\r\n\r\n", "200 404"},
        {start + "X-A: b\r\n c\r\n\r\n", "400"},
        {start + "X-A: b\nX-C: d\r\n\r\n", "400"},
        {start + "X-A: b\rX-C: d\r\n\r\n", "400"},
        {std::string("\x16\x03\x01\x02\x00", 5), "400"},
        {start + "Expect: 100-continue\r\nContent-Length: 0\r\n\r\n", "200 404"},
        {start + "Expect: tea\r\n\r\n", "417"},
        {start + "Connection: close\r\n\r\n", "200"},
        {"GET /" + std::string(9'000, 'x'), "414"},
        {start + "X-A: " + std::string(40'000, 'x'), "431"},
    };
    const std::string second = "HEAD /v2/second HTTP/1.1\r\nHost: x\r\n\r\n";
    for (const auto& [bytes, statuses] : cases) {
        const RawReply reply = raw_exchange(sandbox().port(), bytes + second, true);
        EXPECT_EQ(statuses_of(reply), statuses) << bytes.substr(0, 200);
        EXPECT_EQ(reply.error, 0) << bytes.substr(0, 200);
    }
    // Whoever expects it waits for the word before sending the body.
    const RawReply waiting = raw_exchange(
        sandbox().port(), start + "Expect: 100-continue\r\nContent-Length: 2\r\n\r\n", true);
    EXPECT_EQ(waiting.data, "HTTP/1.1 100 Continue\r\n\r\n");
    const RawReply head = raw_exchange(sandbox().port(), "HEAD / HTTP/1.0\r\n\r\n", true);
    EXPECT_TRUE(head.data.ends_with("\r\n\r\n")) << head.data;
    EXPECT_EQ(head.data.find("Content-Length: 0"), std::string::npos) << "of the page";
}

TEST_F(HostileTest, SlowAndSilentClientsAreLetGo) {
    using namespace std::chrono_literals;
    const RunningSandbox sandbox({}, std::make_unique<SharedKeys>(),
                                 {.idle = 300ms, .head = 50ms, .body = 50ms});
    const auto begin = std::chrono::steady_clock::now();
    for (const char* bytes :
         {"", "GET / HT", "POST / HTTP/1.1\r\nHost: x\r\nContent-Length: 9\r\n\r\n{"})
        EXPECT_EQ(raw_exchange(sandbox.port(), bytes).data, "") << bytes;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST_F(HostileTest, MoreConnectionsThanThereAreIsSaid) {
    const RunningSandbox sandbox({}, std::make_unique<SharedKeys>(), {.connections = 3});
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 3; ++i) {
        idle.push_back(std::make_unique<Client>(sandbox.port()));
        EXPECT_EQ(idle.back()->post("/auth/challenge").status, 200) << i;
    }
    EXPECT_EQ(statuses_of(raw_exchange(sandbox.port(), "", true)), "503");
    idle.clear();
    int status = 0;
    for (int i = 0; i < 1000 && status != 200; ++i)
        status = Client(sandbox.port()).post("/auth/challenge").status;
    EXPECT_EQ(status, 200) << "once they are gone";
}

TEST_F(HostileTest, IdleConnectionsKeepNobodyWaiting) {
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 200; ++i) {
        idle.push_back(std::make_unique<Client>(sandbox().port()));
        EXPECT_EQ(idle.back()->post("/auth/challenge").status, 200) << i;
    }
    EXPECT_EQ(Client(sandbox().port()).post("/auth/challenge").status, 200);
}

TEST_F(HostileTest, TheRequestLogStaysBounded) {
    start([](Options& it) { it.log_size = 5; });
    open_as_seller();
    client().send(std::string(900'000, 'x'));
    const Json requests = state().at("requests");
    EXPECT_EQ(requests.size(), 5u);
    EXPECT_LT(dump(requests.back()).size(), 2000u);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
