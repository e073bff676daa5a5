// Sessions: what may be sent when, how they end, how they are listed.
#include "sandbox/basics/crypto.h"
#include "sandbox/documents/schemas.h"
#include "tests/sandbox/fixture.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class SessionsTest : public SandboxTest {
  protected:
    Json status() { return client().get(session_path()).json(); }
    int code() { return status().at("status").at("code"); }
};

TEST_F(SessionsTest, GoFromOpenOverClosedToProcessedAndCountOnlyWhatThereIs) {
    const auto counts = [](const Json& it) {
        return std::pair(it.value("successfulInvoiceCount", -1),
                         it.value("failedInvoiceCount", -1));
    };
    start([](Options& it) { it.session_closing.polls = 1; });
    open_as_seller();
    EXPECT_EQ(counts(status()), std::pair(-1, -1));
    EXPECT_EQ(counts(list_sessions().json().at("sessions")[0]), std::pair(0, 0));
    client().send(SampleInvoice().xml());
    EXPECT_EQ(counts(status()), std::pair(1, -1)) << "clients wait for it before they close";
    EXPECT_EQ(code(), 100);
    EXPECT_EQ(close().status, 204);
    EXPECT_EQ(close().exception_code(), 21180);
    EXPECT_EQ(code(), 170);
    EXPECT_EQ(code(), 200);
    EXPECT_EQ(client().send(SampleInvoice{.number = "late"}.xml()), "");

    start();
    open_as_seller();
    close();
    EXPECT_EQ(code(), 440) << "empty";
    client().open_session();
    client().send("no invoice");
    close();
    EXPECT_EQ(code(), 445);
    EXPECT_EQ(counts(status()), std::pair(-1, 1));
    EXPECT_FALSE(status().contains("upo"));
}

TEST_F(SessionsTest, AKeyThatCannotBeDecryptedShowsInTheStatusAndOtherFormsAreRefused) {
    open_as_seller();
    const Json body = client().open_body(std::string(31, 'k'));
    client().session = client().post("/sessions/online", body).json().at("referenceNumber");
    EXPECT_EQ(code(), 415);
    const Json changes[] = {
        {{"formCode", {{"systemCode", "FA (9)"}}}},
        {{"formCode", {{"systemCode", "PEF (3)"}, {"schemaVersion", "2-1"}, {"value", "PEF"}}}},
        {{"formCode",
          {{"systemCode", "FA_RR (1)"}, {"schemaVersion", "1-1E"}, {"value", "FA_RR"}}}},
        {{"encryption", {{"initializationVector", base64_encode(std::string(15, 'v'))}}}},
    };
    for (const Json& change : changes) {
        Json wrong = body;
        wrong.merge_patch(change);
        EXPECT_EQ(client().post("/sessions/online", wrong).exception_code(), 21405) << change;
    }
}

TEST_F(SessionsTest, ListsArePagedFilteredAndNewestFirst) {
    client().sign_in(seller_nip);
    for (const char* bad :
         {"", "Online&statuses=Open", "Online&pageSize=1001", "Online&dateCreatedFrom=2026-02-30",
          "Online&dateClosedTo=2026-02-30", "Online&referenceNumber=2026"})
        EXPECT_EQ(client().get(std::string("/sessions?sessionType=") + bad).exception_code(), 21405)
            << bad;
    std::vector<std::string> references, listed;
    for (int i = 0; i < 12; ++i) {
        references.push_back(client().open_session());
        if (i < 3) close();
        sandbox().advance(1s);
    }
    const auto list = [&](const std::string& query) {
        const Json page = client().get("/sessions?sessionType=" + query).json();
        listed.clear();
        for (const Json& session : page.at("sessions"))
            listed.push_back(session.at("referenceNumber"));
        return page.value("continuationToken", "");
    };
    const std::string token = list("Online&pageSize=10");
    EXPECT_EQ(listed, std::vector<std::string>(references.rbegin(), references.rend() - 2));
    client().headers["x-continuation-token"] = token;
    EXPECT_EQ(list("Online&pageSize=10"), "");
    EXPECT_EQ(listed, (std::vector<std::string>{references[1], references[0]}));
    client().headers.clear();

    const std::pair<std::string, std::size_t> counts[] = {
        // As older clients continue: in the query, not encoded, the '+' of Base64 included.
        {"Online&pageSize=10&x-continuation-token=" + token, 2},
        {"Online&pageSize=1000&statuses=Cancelled", 3},
        {"Online&pageSize=1000&statuses=Cancelled&statuses=InProgress", 12},
        {"Online&dateCreatedFrom=2026-11-21T08:15:40Z", 2},
    };
    for (const auto& [query, count] : counts) {
        list(query);
        EXPECT_EQ(listed.size(), count) << query;
    }
}

TEST_F(SessionsTest, AreSeenByTheirContextAndByWhoOpenedThemWhenItMayOnlyWrite) {
    open_as_seller();
    const auto token = [&](const char* permission) -> std::string {
        const Json body = {{"permissions", {permission}}, {"description", "Token"}};
        return client().post("/tokens", body).json().at("token");
    };
    const std::string writer = token("InvoiceWrite"), viewer = token("Introspection");
    const auto listed = [&] { return list_sessions().json().at("sessions"); };
    client().sign_in(seller_nip, writer);
    EXPECT_EQ(listed().size(), 0u);
    const std::string own = client().open_session();
    client().sign_in(seller_nip, writer);
    ASSERT_EQ(listed().size(), 1u) << "signed in again it is the same client";
    EXPECT_EQ(listed()[0].at("referenceNumber"), own);
    client().sign_in(seller_nip, viewer);
    EXPECT_EQ(listed().size(), 2u);
    client().sign_in(buyer_nip);
    EXPECT_EQ(listed().size(), 0u);
    EXPECT_EQ(client().get("/sessions/" + own).exception_code(), 21173) << "another's";
    EXPECT_EQ(close().exception_code(), 21173);
}

TEST_F(SessionsTest, ConfirmationsAreValidAndAllWaysToThemGiveTheSame) {
    std::vector<std::string> confirmations;
    for (const char* token : {"", "own|nip-5265877635|secret"}) {
        start();
        client().sign_in(seller_nip, token);
        client().open_session();
        const SampleInvoice yesterday{.number = "FV/2 &amp; &lt;3&gt;", .issue_date = "2026-11-20"};
        const std::string first = client().send(SampleInvoice().xml());
        client().send(yesterday.xml());
        client().send("no invoice");
        close();
        const std::string path = session_path() + "/invoices/";
        const Json invoice = client().get(path + first).json();
        const std::string number = invoice.at("ksefNumber");
        const std::string by_link = client().download(invoice.at("upoDownloadUrl")).body;
        EXPECT_EQ(client().get(path + first + "/upo").body, by_link);
        EXPECT_EQ(client().get(path + "ksef/" + number + "/upo").body, by_link);

        const Json page = status().at("upo").at("pages").at(0);
        const Reply all = client().download(page.at("downloadUrl"));
        EXPECT_EQ(all.header("x-ms-meta-hash"), sha256_base64(all.body));
        confirmations.insert(confirmations.end(), {by_link, all.body});
        const std::string upo = page.at("referenceNumber");
        EXPECT_EQ(client().get(session_path() + "/upo/" + upo).body, all.body);
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
    const test::ScratchFolder folder;
    std::filesystem::copy_file(TAVRIX_KSEF_CONTRACT_DIR "/upo/upo-v4-3.xsd",
                               folder.path() / "Schemat_UPO_v4-3.xsd");
    SchemaFolder schemas(folder.path());
    const auto errors = [&](const std::string& xml) {
        return Json(schemas.validate(parse_xml(xml).document, {"UPO", "4-3", ""}));
    };
    for (const std::string& xml : confirmations) EXPECT_EQ(errors(xml), Json::array()) << xml;
    EXPECT_NE(errors("<Potwierdzenie/>"), Json::array()) << "the schema can say no";
}

TEST_F(SessionsTest, ForgottenTheyCloseThemselvesAndLinksExpireAndCannotBeForged) {
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    const Json invoice = client().get(session_path() + "/invoices/" + reference).json();
    const std::string url = invoice.at("upoDownloadUrl");
    std::string later = url;
    later.replace(later.find("se=2026"), 7, "se=2027");
    EXPECT_EQ(client().download(later).status, 403);
    EXPECT_EQ(client().download(url.substr(0, url.find('?'))).status, 403);
    EXPECT_EQ(client().download(url).status, 200);
    sandbox().advance(12h);
    EXPECT_EQ(state().at("sessions")[0].at("status").at("code"), 200);
    sandbox().advance(60h);
    EXPECT_EQ(client().download(url).status, 403);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
