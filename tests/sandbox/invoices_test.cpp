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
        const Reply reply = client().get(session_path() + "/invoices/" + reference);
        return reply.json().value("ksefNumber", "");
    }
    Reply query(const Json& dates, const std::string& parameters = "",
                const Json& filters = Json::object()) {
        Json body = {{"subjectType", "Subject1"}, {"dateRange", dates}};
        body.update(filters);
        return client().post("/invoices/query/metadata?" + parameters, body);
    }
    /// How many a query finds; the refusal's code, negative, when it is refused.
    int count(const Reply& reply) {
        return reply.status == 200 ? int(reply.json().at("invoices").size())
                                   : -reply.exception_code();
    }
};

/// The sample with a part replaced.
std::string sample_with(const std::string& from, const std::string& to) {
    std::string xml = SampleInvoice().xml();
    return xml.replace(xml.find(from), from.size(), to);
}

/// The sample with another party.
std::string with_party(const std::string& name, const std::string& identifier,
                       const std::string& role) {
    SampleInvoice invoice;
    invoice.other_parties = "<" + name + "><DaneIdentyfikacyjne>" + identifier +
                            "</DaneIdentyfikacyjne>" + role + "</" + name + ">";
    return invoice.xml();
}

TEST_F(InvoicesTest, AnAcceptedInvoiceComesBackByteForByte) {
    open_as_seller();
    const std::string xml = SampleInvoice().xml();
    const std::string number = ksef_number_of(client().send(xml));
    ASSERT_TRUE(has_ksef_number_form(number)) << number;
    EXPECT_EQ(make_ksef_number(seller_nip, "20261121", number.substr(20, 12)), number);
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
    const std::tuple<const char*, Json, int> cases[] = {
        {"encryptedInvoiceSize", good["encryptedInvoiceSize"].get<int>() + 1, 21402},
        {"encryptedInvoiceHash", sha256_base64("other"), 21403},
        {"encryptedInvoiceContent", "not Base64!", 21405},
        {"invoiceSize", 0, 21405},
        {"invoiceSize", 3'000'001, 21405},
        {"offlineMode", "yes", 21405},
        {"hashOfCorrectedInvoice", sha256_base64("online cannot be corrected"), 21405},
    };
    for (const auto& [member, value, code] : cases) {
        Json body = good;
        body[member] = value;
        EXPECT_EQ(post_invoice(body).exception_code(), code) << member << " " << value;
    }
    EXPECT_EQ(state().at("invoices").size(), 0u);
}

TEST_F(InvoicesTest, WhatIsWrongWithTheDocumentShowsInItsStatus) {
    open_as_seller();
    const std::string good = SampleInvoice().xml(), second = SampleInvoice{.number = "FV/2"}.xml(),
                      nip = "<NIP>1111111111</NIP>", authorized = "PodmiotUpowazniony";
    const std::tuple<std::string, int, const char*> cases[] = {
        {"\xEF\xBB\xBF" + good, 430, "BOM"},
        {sample_with("Żuraw", "\xAFuraw"), 450, "UTF-8"},
        {sample_with("UTF-8", "ISO-8859-2"), 430, "ISO-8859-2"},
        {good.substr(0, good.size() - 5), 450, "kolumna"},
        {"<Potwierdzenie/>", 450, "Faktura"},
        {sample_with("FA (3)", "FA (2)"), 450, "FA (2)"},
        {SampleInvoice{.seller = buyer_nip}.xml(), 410, ""},
        {SampleInvoice{.issue_date = "2026-11-22"}.xml(), 450, "P_1"},
        {good + std::string(1'000'001 - good.size(), ' '), 430, "rozmiar"},
        {second + std::string(1'000'000 - second.size(), ' '), 200, ""},
        // What no answer could carry is rejected without schemas too.
        {SampleInvoice{.number = std::string(257, 'x')}.xml(), 450, "Fa/P_2"},
        {SampleInvoice{.number = std::string(255, 'x') + "ż"}.xml(), 200, ""},
        {SampleInvoice{.kind = "VAT_RR"}.xml(), 450, "Fa/RodzajFaktury"},
        {SampleInvoice{.seller_name = std::string(513, 'x')}.xml(), 450, "Podmiot1/"},
        {SampleInvoice{.issue_date = "2005-12-31"}.xml(), 450, "data wystawienia"},
        {sample_with(">PLN<", ">ZLOTY<"), 450, "Fa/KodWaluty"},
        {sample_with(">1950.53<", ">1e9<"), 450, "Fa/P_15"},
        {sample_with(">1500.00<", ">1500.000<"), 450, "Fa/P_13_1"},
        {sample_with(">345.00<", ">12345678901234567<"), 450, "Fa/P_14_1"},
        {SampleInvoice{.buyer = std::string(51, '1')}.xml(), 450, "Podmiot2/"},
        {with_party("Podmiot3", nip, "<Rola>12</Rola>"), 450, "Podmiot3/Rola"},
        {with_party("Podmiot3", nip, "<Rola>11</Rola>"), 200, ""},
        {with_party(authorized, "<BrakID>1</BrakID>", "<RolaPU>1</RolaPU>"), 450, "Upowazniony/"},
        {with_party(authorized, nip, "<RolaPU>4</RolaPU>"), 450, "Upowazniony/RolaPU"},
    };
    for (const auto& [xml, code, detail] : cases) {
        const Json status = status_of(xml);
        EXPECT_EQ(status.at("code"), code) << status << xml.substr(0, 400);
        EXPECT_NE(dump(status).find(detail), std::string::npos) << status << detail;
    }

    const std::string noise(31, '\x5A');
    const std::pair<Json, int> declared[] = {
        {{{"invoiceHash", sha256_base64("other")}}, 430},
        {{{"invoiceSize", good.size() - 1}}, 430},
        {{{"encryptedInvoiceContent", base64_encode(noise)},
          {"encryptedInvoiceSize", noise.size()},
          {"encryptedInvoiceHash", sha256_base64(noise)}},
         435},
    };
    for (const auto& [changes, code] : declared) {
        Json body = client().invoice_body(good);
        body.update(changes);
        const std::string reference = post_invoice(body).json().at("referenceNumber");
        EXPECT_EQ(client().invoice_status(reference).at("code"), code) << changes;
    }
}

TEST_F(InvoicesTest, ADuplicateNamesTheOriginal) {
    open_as_seller();
    const std::string number = ksef_number_of(client().send(SampleInvoice().xml()));
    client().open_session();
    const Json status = status_of(SampleInvoice{.line_name = "The number decides"}.xml());
    EXPECT_EQ(status.at("code"), 440);
    EXPECT_EQ(status.at("extensions").at("originalKsefNumber"), number);
    EXPECT_EQ(code_of(SampleInvoice{.kind = "KOR"}.xml()), 200)
        << "another kind may carry the same number";
}

TEST_F(InvoicesTest, SchemaErrorsAreNamedAndTheSampleItselfIsValid) {
    TAVRIX_NEEDS_CONTRACT();
    start([](Options& it) { it.schema_folder = TAVRIX_KSEF_CONTRACT_DIR "/xsd"; });
    open_as_seller();
    EXPECT_EQ(code_of(SampleInvoice().xml()), 200);
    // A document that names a schema of its own, a wrong kind in it.
    std::string own_schema = SampleInvoice{.kind = "VAX"}.xml();
    own_schema.insert(own_schema.find(" xmlns"),
                      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:schemaLocation="
                      "\"http://crd.gov.pl/wzor/2025/06/25/13775/ file:///tmp/anything.xsd\"");
    const Json status = status_of(own_schema);
    EXPECT_EQ(status.at("code"), 450);
    EXPECT_NE(dump(status.at("details")).find("RodzajFaktury"), std::string::npos) << status;
}

TEST_F(InvoicesTest, MetadataAreFoundByRoleAndPageUpToOneMarkForAllPages) {
    open_as_seller();
    const auto send = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            client().send(SampleInvoice{.number = "FV/" + std::to_string(i)}.xml());
        sandbox().advance(1s);
    };
    Json dates = {{"dateType", "PermanentStorage"}, {"from", "2026-11-20"}};
    Json limited = dates;
    limited["restrictToPermanentStorageHwmDate"] = true;
    const auto page = [&](const Json& range, const char* parameters) {
        const Json answer = query(range, parameters).json(), invoices = answer.at("invoices");
        return std::tuple(answer.value("permanentStorageHwmDate", ""), invoices.size(),
                          bool(answer.at("hasMore")), invoices[0].value("invoiceNumber", ""));
    };
    send(0, 1);
    send(1, 11);
    const char* mark = "2026-11-21T08:15:32.1234567+00:00";
    for (const Json& range : {dates, limited})
        EXPECT_EQ(page(range, "pageOffset=0"), std::tuple(mark, 10u, true, "FV/0"));
    send(11, 14);
    EXPECT_EQ(page(limited, "pageOffset=1"), std::tuple(mark, 1u, false, "FV/10"));
    EXPECT_EQ(page(limited, "pageOffset=1&sortOrder=Desc"), std::tuple(mark, 1u, false, "FV/0"));
    EXPECT_EQ(page(dates, "pageOffset=1"), std::tuple(mark, 4u, false, "FV/10"))
        << "without the limit later invoices are found";
    EXPECT_EQ(page(dates, "pageSize=250"),
              std::tuple("2026-11-21T08:15:33.1234567+00:00", 14u, false, "FV/0"))
        << "asked anew";
    EXPECT_EQ(count(query(dates, "pageSize=250&pageOffset=39")), 0);
    EXPECT_EQ(count(query(dates, "pageSize=250&pageOffset=40")), -21405);

    const Json as_buyer = {{"subjectType", "Subject2"}};
    EXPECT_EQ(count(query(dates, "", as_buyer)), 0);
    client() = client_of(buyer_nip);
    const Json found = query(dates, "pageSize=250", as_buyer).json().at("invoices");
    EXPECT_EQ(found.size(), 14u);
    EXPECT_EQ(found[0].at("netAmount"), 1600.5);
    EXPECT_EQ(found[0].at("vatAmount"), 350.03);
    EXPECT_EQ(found[0].at("grossAmount"), 1950.53);
    dates["to"] = "2026-11-21T00:00:00Z";
    EXPECT_EQ(query(dates).json().at("permanentStorageHwmDate"), "2026-11-21T00:00:00+00:00")
        << "never beyond the query";
}

TEST_F(InvoicesTest, AQuerySpansThreeMonthsAndWithoutAnOffsetIsPolishTime) {
    open_as_seller();
    client().send(SampleInvoice{.issue_date = "2026-11-20"}.xml());
    sandbox().advance(10min);
    // Received at 08:15:30.1234567 UTC, which is 09:15 in Poland; stored a tenth of a ms later.
    const std::tuple<const char*, const char*, const char*, int> cases[] = {
        {"Invoicing", "2026-11-21T08:15:30Z", "2026-11-21T08:15:31Z", 1},
        {"Invoicing", "2026-11-21T08:15:30", "2026-11-21T08:15:31", 0},
        {"Invoicing", "2026-11-21T10:15:30+02:00", "2026-11-21T10:15:31+02:00", 1},
        {"Invoicing", "2026-11-21", "2026-11-21", 0},
        {"PermanentStorage", "2026-11-21T08:15:30.1235567Z", "2026-11-21T08:15:30.1235567Z", 1},
        {"PermanentStorage", "2026-11-21T08:15:30.1235568Z", "2026-11-21T08:25:30Z", 0},
        {"Issue", "2026-11-20T00:00:00Z", "2026-11-20T23:59:59Z", 1},
        {"Issue", "2026-11-21", "2026-11-21", 0},
        // Three months, counted in UTC or in Polish time: summer time ends on 25 October.
        {"Issue", "2026-09-01T00:00:00Z", "2026-12-01T01:00:00Z", 1},
        {"Issue", "2026-09-01T00:00:00Z", "2026-12-01T01:00:01Z", -21405},
        {"Issue", "2026-08-31", "2026-11-30", 1},
        {"Issue", "2026-08-31", "2026-12-01", -21405},
        {"Issue", "2026-11-21", "2026-11-20", -21405},
    };
    for (const auto& [type, from, to, result] : cases)
        EXPECT_EQ(count(query({{"dateType", type}, {"from", from}, {"to", to}})), result)
            << type << " " << from << " " << to;
    EXPECT_EQ(count(query({{"dateType", "Issue"}, {"from", "2026-08-01"}})), -21405)
        << "until now is too long";
}

TEST_F(InvoicesTest, FiltersFindWhatTheyNameAndRefuseWhatNobodyKnows) {
    open_as_seller();
    const std::string number = ksef_number_of(client().send(SampleInvoice().xml()));
    const std::string other_number = "5265877635-20250626-010080DD2B5E-26";
    struct Case {
        const char* name;
        Json fits, fits_not, wrong;
    };
    const Case cases[] = {
        {"invoicingMode", "Online", "Offline", "online"},
        {"formType", "FA", "PEF", "FB"},
        {"currencyCodes", {"EUR", "PLN"}, {"EUR"}, {"LN "}},
        {"invoiceTypes", {"Vat"}, {"KorPef"}, {"VAT"}},
        {"sellerNip", seller_nip, buyer_nip, "0265877635"},
        {"ksefNumber", number, other_number, number + "0"},
        {"invoiceNumber", "FV/1/2026", std::string(256, 'x'), std::string(257, 'x')},
        {"invoiceNumber", nullptr, "", 5},
        {"isSelfInvoicing", false, true, "false"},
        {"amount",
         {{"type", "Brutto"}, {"to", 1950.53}},
         {{"type", "Vat"}, {"from", 1950}},
         {{"type", "Gross"}}},
        {"buyerIdentifier",
         {{"type", "Nip"}, {"value", buyer_nip}},
         {{"type", "None"}},
         {{"type", "Other"}, {"value", std::string(51, 'x')}}},
    };
    const Json dates = {{"dateType", "Issue"}, {"from", "2026-11-01"}};
    const auto found = [&](const char* name, const Json& value) {
        return count(query(dates, "", {{name, value}}));
    };
    for (const Case& it : cases) {
        EXPECT_EQ(found(it.name, it.fits), 1) << it.name << it.fits;
        EXPECT_EQ(found(it.name, it.fits_not), 0) << it.name << it.fits_not;
        EXPECT_EQ(found(it.name, it.wrong), -21405) << it.name << it.wrong;
    }
}

TEST_F(InvoicesTest, AnInvoiceIsStoredAfterItGotItsNumberAtEveryPrecision) {
    for (const int digits : {0, 3, 7}) {
        start([&](Options& it) { it.time.fraction_digits = digits; });
        open_as_seller();
        const std::string reference = client().send(SampleInvoice().xml());
        const Json invoice = client().get(session_path() + "/invoices/" + reference).json();
        EXPECT_LT(parse_instant(invoice.at("acquisitionDate").get<std::string>()),
                  parse_instant(invoice.at("permanentStorageDate").get<std::string>()))
            << invoice;
    }
}

}  // namespace
}  // namespace tavrix::sandbox::testing
