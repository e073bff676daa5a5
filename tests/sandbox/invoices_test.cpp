// One invoice: what is refused at once, what is rejected later, what is accepted and found again.
#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class InvoicesTest : public SandboxTest {
  protected:
    std::string ksef_number_of(const std::string& reference) {
        return client()
            .get(session_path() + "/invoices/" + reference)
            .json()
            .value("ksefNumber", "");
    }
    /// How many invoices a query finds, and which.
    Json query(Client& who, const std::string& subject, const std::string& parameters = "",
               Json filters = Json::object()) {
        filters["subjectType"] = subject;
        filters["dateRange"] = {{"dateType", "PermanentStorage"},
                                {"from", "2026-11-20T00:00:00.0+00:00"},
                                {"to", "2026-11-22T23:59:00.0+00:00"}};
        return who.post("/invoices/query/metadata?" + parameters, filters).json();
    }
    std::size_t count(Client& who, const std::string& subject, Json filters = Json::object()) {
        return query(who, subject, "pageSize=250", std::move(filters)).at("invoices").size();
    }
};

TEST_F(InvoicesTest, AnAcceptedInvoiceComesBackByteForByte) {
    open_as_seller();
    const std::string xml = SampleInvoice().xml();
    const std::string number = ksef_number_of(client().send(xml));
    EXPECT_TRUE(is_ksef_number(number)) << number;
    EXPECT_TRUE(number.starts_with("5265877635-20261121-"));
    const Reply fetched = client().get("/invoices/ksef/" + number);
    EXPECT_EQ(fetched.body, xml);
    EXPECT_EQ(fetched.header("x-ms-meta-hash"), sha256_base64(xml));

    Client buyer = client_of(buyer_nip), stranger = client_of("1111111111");
    EXPECT_EQ(buyer.get("/invoices/ksef/" + number).body, xml);
    EXPECT_EQ(stranger.get("/invoices/ksef/" + number).exception_code(), 21164);
}

TEST_F(InvoicesTest, WhatIsWrongWithTheRequestIsRefusedAtOnce) {
    open_as_seller();
    const Json good = client().invoice_body(SampleInvoice().xml());
    struct Case {
        const char* member;
        Json value;
        int code;
    };
    const Case cases[] = {
        {"encryptedInvoiceSize", good["encryptedInvoiceSize"].get<int>() + 1, 21402},
        {"encryptedInvoiceHash", sha256_base64("other"), 21403},
        {"encryptedInvoiceHash", "short", 21405},
        {"encryptedInvoiceContent", "not Base64!", 21405},
        {"encryptedInvoiceContent", "", 21405},
        {"invoiceHash", nullptr, 21405},
        {"invoiceSize", 0, 21405},
        {"invoiceSize", "12a", 21405},
        {"invoiceSize", 1.5, 21405},
        {"invoiceSize", 3'000'001, 21405},
        {"offlineMode", "yes", 21405},
        {"hashOfCorrectedInvoice", sha256_base64("online cannot be corrected"), 21405},
    };
    for (const Case& it : cases) {
        Json body = good;
        body[it.member] = it.value;
        EXPECT_EQ(post_invoice(body).exception_code(), it.code) << it.member << " " << it.value;
    }
    EXPECT_EQ(state().at("invoices").size(), 0u);
    EXPECT_EQ(post_invoice(client().invoice_body(SampleInvoice().xml(), true)).status, 202)
        << "sizes may be texts";
}

TEST_F(InvoicesTest, WhatIsWrongWithTheDocumentShowsInItsStatus) {
    open_as_seller();
    const std::string good = SampleInvoice().xml();
    const std::string second = SampleInvoice{.number = "FV/2"}.xml();
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string xml = good;
        return xml.replace(xml.find(from), from.size(), to);
    };
    struct Case {
        const char* what;
        std::string xml;
        int code;
    };
    const Case cases[] = {
        {"byte-order mark", "\xEF\xBB\xBF" + good, 430},
        {"not UTF-8", replaced("Żuraw", "\xAFuraw"), 450},
        {"other encoding", replaced("UTF-8", "ISO-8859-2"), 430},
        {"cut short", good.substr(0, good.size() - 5), 450},
        {"text after the end", good + "<x/>", 450},
        {"no invoice", "<Potwierdzenie/>", 450},
        {"other form", replaced("FA (3)", "FA (2)"), 450},
        {"somebody else's", SampleInvoice{.seller = buyer_nip}.xml(), 410},
        {"tomorrow's", SampleInvoice{.issue_date = "2026-11-22"}.xml(), 450},
        {"no such day", SampleInvoice{.issue_date = "2026-02-30"}.xml(), 450},
        {"no number", SampleInvoice{.number = ""}.xml(), 450},
        {"too long without attachment", good + std::string(1'000'001 - good.size(), ' '), 430},
        {"good", good, 200},
        {"longest without attachment", second + std::string(1'000'000 - second.size(), ' '), 200},
    };
    for (const Case& it : cases) EXPECT_EQ(code_of(it.xml), it.code) << it.what;
}

TEST_F(InvoicesTest, TheDeclaredHashSizeAndKeyMustFitTheDocument) {
    open_as_seller();
    const Json good = client().invoice_body(SampleInvoice().xml());
    Json wrong_hash = good, wrong_size = good, wrong_cipher = good;
    wrong_hash["invoiceHash"] = sha256_base64("other");
    wrong_size["invoiceSize"] = good["invoiceSize"].get<int>() - 1;
    const std::string noise(32, '\x5A');
    wrong_cipher["encryptedInvoiceContent"] = base64_encode(noise);
    wrong_cipher["encryptedInvoiceSize"] = 32;
    wrong_cipher["encryptedInvoiceHash"] = sha256_base64(noise);
    const auto code = [&](const Json& body) {
        const std::string reference = post_invoice(body).json().at("referenceNumber");
        return client().invoice_status(reference).at("code").get<int>();
    };
    EXPECT_EQ(code(wrong_hash), 430);
    EXPECT_EQ(code(wrong_size), 430);
    EXPECT_NE(code(wrong_cipher), 200);
    EXPECT_EQ(code(good), 200);
}

TEST_F(InvoicesTest, ADuplicateNamesTheOriginal) {
    open_as_seller();
    const std::string session = client().session;
    const std::string first = client().send(SampleInvoice().xml());
    const std::string number = ksef_number_of(first);
    client().open_session();
    const std::string same = SampleInvoice{.line_name = "The number decides"}.xml();
    const Json status = status_of(same);
    EXPECT_EQ(status.at("code"), 440);
    EXPECT_EQ(status.at("extensions").at("originalKsefNumber"), number);
    EXPECT_EQ(status.at("extensions").at("originalSessionReferenceNumber"), session);
    EXPECT_EQ(code_of(SampleInvoice{.kind = "KOR"}.xml()), 200)
        << "another kind may carry the same number";
}

TEST_F(InvoicesTest, ATechnicalCorrectionReplacesARejectedInvoiceOnce) {
    open_as_seller();
    const std::string broken = "<Faktura", good = SampleInvoice().xml();
    client().send(broken);
    Json correction = client().invoice_body(good);
    correction["offlineMode"] = true;
    correction["hashOfCorrectedInvoice"] = sha256_base64(broken);
    const std::string reference = post_invoice(correction).json().at("referenceNumber");
    EXPECT_EQ(client().invoice_status(reference).at("code"), 200);
    EXPECT_EQ(post_invoice(correction).exception_code(), 21166);
    correction["hashOfCorrectedInvoice"] = sha256_base64(good);
    EXPECT_EQ(post_invoice(correction).exception_code(), 21167);
    EXPECT_EQ(state().at("invoices")[1].at("hashOfCorrectedInvoice"), sha256_base64(broken));
    EXPECT_EQ(state().at("invoices")[1].at("invoicingMode"), "Offline");
}

TEST_F(InvoicesTest, ProcessingPassesThroughItsStages) {
    start([](Options& it) {
        it.invoice_accepted.polls = 2;
        it.invoice_processing.polls = 1;
    });
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    std::vector<int> codes;
    for (int i = 0; i < 5; ++i) codes.push_back(client().invoice_status(reference).at("code"));
    EXPECT_EQ(codes, (std::vector<int>{100, 100, 150, 200, 200}));

    start([](Options& it) {
        it.invoice_accepted.delay_ms = 100;
        it.invoice_processing.delay_ms = 200;
    });
    open_as_seller();
    const std::string timed = client().send(SampleInvoice().xml());
    EXPECT_EQ(client().invoice_status(timed).at("code"), 100);
    sandbox().advance(100ms);
    EXPECT_EQ(client().invoice_status(timed).at("code"), 150);
    sandbox().advance(199ms);
    EXPECT_EQ(client().invoice_status(timed).at("code"), 150);
    sandbox().advance(1ms);
    EXPECT_EQ(client().invoice_status(timed).at("code"), 200);
}

TEST_F(InvoicesTest, SchemaErrorsAreNamedAndTheSampleItselfIsValid) {
    TAVRIX_NEEDS_CONTRACT();
    start([](Options& it) { it.schema_folder = contract_folder() + "/xsd"; });
    open_as_seller();
    EXPECT_EQ(code_of(SampleInvoice().xml()), 200);
    const std::string invalid = SampleInvoice{.kind = "VAX"}.xml();
    std::string own_schema = invalid;
    own_schema.insert(own_schema.find(" xmlns"),
                      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:schemaLocation="
                      "\"http://crd.gov.pl/wzor/2025/06/25/13775/ file:///tmp/anything.xsd\"");
    for (const std::string& xml : {invalid, own_schema}) {
        const Json status = status_of(xml);
        EXPECT_EQ(status.at("code"), 450);
        EXPECT_NE(dump(status.at("details")).find("RodzajFaktury"), std::string::npos) << status;
    }
}

TEST_F(InvoicesTest, MetadataAreFoundByRoleDateAndPage) {
    open_as_seller();
    for (int i = 0; i < 12; ++i) {
        client().send(SampleInvoice{.number = "FV/" + std::to_string(i)}.xml());
        sandbox().advance(1s);
    }
    client().send(SampleInvoice{
        .number = "FV/shared",
        .other_parties = "<Podmiot3><DaneIdentyfikacyjne><NIP>1111111111</NIP>"
                         "<Nazwa>X</Nazwa></DaneIdentyfikacyjne><Rola>4</Rola></Podmiot3>"}
                      .xml());
    sandbox().advance(1s);
    Client buyer = client_of(buyer_nip), third = client_of("1111111111");
    EXPECT_EQ(count(client(), "Subject1"), 13u);
    EXPECT_EQ(count(client(), "Subject2"), 0u);
    EXPECT_EQ(count(buyer, "Subject2"), 13u);
    EXPECT_EQ(count(third, "Subject3"), 1u);
    EXPECT_EQ(count(client(), "Subject1", {{"invoiceNumber", "FV/7"}}), 1u);
    EXPECT_EQ(count(client(), "Subject1", {{"currencyCodes", {"EUR"}}}), 0u);

    const Json first = query(client(), "Subject1", "sortOrder=Desc&pageOffset=0&pageSize=10");
    const Json second = query(client(), "Subject1", "sortOrder=Desc&pageOffset=1&pageSize=10");
    EXPECT_EQ(first.at("hasMore"), true);
    EXPECT_EQ(second.at("hasMore"), false);
    EXPECT_EQ(first.at("invoices")[0].at("invoiceNumber"), "FV/shared");
    EXPECT_EQ(second.at("invoices").size(), 3u);
    EXPECT_EQ(second.at("invoices")[2].at("invoiceNumber"), "FV/0");
}

}  // namespace
}  // namespace tavrix::sandbox::testing
