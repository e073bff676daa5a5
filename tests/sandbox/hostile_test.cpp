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
}

TEST_F(HostileTest, WhatTheTransportRefusesEndsTheConnection) {
    std::string body(8 * 1024 * 1024, ' ');
    EXPECT_EQ(client().post_text("/auth/challenge", body).status, 200);
    EXPECT_EQ(client().post_text("/auth/challenge", body + ' ').status, 413);
    const Reply too_long = client().get("/" + std::string(9000, 'x'));
    EXPECT_EQ(too_long.status, 414);
    EXPECT_EQ(too_long.header("Connection"), "close");
    EXPECT_EQ(state().at("requests").back().at("method"), "POST")
        << "nothing unread became a request";
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
