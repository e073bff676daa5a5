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
    Json query(Client& who, const char* subject, const std::string& parameters) {
        const Json dates = {{"dateType", "PermanentStorage"},
                            {"from", "2026-11-20T00:00:00.0+00:00"}};
        const Json body = {{"subjectType", subject}, {"dateRange", dates}};
        return who.post("/invoices/query/metadata?" + parameters, body).json();
    }
    Reply query_dates(const Json& dates, const std::string& parameters = "") {
        return client().post("/invoices/query/metadata?" + parameters,
                             {{"subjectType", "Subject1"}, {"dateRange", dates}});
    }
    int found(const char* type, const std::string& from, const std::string& to) {
        const Json reply = query_dates({{"dateType", type}, {"from", from}, {"to", to}}).json();
        return reply.contains("invoices") ? int(reply["invoices"].size()) : -1;
    }
};

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
        {"invoiceHash", nullptr, 21405},
        {"invoiceSize", 0, 21405},
        {"invoiceSize", "12a", 21405},
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
    const std::string good = SampleInvoice().xml();
    const std::string second = SampleInvoice{.number = "FV/2"}.xml();
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string xml = good;
        return xml.replace(xml.find(from), from.size(), to);
    };
    const std::tuple<const char*, std::string, int> cases[] = {
        {"byte-order mark", "\xEF\xBB\xBF" + good, 430},
        {"not UTF-8", replaced("Żuraw", "\xAFuraw"), 450},
        {"other encoding", replaced("UTF-8", "ISO-8859-2"), 430},
        {"cut short", good.substr(0, good.size() - 5), 450},
        {"no invoice", "<Potwierdzenie/>", 450},
        {"other form", replaced("FA (3)", "FA (2)"), 450},
        {"somebody else's", SampleInvoice{.seller = buyer_nip}.xml(), 410},
        {"tomorrow's", SampleInvoice{.issue_date = "2026-11-22"}.xml(), 450},
        {"too long without attachment", good + std::string(1'000'001 - good.size(), ' '), 430},
        {"good", good, 200},
        {"longest without attachment", second + std::string(1'000'000 - second.size(), ' '), 200},
    };
    for (const auto& [what, xml, code] : cases) EXPECT_EQ(code_of(xml), code) << what;
}

TEST_F(InvoicesTest, WhatNoAnswerCouldCarryIsRejectedWithoutSchemasToo) {
    open_as_seller();
    const auto replaced = [](const std::string& from, const std::string& to) {
        std::string xml = SampleInvoice().xml();
        return xml.replace(xml.find(from), from.size(), to);
    };
    const auto with_party = [](const std::string& party) {
        SampleInvoice invoice;
        invoice.other_parties = party;
        return invoice.xml();
    };
    const auto third = [&](const std::string& data, const std::string& role) {
        return with_party("<Podmiot3><DaneIdentyfikacyjne>" + data +
                          "</DaneIdentyfikacyjne><Rola>" + role + "</Rola></Podmiot3>");
    };
    const auto authorized = [&](const std::string& data, const std::string& role) {
        return with_party("<PodmiotUpowazniony><DaneIdentyfikacyjne>" + data +
                          "</DaneIdentyfikacyjne><RolaPU>" + role +
                          "</RolaPU></PodmiotUpowazniony>");
    };
    const std::string good_nip = "<NIP>1111111111</NIP>",
                      buyer = "<NIP>" + std::string(buyer_nip) + "</NIP>";
    const std::pair<std::string, const char*> cases[] = {
        {SampleInvoice{.number = std::string(257, 'x')}.xml(), "Fa/P_2"},
        {SampleInvoice{.kind = "VAX"}.xml(), "Fa/RodzajFaktury"},
        {SampleInvoice{.kind = "VAT_RR"}.xml(), "Fa/RodzajFaktury"},
        {SampleInvoice{.seller_name = std::string(513, 'x')}.xml(), "Podmiot1/"},
        {SampleInvoice{.issue_date = "2005-12-31"}.xml(), "data wystawienia"},
        {replaced(">PLN<", ">ZLOTY<"), "Fa/KodWaluty"},
        {replaced(">1950.53<", ">1e9<"), "Fa/P_15"},
        {replaced(">1500.00<", ">1500.000<"), "Fa/P_13_1"},
        {replaced(">345.00<", ">12345678901234567<"), "Fa/P_14_1"},
        {replaced(">345.00<", ">nan<"), "Fa/P_14_1"},
        {replaced(buyer, "<IDWew>5265877635-12345</IDWew>"), "Podmiot2/"},
        {replaced(buyer, "<NrID>" + std::string(51, '1') + "</NrID>"), "Podmiot2/"},
        {third(good_nip, "12"), "Podmiot3/Rola"},
        {third("<NrID>" + std::string(51, '1') + "</NrID>", "1"), "Podmiot3/"},
        {authorized("<BrakID>1</BrakID>", "1"), "PodmiotUpowazniony/"},
        {authorized(good_nip, "4"), "PodmiotUpowazniony/RolaPU"},
    };
    for (const auto& [xml, problem] : cases) {
        const Json status = status_of(xml);
        EXPECT_EQ(status.at("code"), 450) << problem;
        EXPECT_NE(dump(status).find(problem), std::string::npos) << status;
    }
    for (const std::string& longest :
         {SampleInvoice{.number = std::string(255, 'x') + "ż"}.xml(), third(good_nip, "11"),
          SampleInvoice{.number = "2", .seller_name = std::string(511, 'x') + "ż"}.xml()})
        EXPECT_EQ(code_of(longest), 200) << longest.substr(0, 400);
}

TEST_F(InvoicesTest, TheDeclaredHashSizeAndKeyMustFitTheDocument) {
    open_as_seller();
    const Json good = client().invoice_body(SampleInvoice().xml());
    const auto code_with = [&](const Json& changes) {
        Json body = good;
        body.update(changes);
        const std::string reference = post_invoice(body).json().at("referenceNumber");
        return client().invoice_status(reference).at("code").get<int>();
    };
    const std::string noise(32, '\x5A');
    EXPECT_EQ(code_with({{"invoiceHash", sha256_base64("other")}}), 430);
    EXPECT_EQ(code_with({{"invoiceSize", good["invoiceSize"].get<int>() - 1}}), 430);
    EXPECT_NE(code_with({{"encryptedInvoiceContent", base64_encode(noise)},
                         {"encryptedInvoiceSize", 32},
                         {"encryptedInvoiceHash", sha256_base64(noise)}}),
              200);
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
}

TEST_F(InvoicesTest, SchemaErrorsAreNamedAndTheSampleItselfIsValid) {
    TAVRIX_NEEDS_CONTRACT();
    start([](Options& it) { it.schema_folder = TAVRIX_KSEF_CONTRACT_DIR "/xsd"; });
    open_as_seller();
    EXPECT_EQ(code_of(SampleInvoice().xml()), 200);
    std::string own_schema = SampleInvoice{.kind = "VAX"}.xml();
    own_schema.insert(own_schema.find(" xmlns"),
                      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:schemaLocation="
                      "\"http://crd.gov.pl/wzor/2025/06/25/13775/ file:///tmp/anything.xsd\"");
    const Json status = status_of(own_schema);
    EXPECT_EQ(status.at("code"), 450);
    EXPECT_NE(dump(status.at("details")).find("RodzajFaktury"), std::string::npos) << status;
}

TEST_F(InvoicesTest, MetadataAreFoundByRoleAndPage) {
    open_as_seller();
    for (int i = 0; i <= 10; ++i) {
        client().send(SampleInvoice{.number = "FV/" + std::to_string(i)}.xml());
        sandbox().advance(1s);
    }
    Client buyer = client_of(buyer_nip);
    EXPECT_EQ(query(buyer, "Subject2", "pageSize=250").at("invoices").size(), 11u);
    EXPECT_EQ(query(client(), "Subject2", "pageSize=250").at("invoices").size(), 0u);

    const Json first = query(client(), "Subject1", "sortOrder=Desc&pageOffset=0&pageSize=10");
    const Json second = query(client(), "Subject1", "sortOrder=Desc&pageOffset=1&pageSize=10");
    EXPECT_EQ(first.at("hasMore"), true);
    EXPECT_EQ(second.at("hasMore"), false);
    EXPECT_EQ(first.at("invoices")[0].at("invoiceNumber"), "FV/10");
    ASSERT_EQ(second.at("invoices").size(), 1u);
    const Json oldest = second.at("invoices")[0];
    EXPECT_EQ(oldest.at("invoiceNumber"), "FV/0");
    EXPECT_EQ(oldest.at("netAmount"), 1600.5);
    EXPECT_EQ(oldest.at("vatAmount"), 350.03);
    EXPECT_EQ(oldest.at("grossAmount"), 1950.53);
}

TEST_F(InvoicesTest, AQuerySpansThreeMonthsAndWithoutAnOffsetIsPolishTime) {
    open_as_seller();
    client().send(SampleInvoice{.issue_date = "2026-11-20"}.xml());
    sandbox().advance(10min);
    // Received at 08:15:30.1234567 UTC, which is 09:15 in Poland; stored a tenth of a ms later.
    const std::tuple<const char*, const char*, const char*, int> cases[] = {
        {"Invoicing", "2026-11-21T08:15:30Z", "2026-11-21T08:15:31Z", 1},
        {"Invoicing", "2026-11-21T08:15:30", "2026-11-21T08:15:31", 0},
        {"Invoicing", "2026-11-21T09:15:30", "2026-11-21T09:15:31", 1},
        {"Invoicing", "2026-11-21T10:15:30+02:00", "2026-11-21T10:15:31+02:00", 1},
        {"Invoicing", "2026-11-21", "2026-11-21", 0},
        {"Invoicing", "2026-11-21", "2026-11-22", 1},
        {"PermanentStorage", "2026-11-21T08:15:30.1235567Z", "2026-11-21T08:15:30.1235567Z", 1},
        {"PermanentStorage", "2026-11-21T08:15:30.1235568Z", "2026-11-21T08:25:30Z", 0},
        {"Issue", "2026-11-20T00:00:00", "2026-11-20T00:00:00", 1},
        {"Issue", "2026-11-20T00:00:00Z", "2026-11-20T23:59:59Z", 1},
        {"Issue", "2026-11-21", "2026-11-21", 0},
        // Three months, counted in UTC or in Polish time: summer time ends on 25 October.
        {"Issue", "2026-09-01T00:00:00Z", "2026-12-01T00:00:00Z", 1},
        {"Issue", "2026-09-01T00:00:00Z", "2026-12-01T01:00:00Z", 1},
        {"Issue", "2026-09-01T00:00:00Z", "2026-12-01T01:00:01Z", -1},
        {"Issue", "2026-08-31", "2026-11-30", 1},
        {"Issue", "2026-08-31", "2026-12-01", -1},
        {"Issue", "2026-11-21", "2026-11-20", -1},
    };
    for (const auto& [type, from, to, count] : cases)
        EXPECT_EQ(found(type, from, to), count) << type << " " << from << " " << to;
    EXPECT_EQ(query_dates({{"dateType", "Issue"}, {"from", "2026-08-01"}}).exception_code(), 21405)
        << "until now is too long";
}

TEST_F(InvoicesTest, TheHighWaterMarkIsOneForAllPagesAndMayLimitThem) {
    open_as_seller();
    auto send = [&, next = 0](int count) mutable {
        while (count-- > 0)
            client().send(SampleInvoice{.number = "FV/" + std::to_string(++next)}.xml());
        sandbox().advance(1s);
    };
    const auto mark = [](const Json& answer) {
        return answer.value("permanentStorageHwmDate", std::string());
    };
    Json open_end = {{"dateType", "PermanentStorage"}, {"from", "2026-11-01T00:00:00Z"}};
    Json restricted = open_end;
    restricted["restrictToPermanentStorageHwmDate"] = true;
    send(15);
    const std::string first = mark(query_dates(open_end, "pageOffset=0").json());
    EXPECT_EQ(first, mark(query_dates(restricted, "pageOffset=0").json()));
    EXPECT_EQ(first, "2026-11-21T08:15:31.1234567+00:00");
    send(3);
    const Json rest = query_dates(open_end, "pageOffset=1").json(),
               limited = query_dates(restricted, "pageOffset=1&sortOrder=Desc").json();
    EXPECT_EQ(mark(rest), first);
    EXPECT_EQ(mark(limited), first);
    EXPECT_EQ(rest.at("invoices").size(), 8u) << "without the limit later invoices are found";
    EXPECT_EQ(limited.at("invoices").size(), 5u);
    EXPECT_EQ(mark(query_dates(open_end).json()), "2026-11-21T08:15:32.1234567+00:00")
        << "asked anew";

    open_end["to"] = "2026-11-21T00:00:00Z";
    EXPECT_EQ(mark(query_dates(open_end).json()), "2026-11-21T00:00:00+00:00")
        << "never beyond the query";
    open_end["dateType"] = "Invoicing";
    EXPECT_EQ(mark(query_dates(open_end).json()), "");
    restricted["from"] = "2026-11-21T08:15:33Z";
    restricted["to"] = "2026-12-01T00:00:00Z";
    EXPECT_EQ(query_dates(restricted).exception_code(), 21183);
    restricted["restrictToPermanentStorageHwmDate"] = false;
    EXPECT_EQ(query_dates(restricted).status, 200);
}

TEST_F(InvoicesTest, FiltersFindWhatTheyNameAndRefuseWhatNobodyKnows) {
    open_as_seller();
    const std::string number = ksef_number_of(client().send(SampleInvoice().xml()));
    sandbox().advance(1s);
    const auto found_with = [&](const char* name, const Json& value) {
        const Json dates = {{"dateType", "Issue"}, {"from", "2026-11-01"}};
        const Reply reply =
            client().post("/invoices/query/metadata",
                          {{"subjectType", "Subject1"}, {"dateRange", dates}, {name, value}});
        return reply.status == 200 ? int(reply.json().at("invoices").size())
                                   : -reply.exception_code();
    };
    const std::string other_number = "5265877635-20250626-010080DD2B5E-26";
    struct Case {
        const char* name;
        Json fits, fits_not, wrong;
    };
    const Case cases[] = {
        {"invoicingMode", "Online", "Offline", "online"},
        {"formType", "FA", "PEF", "FB"},
        {"currencyCodes", {"EUR", "PLN"}, {"EUR"}, {"PLN", "PLX"}},
        {"currencyCodes", Json::array(), {"XXX"}, {"LN "}},
        {"invoiceTypes", {"Vat"}, {"KorPef"}, {"VAT"}},
        {"sellerNip", seller_nip, buyer_nip, "0265877635"},
        {"ksefNumber", number, other_number, number + "0"},
        {"invoiceNumber", "FV/1/2026", "FV/1", std::string(257, 'x')},
        {"invoiceNumber", nullptr, "", 5},
        {"isSelfInvoicing", false, true, "false"},
        {"amount",
         {{"type", "Brutto"}, {"to", 1950.53}},
         {{"type", "Vat"}, {"from", 1950}},
         {{"type", "Gross"}}},
        {"amount",
         {{"type", "Netto"}, {"from", nullptr}},
         {{"type", "Netto"}, {"to", 0}},
         {{"type", "Netto"}, {"to", "0"}}},
        {"buyerIdentifier",
         {{"type", "Nip"}, {"value", buyer_nip}},
         {{"type", "Nip"}, {"value", seller_nip}},
         {{"type", "InternalId"}}},
        {"buyerIdentifier",
         nullptr,
         {{"type", "None"}},
         {{"type", "Other"}, {"value", std::string(51, 'x')}}},
    };
    for (const Case& it : cases) {
        EXPECT_EQ(found_with(it.name, it.fits), 1) << it.name << it.fits;
        EXPECT_EQ(found_with(it.name, it.fits_not), 0) << it.name << it.fits_not;
        EXPECT_EQ(found_with(it.name, it.wrong), -21405) << it.name << it.wrong;
    }
    EXPECT_EQ(found_with("invoiceNumber", std::string(256, 'x')), 0);
    const Json dates = {{"dateType", "Issue"}, {"from", "2026-11-01"}};
    EXPECT_EQ(query_dates(dates, "pageSize=250&pageOffset=39").status, 200);
    EXPECT_EQ(query_dates(dates, "pageSize=250&pageOffset=40").exception_code(), 21405);
}

TEST_F(InvoicesTest, AnInvoiceIsStoredAfterItGotItsNumberAtEveryPrecision) {
    for (int digits = 0; digits <= 7; ++digits) {
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
