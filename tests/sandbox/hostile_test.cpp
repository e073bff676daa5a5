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
    std::string bomb = "<!DOCTYPE Faktura [<!ENTITY a \"0123456789\">";
    for (char name = 'b'; name < 'k'; ++name) {
        bomb += std::string("<!ENTITY ") + name + " \"";
        for (int i = 0; i < 10; ++i) bomb += std::string("&") + char(name - 1) + ";";
        bomb += "\">";
    }
    const std::string cases[] = {
        bomb + "]><Faktura>&j;</Faktura>",
        "<!DOCTYPE Faktura [<!ENTITY x SYSTEM \"file://" + secret + "\">]><Faktura>&x;</Faktura>",
        "<!DOCTYPE Faktura SYSTEM \"http://127.0.0.1:1/x.dtd\"><Faktura/>",
        "<!DOCTYPE Faktura [<!ATTLIST Faktura a CDATA \"" + std::string(100, 'x') +
            "\">]><Faktura/>",
    };
    for (const std::string& xml : cases) {
        const Json status = status_of(xml);
        EXPECT_EQ(status.at("code"), 450) << xml.substr(0, 60);
        EXPECT_EQ(status.at("details")[0], "Deklaracja DOCTYPE jest niedozwolona.")
            << xml.substr(0, 60);
    }
    EXPECT_EQ(dump(state()).find("TOP-SECRET"), std::string::npos);
}

TEST_F(HostileTest, DepthAndNonsenseAreRefused) {
    open_as_seller();
    std::string deep;
    for (int i = 0; i < 50'000; ++i) deep += "<a>";
    EXPECT_EQ(code_of(deep), 450);
    EXPECT_EQ(code_of(std::string("<Faktura>\0</Faktura>", 20)), 450);
    EXPECT_EQ(code_of(SampleInvoice{.seller = "1e9"}.xml()), 450);

    const std::string path = "/sessions/online/" + client().session + "/invoices";
    const std::string bodies[] = {"",
                                  "null",
                                  "[]",
                                  "{",
                                  "{\"invoiceHash\": \"\xFF\xFE\"}",
                                  std::string(1'000'000, '['),
                                  "{\"a\":" + std::string(500'000, '[')};
    for (const std::string& body : bodies)
        EXPECT_EQ(client().post_text(path, body).exception_code(), 21405) << body.substr(0, 30);
    EXPECT_EQ(control_get("/sandbox/state").status, 200) << "the log can still be shown";
}

TEST_F(HostileTest, StrangePathsFindNothing) {
    client().sign_in(seller_nip);
    const std::string slashes(4000, '/');
    for (const char* path : {"/", "//", slashes.c_str(), "/sessions/", "/%00", "/auth/a/b",
                             "/sessions/%2e%2e/invoices/x/y/z", "/../../etc/passwd"})
        EXPECT_EQ(client().get(path).status, 404) << path;
    EXPECT_EQ(client().get("/sessions/%ZZ").exception_code(), 21405);
    EXPECT_EQ(client().get("/auth/challenge%2Fx").status, 401)
        << "an encoded slash stays in its segment";
    EXPECT_EQ(client().remove("/sessions").status, 405);
}

TEST_F(HostileTest, WhatTheTransportRefusesEndsTheConnection) {
    EXPECT_EQ(client().post_text("/auth/challenge", std::string(8 * 1024 * 1024 + 1, ' ')).status,
              413);
    EXPECT_EQ(client().post_text("/auth/challenge", std::string(8 * 1024 * 1024, ' ')).status, 200);
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
    EXPECT_EQ(requests.back().at("body").at("offlineMode"), false) << "short members stay readable";
    EXPECT_EQ(state().at("counters").at("steps").at("auth/challenge"), 1);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
