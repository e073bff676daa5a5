// Every answer of a working day, judged by the published interface.
#include "tests/sandbox/contract.h"

#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

class ContractTest : public SandboxTest {
  protected:
    void SetUp() override {
        TAVRIX_NEEDS_CONTRACT();
        contract_ = std::make_unique<Contract>(TAVRIX_KSEF_CONTRACT_DIR);
    }

    /// Sends to a path of the interface, its `{...}` replaced in order, and judges the answer.
    Reply agree(const std::string& method, const std::string& pattern,
                const std::vector<std::string>& parameters = {}, const Json& body = Json::object(),
                const std::string& query = "") {
        std::string path = pattern;
        for (const std::string& parameter : parameters)
            path.replace(path.find('{'), path.find('}') - path.find('{') + 1, parameter);
        Client& it = client();
        const Reply reply = method == "get"    ? it.get(path + query)
                            : method == "post" ? it.post(path, body)
                                               : it.remove(path);
        judge(method, pattern, reply);
        return reply;
    }
    void judge(const std::string& method, const std::string& pattern, const Reply& reply) {
        const std::string type = reply.header("Content-Type");
        for (const auto& problem :
             contract_->judge(method, pattern, reply.status, type, reply.json()))
            ADD_FAILURE() << method << " " << pattern << " " << problem << "\n"
                          << reply.body.substr(0, 600);
    }

    std::unique_ptr<Contract> contract_;
};

TEST_F(ContractTest, AnswersOfAWorkingDayAgree) {
    Client& it = client();
    agree("post", "/auth/challenge");
    agree("get", "/security/public-key-certificates");
    judge("post", "/auth/ksef-token",
          it.send_token(token_of(seller_nip), seller_nip, it.challenge()));
    it.bearer = it.authentication_token;
    agree("get", "/auth/{referenceNumber}", {it.authentication_reference});
    const Json tokens = agree("post", "/auth/token/redeem").json();
    agree("post", "/auth/token/redeem");
    it.bearer = tokens.at("refreshToken").at("token");
    agree("post", "/auth/token/refresh");
    it.bearer = tokens.at("accessToken").at("token");
    agree("get", "/auth/sessions");

    agree("post", "/sessions/online", {}, it.open_body(std::string(31, 'k')));
    ASSERT_NE(it.open_session(), "");
    SampleInvoice rich;
    rich.other_parties =
        "<Podmiot3><DaneIdentyfikacyjne><IDWew>5265877635-12345</IDWew><Nazwa>Oddział</Nazwa>"
        "</DaneIdentyfikacyjne><Rola>4</Rola></Podmiot3><PodmiotUpowazniony><DaneIdentyfikacyjne>"
        "<NIP>1111111111</NIP><Nazwa>Biuro</Nazwa></DaneIdentyfikacyjne><Adres><KodKraju>PL"
        "</KodKraju><AdresL1>Rynek 1</AdresL1></Adres><RolaPU>1</RolaPU></PodmiotUpowazniony>";
    const Reply sent = agree("post", "/sessions/online/{referenceNumber}/invoices", {it.session},
                             it.invoice_body(rich.xml()));
    it.send(rich.xml());         // a duplicate
    it.send("<Faktura>broken");  // no XML
    agree("get", "/sessions/{referenceNumber}", {it.session});
    const Reply list = agree("get", "/sessions/{referenceNumber}/invoices", {it.session});
    agree("get", "/sessions/{referenceNumber}/invoices/failed", {it.session});
    agree("get", "/sessions/{referenceNumber}/invoices/{invoiceReferenceNumber}",
          {it.session, sent.json().at("referenceNumber")});
    agree("post", "/sessions/online/{referenceNumber}/close", {it.session});
    agree("post", "/sessions/online/{referenceNumber}/close", {it.session});
    const Json closed = agree("get", "/sessions/{referenceNumber}", {it.session}).json();
    EXPECT_TRUE(closed.contains("upo"));
    for (const char* kind : {"Online", "Fax"})
        agree("get", "/sessions", {}, {}, std::string("?sessionType=") + kind);

    const std::string number = list.json().at("invoices").at(0).at("ksefNumber");
    agree("get", "/invoices/ksef/{ksefNumber}", {number.substr(0, 33) + "XX"});
    sandbox().advance(std::chrono::seconds(1));
    const Json range = {{"dateType", "PermanentStorage"}, {"from", "2026-11-01T00:00:00+00:00"}};
    const Reply metadata = agree("post", "/invoices/query/metadata", {},
                                 {{"subjectType", "Subject1"}, {"dateRange", range}});
    ASSERT_EQ(metadata.json().at("invoices").size(), 1u) << metadata.body;
    agree("post", "/invoices/query/metadata");

    for (const char* path : {"/rate-limits", "/limits/context", "/limits/subject"})
        agree("get", path);
    const Reply token = agree("post", "/tokens", {},
                              {{"permissions", {"InvoiceRead"}}, {"description", "Do odczytu"}});
    const std::string reference = token.json().at("referenceNumber");
    agree("get", "/tokens");
    agree("get", "/tokens/{referenceNumber}", {reference});
    agree("delete", "/tokens/{referenceNumber}", {reference});
    agree("delete", "/auth/sessions/current");
    it.bearer = "nonsense";
    agree("get", "/sessions", {}, {}, "?sessionType=Online");
}

TEST_F(ContractTest, RefusalsAgreeInBothFormats) {
    start([](Options& it) { it.rate_limits = true; });
    open_as_seller();
    const std::string path = "/sessions/online/{referenceNumber}/invoices";
    agree("post", path, {client().session});
    client().headers["X-Error-Format"] = "problem-details";
    const Reply problem = agree("post", path, {client().session});
    EXPECT_EQ(problem.header("Content-Type"), "application/problem+json");
    EXPECT_EQ(problem.json().at("errors")[0].at("code"), 21405);
    client().headers.clear();

    for (int i = 0; i < 5; ++i) ASSERT_EQ(list_sessions().status, 200);
    const Reply busy = agree("get", "/sessions", {}, {}, "?sessionType=Online");
    EXPECT_EQ(busy.header("Retry-After"), "1");

    const Reply made =
        client().post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Odczyt"}});
    client().sign_in(seller_nip, made.json().at("token"));
    const Reply forbidden = agree("post", "/sessions/online");
    EXPECT_EQ(forbidden.status, 403);
    EXPECT_EQ(forbidden.json().at("reasonCode"), "missing-permissions");
}

}  // namespace
}  // namespace tavrix::sandbox::testing
