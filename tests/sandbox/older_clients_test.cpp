// What is there for clients that send what nobody published, and for those whose sellers are made
// up.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

class OlderClientsTest : public SandboxTest {};

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
