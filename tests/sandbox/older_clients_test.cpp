// What is there for clients that read by position, and for those whose sellers are made up.
#include "tests/sandbox/fixture.h"
#include "tests/sandbox/packed.h"

namespace tavrix::sandbox::testing {
namespace {

class OlderClientsTest : public SandboxTest {
  protected:
    static Json value_at(const Json& entry, std::size_t position) {
        return std::next(entry.begin(), std::ptrdiff_t(position)).value();
    }
};

TEST_F(OlderClientsTest, FindReferenceAndNumbersByPositionWhenTheyAskForIt) {
    start([](Options& it) { it.classic_order = true; });
    client().sign_in(seller_nip);
    const Files files = {{"a.xml", SampleInvoice().xml()}, {"b.xml", "<Faktura/>"}};
    client().send_package(client().package_body(packed(files)));
    const Json listed = client().get("/sessions?sessionType=Batch").json().at("sessions")[0],
               all = client().get(session_path() + "/invoices").json().at("invoices");
    EXPECT_EQ(value_at(listed, 0), client().session);
    EXPECT_EQ(value_at(listed, 1), "FV/1/2026");
    EXPECT_EQ(value_at(all[0], 1), all[0].at("referenceNumber"));
    EXPECT_EQ(value_at(all[0], 2), all[0].at("ksefNumber"));
    EXPECT_EQ(value_at(all[1], 2), all[1].at("invoiceHash")) << "it has no number";
}

TEST_F(OlderClientsTest, AreTakenAsTheyAreUnlessOnlyThePublishedIs) {
    const Json text = {{"permissions", "InvoiceRead,InvoiceWrite"}, {"description", "Token"}};
    for (const bool strict : {false, true}) {
        start([&](Options& it) { it.strict = strict; });
        client().sign_in(seller_nip);
        EXPECT_EQ(client().post("/tokens", text).status, strict ? 400 : 202);
        Json empty = client().package_body("x");
        empty["batchFile"]["fileSize"] = 0;
        EXPECT_EQ(client().open_package(empty).status, strict ? 400 : 201);
        for (int i = 0; i < 12; ++i) client().open_session();
        const std::string token = list_sessions().json().at("continuationToken"),
                          query = "/sessions?sessionType=Online&x-continuation-token=" + token;
        EXPECT_EQ(client().get(query).json().at("sessions").size(), strict ? 10u : 2u);
    }
}

TEST_F(OlderClientsTest, ReadLimitsInTheWordsTheyLookForAlsoEscaped) {
    client().sign_in(seller_nip);
    for (const bool escaped : {false, true}) {
        Json faults = {{{"step", "sessions"}, {"kind", "429"}, {"retry_after", 1}}};
        if (escaped) faults.push_back({{"step", "sessions"}, {"kind", "escape"}});
        control().post("/sandbox/faults", faults);
        const Reply reply = list_sessions();
        const std::string words = "Spróbuj ponownie po 1 sekundach.";
        EXPECT_EQ(reply.body.find(words) == std::string::npos, escaped) << reply.body;
        const std::string text = reply.json().at("status").at("details")[0];
        EXPECT_NE(text.find(words), std::string::npos);
    }
}

TEST_F(OlderClientsTest, BuyFromSellersThatNobodyPlays) {
    client().sign_in(buyer_nip);
    const auto buy = [&](const Json& body) { return control().post("/sandbox/purchases", body); };
    EXPECT_EQ(buy({{"xml", SampleInvoice().xml()}}).status, 200);
    EXPECT_EQ(buy({{"xml", SampleInvoice().xml()}}).status, 400) << "a duplicate";
    EXPECT_EQ(buy({{"buyer", buyer_nip}, {"seller", "1"}}).status, 400);
    const Reply many = buy({{"buyer", buyer_nip},
                            {"seller", "1111111111"},
                            {"buyer_unit", "7352765225-00001"},
                            {"count", 10'000}});
    ASSERT_EQ(many.status, 200) << many.body;
    const Json range = {{"dateType", "PermanentStorage"}, {"from", "2026-11-21T00:00:00Z"}};
    const auto page = [&](const std::string& offset) {
        return client()
            .post("/invoices/query/metadata?pageSize=250&sortOrder=Desc&pageOffset=" + offset,
                  {{"subjectType", "Subject2"}, {"dateRange", range}})
            .json();
    };
    EXPECT_FALSE(page("38").at("isTruncated"));
    EXPECT_TRUE(page("39").at("isTruncated") && page("39").at("hasMore"));
    EXPECT_TRUE(page("40").contains("exception"));
    const std::string number = page("39").at("invoices")[249].at("ksefNumber");
    EXPECT_NE(client().get("/invoices/ksef/" + number).body.find("<IDWew>7352765225-00001<"),
              std::string::npos);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
