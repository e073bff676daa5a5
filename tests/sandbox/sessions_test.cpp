// Sessions: what may be sent when, how they end, how they are listed.
#include <libxml/xmlschemas.h>

#include <fstream>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/xml.h"
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class SessionsTest : public SandboxTest {
  protected:
    Json status() { return client().get(session_path()).json(); }
    int code() { return status().at("status").at("code"); }
};

TEST_F(SessionsTest, ASessionGoesFromOpenOverClosedToProcessed) {
    start([](Options& it) { it.session_closing.polls = 1; });
    open_as_seller();
    client().send(SampleInvoice().xml());
    EXPECT_EQ(code(), 100);
    EXPECT_EQ(close().status, 204);
    EXPECT_EQ(close().exception_code(), 21180);
    EXPECT_EQ(code(), 170);
    const Json done = status();
    EXPECT_EQ(done.at("status").at("code"), 200);
    EXPECT_EQ(done.at("successfulInvoiceCount"), 1);
    EXPECT_EQ(post_invoice(client().invoice_body(SampleInvoice().xml())).exception_code(), 21180);
}

TEST_F(SessionsTest, AnEmptySessionIsCancelledAndOneWithoutGoodInvoicesFails) {
    open_as_seller();
    close();
    EXPECT_EQ(code(), 440);
    client().open_session();
    client().send("no invoice");
    close();
    EXPECT_EQ(code(), 445);
    EXPECT_EQ(status().at("failedInvoiceCount"), 1);
    EXPECT_FALSE(status().contains("upo"));
}

TEST_F(SessionsTest, AForgottenSessionClosesItselfAfterTwelveHours) {
    open_as_seller();
    client().send(SampleInvoice().xml());
    sandbox().advance(12h);
    EXPECT_EQ(state().at("sessions")[0].at("status").at("code"), 200);
}

TEST_F(SessionsTest, AKeyThatCannotBeDecryptedShowsInTheStatus) {
    client().sign_in(seller_nip);
    client().open_session();
    Json body = client().open_body(std::string(31, 'k'));
    const std::string session =
        client().post("/sessions/online", body).json().at("referenceNumber");
    EXPECT_EQ(client().get("/sessions/" + session).json().at("status").at("code"), 415);
    Json unknown_form = body, short_vector = body;
    unknown_form["formCode"]["systemCode"] = "FA (9)";
    EXPECT_EQ(client().post("/sessions/online", unknown_form).exception_code(), 21405);
    short_vector["encryption"]["initializationVector"] = base64_encode(std::string(15, 'v'));
    EXPECT_EQ(client().post("/sessions/online", short_vector).exception_code(), 21405);
}

TEST_F(SessionsTest, ForeignAndUnknownSessionsAreNotFound) {
    open_as_seller();
    const std::string session = client().session;
    Client other = client_of(buyer_nip);
    EXPECT_EQ(other.get("/sessions/" + session).exception_code(), 21173);
    EXPECT_EQ(other.post("/sessions/online/" + session + "/close").exception_code(), 21173);
    EXPECT_EQ(client().get("/sessions/20260101-SO-0000000000-0000000000-00").exception_code(),
              21173);
    EXPECT_EQ(other.get("/sessions?sessionType=Online").json().at("sessions").size(), 0u);
}

/// Older clients close with the authentication token and a blank where the reference number
/// belongs.
TEST_F(SessionsTest, ClosingWithATokenInThePathIsRefusedAndLoggedAsSent) {
    client().sign_in(seller_nip);
    const std::string path = "/sessions/online/" + client().authentication_token + "%20/close";
    const Reply reply = client().post(path);
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(reply.exception_code(), 21405);
    EXPECT_EQ(state().at("requests").back().at("target"), "/v2" + path);
}

TEST_F(SessionsTest, ListsArePagedFilteredAndNewestFirst) {
    client().sign_in(seller_nip);
    std::vector<std::string> references;
    for (int i = 0; i < 23; ++i) {
        references.push_back(client().open_session());
        if (i < 3) close();
        sandbox().advance(1s);
    }
    std::vector<std::string> listed;
    std::string token;
    int pages = 0;
    do {
        client().headers["x-continuation-token"] = token;
        const Json page = client().get("/sessions?sessionType=Online&pageSize=10").json();
        for (const Json& session : page.at("sessions"))
            listed.push_back(session.at("referenceNumber"));
        token = page.value("continuationToken", "");
        ++pages;
    } while (!token.empty());
    client().headers.clear();
    EXPECT_EQ(pages, 3);
    EXPECT_EQ(listed, std::vector<std::string>(references.rbegin(), references.rend()));

    const auto count = [&](const std::string& query) {
        return client().get("/sessions?sessionType=" + query).json().at("sessions").size();
    };
    EXPECT_EQ(count("Online&pageSize=1000&statuses=Cancelled"), 3u);
    EXPECT_EQ(count("Online&pageSize=1000&statuses=Cancelled&statuses=InProgress"), 23u);
    EXPECT_EQ(count("Online&pageSize=1000&dateCreatedFrom=2026-11-21T08:15:50Z"), 3u);
    EXPECT_EQ(count("Batch"), 0u);
    for (const char* bad : {"Online&pageSize=9", "Online&pageSize=1001", "Online&statuses=Open",
                            "Online&pageSize=ten", "", "Online&dateClosedTo=soon"})
        EXPECT_EQ(client().get(std::string("/sessions?sessionType=") + bad).exception_code(), 21405)
            << bad;
    client().headers["x-continuation-token"] = "%%%";
    EXPECT_EQ(list_sessions().exception_code(), 21418);
}

/// As older clients continue: in the query, not encoded, the '+' of Base64 included.
TEST_F(SessionsTest, AContinuationTokenMayStandInTheQuery) {
    open_as_seller();
    for (int i = 0; i < 12; ++i) client().send("no invoice " + std::to_string(i));
    const std::string path = session_path() + "/invoices?pageSize=10";
    const std::string token = client().get(path).json().at("continuationToken");
    const Json second = client().get(path + "&x-continuation-token=" + token).json();
    EXPECT_EQ(second.at("invoices").size(), 2u);
    EXPECT_EQ(second.at("invoices")[0].at("ordinalNumber"), 11);
    EXPECT_FALSE(second.contains("continuationToken"));
}

/// Checks a confirmation with the published schema and an independent validator.
std::string schema_errors(const std::string& xml) {
    // From memory: the sandbox, in this same process, lets the library open no files but its own
    // schemas.
    std::ifstream file(contract_folder() + "/upo/upo-v4-3.xsd");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    xmlSchemaParserCtxt* parser = xmlSchemaNewMemParserCtxt(text.data(), int(text.size()));
    xmlSchema* schema = xmlSchemaParse(parser);
    xmlSchemaValidCtxt* validator = xmlSchemaNewValidCtxt(schema);
    const ParsedXml parsed = parse_xml(xml);
    const int result =
        parsed.document ? xmlSchemaValidateDoc(validator, parsed.document.get()) : -1;
    const std::string verdict = result == 0 ? "" : parsed.error + " invalid: " + xml;
    xmlSchemaFreeValidCtxt(validator);
    xmlSchemaFree(schema);
    xmlSchemaFreeParserCtxt(parser);
    return verdict;
}

TEST_F(SessionsTest, ConfirmationsAreValidAndAllWaysToThemGiveTheSame) {
    std::vector<std::string> confirmations;
    for (const std::string& token :
         {token_of(seller_nip), std::string("own|nip-5265877635|secret")}) {
        start();
        client().sign_in(seller_nip, token);
        client().open_session();
        const SampleInvoice yesterday{.number = "FV/2 &amp; &lt;3&gt;", .issue_date = "2026-11-20"};
        const std::string first = client().send(SampleInvoice().xml());
        client().send(yesterday.xml());
        client().send("no invoice");
        close();
        const std::string path = session_path();
        const Json invoice = client().get(path + "/invoices/" + first).json();
        const Reply by_link = client().download(invoice.at("upoDownloadUrl"));
        ASSERT_EQ(by_link.status, 200);
        EXPECT_EQ(by_link.header("x-ms-meta-hash"), sha256_base64(by_link.body));
        EXPECT_EQ(client().get(path + "/invoices/" + first + "/upo").body, by_link.body);
        const std::string number = invoice.at("ksefNumber");
        EXPECT_EQ(client().get(path + "/invoices/ksef/" + number + "/upo").body, by_link.body);

        const Json page = status().at("upo").at("pages").at(0);
        const Reply all = client().download(page.at("downloadUrl"));
        confirmations.insert(confirmations.end(), {by_link.body, all.body});
        const std::string upo = page.at("referenceNumber");
        EXPECT_EQ(client().get(path + "/upo/" + upo).body, all.body);
        const ParsedXml parsed = parse_xml(all.body);
        const auto documents = Element::root_of(parsed.document).children("Dokument");
        ASSERT_EQ(documents.size(), 2u);
        EXPECT_EQ(documents[0].text("TrybWysylki"), "Online");
        EXPECT_EQ(documents[1].text("TrybWysylki"), "Offline");
        EXPECT_EQ(documents[1].text("NumerFaktury"), "FV/2 & <3>");
        EXPECT_EQ(documents[0].text("SkrotDokumentu"), sha256_base64(SampleInvoice().xml()));
        EXPECT_EQ(documents[0].text("DataPrzeslaniaDokumentu"), "2026-11-21T09:15:30.123+01:00");
    }
    TAVRIX_NEEDS_CONTRACT();
    for (const std::string& confirmation : confirmations)
        EXPECT_EQ(schema_errors(confirmation), "");
}

TEST_F(SessionsTest, DownloadLinksExpireAndCannotBeForged) {
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    const Json invoice = client().get(session_path() + "/invoices/" + reference).json();
    const std::string url = invoice.at("upoDownloadUrl");
    EXPECT_EQ(client().download(url).status, 200);
    std::string later = url;
    later.replace(later.find("se=2026"), 7, "se=2027");
    EXPECT_EQ(client().download(later).status, 403);
    EXPECT_EQ(client().download(url.substr(0, url.find('?'))).status, 403);
    sandbox().advance(72h);
    EXPECT_EQ(client().download(url).status, 403);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
