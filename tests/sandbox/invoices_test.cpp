// One invoice: what is refused at once, what is rejected later, what is accepted and found again.
#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

class InvoicesTest : public SandboxTest {
  protected:
    Reply post_invoice(const Json& body) {
        return client().post("/sessions/online/" + client().session + "/invoices", body);
    }
    std::string ksef_number_of(const std::string& reference) {
        return client()
            .get("/sessions/" + client().session + "/invoices/" + reference)
            .json()
            .value("ksefNumber", "");
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

    Client buyer(sandbox().port()), stranger(sandbox().port());
    buyer.sign_in(buyer_nip);
    stranger.sign_in("1111111111");
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
    SampleInvoice foreign, tomorrow, bad_date, unnumbered;
    foreign.seller = buyer_nip;
    tomorrow.issue_date = "2026-11-22";
    bad_date.issue_date = "2026-02-30";
    unnumbered.number = "";
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
        {"somebody else's", foreign.xml(), 410},
        {"tomorrow's", tomorrow.xml(), 450},
        {"no such day", bad_date.xml(), 450},
        {"no number", unnumbered.xml(), 450},
        {"too long without attachment", good + std::string(1'000'001 - good.size(), ' '), 430},
        {"good", good, 200},
        {"longest without attachment",
         SampleInvoice{.number = "FV/2"}.xml() +
             std::string(1'000'000 - SampleInvoice{.number = "FV/2"}.xml().size(), ' '),
         200},
    };
    for (const Case& it : cases)
        EXPECT_EQ(client().invoice_status(client().send(it.xml)).at("code"), it.code) << it.what;
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
        return client()
            .invoice_status(post_invoice(body).json().at("referenceNumber"))
            .at("code")
            .get<int>();
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
    SampleInvoice same;
    same.line_name = "The number decides, not the contents";
    const Json status = client().invoice_status(client().send(same.xml()));
    EXPECT_EQ(status.at("code"), 440);
    EXPECT_EQ(status.at("extensions").at("originalKsefNumber"), number);
    EXPECT_EQ(status.at("extensions").at("originalSessionReferenceNumber"), session);
    SampleInvoice correction;
    correction.kind = "KOR";
    EXPECT_EQ(client().invoice_status(client().send(correction.xml())).at("code"), 200)
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
    Options options;
    options.invoice_accepted.polls = 2;
    options.invoice_processing.polls = 1;
    start(options);
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    std::vector<int> codes;
    for (int i = 0; i < 5; ++i) codes.push_back(client().invoice_status(reference).at("code"));
    EXPECT_EQ(codes, (std::vector<int>{100, 100, 150, 200, 200}));

    options = {};
    options.invoice_accepted.delay_ms = 100;
    options.invoice_processing.delay_ms = 200;
    start(options);
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
    Options options;
    options.schema_folder = contract_folder() + "/xsd";
    start(options);
    open_as_seller();
    EXPECT_EQ(client().invoice_status(client().send(SampleInvoice().xml())).at("code"), 200);
    SampleInvoice invalid;
    invalid.kind = "VAX";
    const Json status = client().invoice_status(client().send(invalid.xml()));
    EXPECT_EQ(status.at("code"), 450);
    EXPECT_NE(dump(status.at("details")).find("RodzajFaktury"), std::string::npos) << status;
}

TEST_F(InvoicesTest, MetadataAreFoundByRoleDateAndPage) {
    open_as_seller();
    for (int i = 0; i < 12; ++i) {
        client().send(SampleInvoice{.number = "FV/" + std::to_string(i)}.xml());
        sandbox().advance(1s);
    }
    SampleInvoice shared;
    shared.number = "FV/shared";
    shared.other_parties =
        "<Podmiot3><DaneIdentyfikacyjne><NIP>1111111111</NIP><Nazwa>X</Nazwa></DaneIdentyfikacyjne>"
        "<Rola>4</Rola></Podmiot3>";
    client().send(shared.xml());
    sandbox().advance(1s);
    const auto query = [&](Client& who, const std::string& subject, const std::string& parameters,
                           Json filters = Json::object()) {
        filters["subjectType"] = subject;
        filters["dateRange"] = {{"dateType", "PermanentStorage"},
                                {"from", "2026-11-20T00:00:00.0+00:00"},
                                {"to", "2026-11-22T23:59:00.0+00:00"}};
        return who.post("/invoices/query/metadata?" + parameters, filters).json();
    };
    Client buyer(sandbox().port()), third(sandbox().port());
    buyer.sign_in(buyer_nip);
    third.sign_in("1111111111");
    EXPECT_EQ(query(client(), "Subject1", "pageSize=250").at("invoices").size(), 13u);
    EXPECT_EQ(query(client(), "Subject2", "pageSize=250").at("invoices").size(), 0u);
    EXPECT_EQ(query(buyer, "Subject2", "pageSize=250").at("invoices").size(), 13u);
    EXPECT_EQ(query(third, "Subject3", "pageSize=250").at("invoices").size(), 1u);

    const Json first = query(client(), "Subject1", "sortOrder=Desc&pageOffset=0&pageSize=10");
    const Json second = query(client(), "Subject1", "sortOrder=Desc&pageOffset=1&pageSize=10");
    EXPECT_EQ(first.at("hasMore"), true);
    EXPECT_EQ(second.at("hasMore"), false);
    EXPECT_EQ(first.at("invoices")[0].at("invoiceNumber"), "FV/shared");
    EXPECT_EQ(second.at("invoices").size(), 3u);
    EXPECT_EQ(second.at("invoices")[2].at("invoiceNumber"), "FV/0");
    EXPECT_EQ(query(client(), "Subject1", "", {{"invoiceNumber", "FV/7"}}).at("invoices").size(),
              1u);
    EXPECT_EQ(query(client(), "Subject1", "", {{"currencyCodes", {"EUR"}}}).at("invoices").size(),
              0u);
}

}  // namespace
}  // namespace tavrix::sandbox::testing
