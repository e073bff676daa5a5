// Every answer of a working day, judged by the published interface.
#include "tests/sandbox/contract.h"

#include <algorithm>

#include "sandbox/basics/ksef_number.h"
#include "sandbox/http/routes.h"
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

class ContractTest : public SandboxTest {
  protected:
    void SetUp() override {
        TAVRIX_NEEDS_CONTRACT();
        contract_ = std::make_unique<Contract>(contract_folder());
    }

    Reply agree(const std::string& method, const std::string& path, const Reply& reply) {
        for (const std::string& problem : contract_->judge(
                 method, path, reply.status, reply.header("Content-Type"), reply.json()))
            ADD_FAILURE() << method << " " << path << " " << problem << "\n"
                          << reply.body.substr(0, 600);
        return reply;
    }

    std::unique_ptr<Contract> contract_;
};

TEST_F(ContractTest, AnswersOfAWorkingDayAgree) {
    Client& it = client();
    agree("post", "/auth/challenge", it.post("/auth/challenge"));
    agree("get", "/security/public-key-certificates", it.get("/security/public-key-certificates"));
    agree("post", "/auth/ksef-token",
          it.send_token(token_of(seller_nip), seller_nip, it.challenge()));
    it.bearer = it.authentication_token;
    agree("get", "/auth/{referenceNumber}", it.get("/auth/" + it.authentication_reference));
    const Reply tokens = agree("post", "/auth/token/redeem", it.post("/auth/token/redeem"));
    agree("post", "/auth/token/redeem", it.post("/auth/token/redeem"));
    it.bearer = tokens.json().at("refreshToken").at("token");
    agree("post", "/auth/token/refresh", it.post("/auth/token/refresh"));
    it.bearer = tokens.json().at("accessToken").at("token");
    agree("get", "/auth/sessions", it.get("/auth/sessions"));

    agree("post", "/sessions/online",
          it.post("/sessions/online", it.open_body(std::string(31, 'k'))));
    ASSERT_NE(it.open_session(), "");
    const std::string session = "/sessions/" + it.session;
    SampleInvoice rich;
    rich.other_parties =
        "<Podmiot3><DaneIdentyfikacyjne><IDWew>5265877635-12345</IDWew><Nazwa>Oddział</Nazwa>"
        "</DaneIdentyfikacyjne><Rola>4</Rola></Podmiot3><PodmiotUpowazniony><DaneIdentyfikacyjne>"
        "<NIP>1111111111</NIP><Nazwa>Biuro</Nazwa></DaneIdentyfikacyjne><Adres><KodKraju>PL</"
        "KodKraju>"
        "<AdresL1>Rynek 1</AdresL1></Adres><RolaPU>1</RolaPU></PodmiotUpowazniony>";
    const Reply sent =
        agree("post", "/sessions/online/{referenceNumber}/invoices",
              it.post("/sessions/online/" + it.session + "/invoices", it.invoice_body(rich.xml())));
    const std::string invoice = sent.json().at("referenceNumber");
    it.send(rich.xml());         // a duplicate
    it.send("<Faktura>broken");  // no XML
    agree("get", "/sessions/{referenceNumber}", it.get(session));
    const Reply list =
        agree("get", "/sessions/{referenceNumber}/invoices", it.get(session + "/invoices"));
    agree("get", "/sessions/{referenceNumber}/invoices/failed",
          it.get(session + "/invoices/failed"));
    agree("get", "/sessions/{referenceNumber}/invoices/{invoiceReferenceNumber}",
          it.get(session + "/invoices/" + invoice));
    agree("post", "/sessions/online/{referenceNumber}/close",
          it.post("/sessions/online/" + it.session + "/close"));
    agree("post", "/sessions/online/{referenceNumber}/close",
          it.post("/sessions/online/" + it.session + "/close"));
    const Reply closed = agree("get", "/sessions/{referenceNumber}", it.get(session));
    EXPECT_EQ(closed.json().at("status").at("code"), 200);
    EXPECT_TRUE(closed.json().contains("upo"));
    agree("get", "/sessions", it.get("/sessions?sessionType=Online"));
    agree("get", "/sessions", it.get("/sessions?sessionType=Fax"));

    ASSERT_EQ(list.json().at("invoices")[0].at("status").at("code"), 200) << list.body;
    const std::string number = list.json().at("invoices")[0].at("ksefNumber");
    agree("get", "/invoices/ksef/{ksefNumber}",
          it.get("/invoices/ksef/" + number.substr(0, 33) + "XX"));
    sandbox().advance(std::chrono::seconds(1));
    const Reply metadata = agree(
        "post", "/invoices/query/metadata",
        it.post("/invoices/query/metadata",
                {{"subjectType", "Subject1"},
                 {"dateRange",
                  {{"dateType", "PermanentStorage"}, {"from", "2026-11-01T00:00:00+00:00"}}}}));
    ASSERT_EQ(metadata.json().at("invoices").size(), 1u) << metadata.body;
    agree("post", "/invoices/query/metadata", it.post("/invoices/query/metadata"));

    agree("get", "/rate-limits", it.get("/rate-limits"));
    agree("get", "/limits/context", it.get("/limits/context"));
    agree("get", "/limits/subject", it.get("/limits/subject"));
    const Reply token = agree(
        "post", "/tokens",
        it.post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Do odczytu"}}));
    const std::string token_path =
        "/tokens/" + token.json().at("referenceNumber").get<std::string>();
    agree("get", "/tokens", it.get("/tokens"));
    agree("get", "/tokens/{referenceNumber}", it.get(token_path));
    agree("delete", "/tokens/{referenceNumber}", it.remove(token_path));
    agree("delete", "/auth/sessions/current", it.remove("/auth/sessions/current"));
    it.bearer = "nonsense";
    agree("get", "/sessions", it.get("/sessions?sessionType=Online"));
}

TEST_F(ContractTest, ErrorsAgreeInBothFormats) {
    open_as_seller();
    const std::string path = "/sessions/online/" + client().session + "/invoices";
    agree("post", "/sessions/online/{referenceNumber}/invoices", client().post(path));
    client().headers["X-Error-Format"] = "problem-details";
    const Reply problem =
        agree("post", "/sessions/online/{referenceNumber}/invoices", client().post(path));
    EXPECT_EQ(problem.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(problem.json().at("errors")[0].at("code"), 21405);
}

TEST_F(ContractTest, ATokenWithoutPermissionIsForbidden) {
    client().sign_in(seller_nip);
    const Reply made =
        client().post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}});
    client().sign_in(seller_nip, made.json().at("token"));
    const Reply reply = agree("post", "/sessions/online", client().post("/sessions/online"));
    EXPECT_EQ(reply.status, 403);
    EXPECT_EQ(reply.json().at("reasonCode"), "missing-permissions");
}

TEST_F(ContractTest, TooManyRequestsAgree) {
    Options options;
    options.rate_limits = true;
    start(options);
    client().sign_in(seller_nip);
    for (int i = 0; i < 5; ++i) ASSERT_EQ(client().get("/sessions?sessionType=Online").status, 200);
    const Reply reply = agree("get", "/sessions", client().get("/sessions?sessionType=Online"));
    EXPECT_EQ(reply.status, 429);
    EXPECT_EQ(reply.header("Retry-After"), "1");
}

/// The order of the metadata's members is what older clients depend on; it is spelt out here once
/// more, in case the published file ever changes it.
TEST_F(SandboxTest, MetadataKeepTheOrderClientsReadByPosition) {
    open_as_seller();
    client().send(SampleInvoice().xml());
    sandbox().advance(std::chrono::seconds(1));
    const Json entry =
        client()
            .post("/invoices/query/metadata",
                  {{"subjectType", "Subject1"},
                   {"dateRange",
                    {{"dateType", "Invoicing"}, {"from", "2026-11-01T00:00:00.0+00:00"}}}})
            .json()
            .at("invoices")
            .at(0);
    std::vector<std::string> names;
    for (const auto& [name, value] : entry.items()) names.push_back(name);
    const std::vector<std::string> expected = {
        "ksefNumber",      "invoiceNumber",        "issueDate",    "invoicingDate",
        "acquisitionDate", "permanentStorageDate", "seller",       "buyer",
        "netAmount",       "grossAmount",          "vatAmount",    "currency",
        "invoicingMode",   "invoiceType",          "formCode",     "isSelfInvoicing",
        "hasAttachment",   "invoiceHash",          "thirdSubjects"};
    EXPECT_EQ(names, expected);
    EXPECT_EQ(entry.at("netAmount"), 1600.5);
    EXPECT_EQ(entry.at("vatAmount"), 350.03);
    EXPECT_EQ(entry.at("grossAmount"), 1950.53);
    EXPECT_TRUE(is_ksef_number(entry.at("ksefNumber").get<std::string>()));
}

}  // namespace
}  // namespace tavrix::sandbox::testing
