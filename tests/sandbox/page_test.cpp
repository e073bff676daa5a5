// The pages a person looks at.
#include <sys/wait.h>

#include <regex>

#include "sandbox/pages/polish.h"
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

constexpr const char* schemas = TAVRIX_KSEF_CONTRACT_DIR "/xsd";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

class PageTest : public SandboxTest {
  protected:
    void start_with_schemas() {
        start([](Options& it) {
            if (std::filesystem::exists(schemas)) it.schema_folder = schemas;
        });
        open_as_seller();
    }
    std::string page(const std::string& path) { return control().get(path).body; }
    Reply submit(const std::string& origin, const std::string& form, const std::string& fields) {
        control().headers = {{"Origin", origin}};
        return control().post_text("/ustawienia/" + form, fields);
    }
    std::string own_origin() { return "http://127.0.0.1:" + std::to_string(sandbox().port()); }
};

void expect_texts(const std::string& page, std::initializer_list<const char*> texts) {
    for (const char* text : texts) EXPECT_NE(page.find(text), std::string::npos) << text;
}

TEST_F(PageTest, ShowsInvoicesAndRequestsWithTokensMasked) {
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    // Older clients close with a token and a blank where the reference number belongs.
    const std::string path = "/sessions/online/" + client().access_token + "%20/close";
    EXPECT_EQ(client().post(path).exception_code(), 21405);
    const std::string overview = page("/");
    expect_texts(overview, {"FV/1/2026", "/v2/sessions/online/{token}%20/close"});
    EXPECT_EQ(overview.find(client().access_token), std::string::npos);
    expect_texts(page("/faktura/" + reference),
                 {"Zakład Usługowy Żuraw", "Nabywca S.A.", "Usługa serwisowa", "21.11.2026",
                  "1\u00A0950,53\u00A0zł", "stawka obniżona druga (5%)",
                  "&lt;Faktura xmlns=", "NumerKSeFDokumentu"});
}

TEST_F(PageTest, RefusedAndWaitingInvoicesSayWhatTheyAre) {
    start_with_schemas();
    const std::string wrong = replaced(SampleInvoice().xml(), "<P_8B>15<", "<P_8B>tuzin<");
    client().send(wrong);
    client().send(SampleInvoice{.number = std::string(300, 'x')}.xml());
    const std::string overview = page("/");
    expect_texts(overview, {"FV/1/2026", "Nabywca S.A.", "450 Błąd weryfikacji"});
    if (std::filesystem::exists(schemas))
        expect_texts(overview, {"Element P_8B: wartość „tuzin” jest niepoprawna",
                                "za długa, długość 300; największa długość to 256"});
    client().send(replaced(wrong, "</Fa>", ""));
    expect_texts(page("/"), {"(nie do odczytania)", "<q lang=\"en\">"});

    control().post("/sandbox/pace", {{"invoice", {{"polls", 2}}}});
    const std::string waiting = client().send(SampleInvoice{.number = "FV/2"}.xml());
    expect_texts(page("/"), {"(w przetwarzaniu)", "zapytań bez wyniku: 2"});
    expect_texts(page("/faktura/" + waiting), {"jeszcze przetwarzana", "100 Faktura przyjęta"});
    EXPECT_EQ(client().invoice_status(waiting).at("code"), 100) << "looking does not count";
}

TEST_F(PageTest, NothingInADocumentBecomesMarkup) {
    open_as_seller();
    SampleInvoice attack;
    attack.number = "&lt;script&gt;alert(1)&lt;/script&gt;";
    attack.seller_name = "\"&gt;&lt;img src=x onerror=alert(1)&gt;";
    const std::string reference = client().send(attack.xml());
    client().send("<script>alert(2)</script>");
    client().headers["Authorization"] = "<script>";
    client().get("/sessions/<script>alert(3)</script>");
    const std::string wrong = state().at("invoices")[1].at("referenceNumber");
    for (const std::string& path : {std::string("/"), "/faktura/" + reference, "/faktura/" + wrong,
                                    "/sesja/" + client().session, std::string("/zadania"),
                                    "/zadanie/" + std::to_string(state()["requests"].size()),
                                    std::string("/szukaj?q=%22%3E%3Cscript%3Ealert(4)")}) {
        const Reply page = control().get(path);
        EXPECT_EQ(page.status, 200) << path;
        EXPECT_EQ(page.body.find("<script"), page.body.rfind("<script")) << path << ": its own one";
        EXPECT_EQ(page.body.find("<img"), std::string::npos) << path;
        const std::string hash = "'sha256-[A-Za-z0-9+/]{43}='";
        const std::regex policy("default-src 'none'; style-src " + hash + "; script-src " + hash +
                                "; connect-src 'self'; form-action 'self'; base-uri 'none'; "
                                "frame-ancestors 'none'");
        EXPECT_TRUE(std::regex_match(page.header("Content-Security-Policy"), policy)) << path;
    }
    for (const char* room : {"/faktura/", "/sandbox/invoices/"}) {
        const Reply file = control().get(room + wrong + "/xml");
        EXPECT_EQ(file.body, "<script>alert(2)</script>");
        EXPECT_TRUE(file.header("Content-Disposition").starts_with("attachment;")) << room;
        EXPECT_EQ(file.header("X-Content-Type-Options"), "nosniff") << room;
        EXPECT_EQ(file.header("Content-Security-Policy"), "default-src 'none'; sandbox") << room;
    }
}

TEST_F(PageTest, SearchFindsByWhatPeopleKnow) {
    open_as_seller();
    const std::string accepted = client().send(SampleInvoice{.number = "FV/ŻÓŁĆ/7"}.xml());
    client().send(replaced(SampleInvoice{.number = "FV/8"}.xml(), "<P_1>", "<P_1>x"));
    const Json invoices = state().at("invoices");
    const std::string ksef_number = invoices[0].at("ksefNumber"),
                      refused = invoices[1].at("referenceNumber");
    const struct {
        std::string query;
        bool finds_accepted, finds_refused;
    } cases[] = {
        {"q=fv%2Fzolc", true, false},        {"q=%C5%BB%C3%93%C5%81%C4%86+nabywca", true, false},
        {"q=nabywca+s.a.", true, true},      {"q=" + ksef_number, true, false},
        {"q=526-587-76-35", true, true},     {"q=450", false, true},
        {"q=nabywca&stan=bad", false, true}, {"stan=ok", true, false},
        {"q=nabywca+zolw", false, false},    {"q=%D0%96", false, false},
    };
    for (const auto& [query, finds_accepted, finds_refused] : cases)
        for (const char* address : {"/szukaj?", "/faktury?"}) {
            const std::string found = page(address + query);
            EXPECT_EQ(found.find("/faktura/" + accepted) != found.npos, finds_accepted) << query;
            EXPECT_EQ(found.find("/faktura/" + refused) != found.npos, finds_refused) << query;
        }
    for (int i = 0; i < 51; ++i) client().get("/nieznane/" + std::to_string(i));
    expect_texts(page("/zadania?q=NIEZNANE&stan=bad"),
                 {"Żądania (51)", "/zadania?q=NIEZNANE&amp;stan=bad&amp;strona=2"});
}

TEST_F(PageTest, TellsWhichRequestsMadeARecordAndWhatTheySaid) {
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    for (int i = 0; i < 20; ++i) client().invoice_status(reference);
    client().bearer = client().access_token;
    const std::string token =
        client()
            .post("/tokens", {{"permissions", {"InvoiceRead"}}, {"description", "Do odczytu"}})
            .json()
            .at("token");
    // Where no token belongs, and yet one may be.
    client().headers["X-Other"] = client().access_token;
    client().get("/tokens?pageToken=" + client().access_token);
    client().headers.erase("X-Other");
    std::string opening, sending, pages = page("/zadania");
    const Json requests = state().at("requests");
    for (const Json& entry : requests) {
        const std::string address = "/zadanie/" + std::to_string(entry.at("number").get<int>());
        if (entry.at("step") == "sessions/online") opening = address;
        if (entry.at("step") == "sessions/online/invoices") sending = address;
        pages += page(address);
    }
    // The oldest of many.
    expect_texts(page("/faktura/" + reference), {(sending + "\"").c_str()});
    expect_texts(page("/sesja/" + client().session), {(opening + "\"").c_str()});
    expect_texts(page(sending), {"encryptedInvoiceContent", "access (rodzaj tokena",
                                 ("/faktura/" + reference).c_str()});
    for (const std::string& secret : {client().access_token, client().refresh_token, token})
        EXPECT_EQ(pages.find(secret), std::string::npos);
    // What the pages hide is not found by guessing at it either.
    EXPECT_EQ(page("/zadania?q=pageToken%3D" + client().access_token).find("\"/zadanie/"),
              std::string::npos);
    EXPECT_NE(page("/zadania?q=pageToken").find("\"/zadanie/"), std::string::npos);
    EXPECT_EQ(control().get("/zadanie/9999").status, 404);
}

TEST_F(PageTest, AnEmptySandboxSaysHowToBegin) {
    expect_texts(page("/"), {"Jak zacząć", own_origin().c_str(), "|nip-5265877635|"});
    EXPECT_EQ(submit("https://example.com", "przyklad", "").status, 403);
    EXPECT_EQ(submit(own_origin(), "przyklad", "").header("Location"), "/");
    expect_texts(page("/faktury"), {"Faktury (3)"});
    EXPECT_EQ(page("/").find("|nip-5265877635|"), std::string::npos);
}

TEST_F(PageTest, LongListsComeInParts) {
    open_as_seller();
    for (int i = 0; i < 51; ++i)
        client().send(SampleInvoice{.number = "FV/" + std::to_string(i) + "/x"}.xml());
    const std::string first = page("/faktury"), second = page("/faktury?strona=2");
    expect_texts(first, {"FV/50/x", "FV/1/x", "Strona 1 z 2", "?strona=2"});
    EXPECT_EQ(first.find("FV/0/x"), std::string::npos);
    expect_texts(second, {"FV/0/x", "?strona=1"});
    EXPECT_EQ(second.find("FV/1/x"), std::string::npos);
    EXPECT_EQ(page("/faktury?strona=99"), second);
}

TEST_F(PageTest, OnlyItsOwnFormsSteer) {
    const std::string fault = "opis=step%3Dauth%2Fchallenge+kind%3Dempty";
    for (const char* origin : {"https://example.com", "null", ""})
        EXPECT_EQ(submit(origin, "usterki", fault).status, 403) << origin;
    EXPECT_EQ(submit(own_origin(), "usterki", "opis=step%3Dno%2Fstep+kind%3Dempty").status, 400);
    EXPECT_EQ(submit(own_origin(), "tempo", "zamykanie-ms=-1").status, 400);
    EXPECT_EQ(page("/sandbox/faults"), "[]");
    EXPECT_EQ(submit(own_origin(), "usterki", fault).status, 303);
    EXPECT_EQ(client().post("/auth/challenge").body, "");
}

TEST(PolishForms, OfNumbersDatesAndAccounts) {
    const struct {
        std::string written, expected;
    } cases[] = {
        {amount_text("999"), "999,00"},
        {amount_text("-1000.5"), "-1\u00A0000,50"},
        {amount_text("0.12345678"), "0,12345678"},
        {amount_text("1e5"), "1e5"},
        {money_text("1234567.50", "PLN"), "1\u00A0234\u00A0567,50\u00A0zł"},
        {money_text("5", "EUR"), "5,00\u00A0EUR"},
        {quantity_text("1500.250"), "1\u00A0500,25"},
        {quantity_text("10.000"), "10"},
        {date_text("2026-11-22"), "22.11.2026"},
        {date_text("2026-1<-22"), "2026-1<-22"},
        {account_text("61109010140000071219812874"),
         "61\u00A01090\u00A01014\u00A00000\u00A00712\u00A01981\u00A02874"},
        {account_text("PL61 1090 1014 0000 0712 1981 2874"),
         "PL61\u00A01090\u00A01014\u00A00000\u00A00712\u00A01981\u00A02874"},
        {account_text("konto <b>"), "konto <b>"},
    };
    for (const auto& [written, expected] : cases) EXPECT_EQ(written, expected);
}

// With TAVRIX_PICTURES=FOLDER it also takes the pictures of docs/sandbox.md.
TEST_F(PageTest, FitsALargeAndASmallScreen) {
    if (std::system("command -v chromium >/dev/null") != 0) GTEST_SKIP() << "there is no chromium";
    start_with_schemas();
    std::ifstream file(TAVRIX_SOURCE_FOLDER "/demo/faktura.xml");
    const std::string demo(std::istreambuf_iterator<char>(file), {});
    const std::string attachment =
        "<Zalacznik><BlokDanych><ZNaglowek>Protokół odbioru</ZNaglowek><MetaDane><ZKlucz>Lokal"
        "</ZKlucz><ZWartosc>17/3</ZWartosc></MetaDane></BlokDanych></Zalacznik></Faktura>";
    client().send(SampleInvoice{.number = std::string(256, 'W')}.xml());
    const std::string reference = client().send(replaced(demo, "</Faktura>", attachment));
    client().send(SampleInvoice().xml());
    client().send(SampleInvoice().xml());
    client().send(
        replaced(SampleInvoice{.number = "FV/2/2026"}.xml(), "<P_8B>15<", "<P_8B>tuzin<"));
    close();
    client().open_session();
    control().post("/sandbox/pace", {{"invoice", {{"polls", 2}}}});
    control().post("/sandbox/faults", {{"step", "sessions/status"}, {"kind", "html"}});
    client().send(SampleInvoice{.number = "FV/3/2026"}.xml());
    client().get(session_path());

    const char* pictures = std::getenv("TAVRIX_PICTURES");
    const std::string command =
        "python3 " TAVRIX_SOURCE_FOLDER "/tools/look_at_pages.py " + own_origin() +
        " overview=/ invoice=/faktura/" + reference + " session=" + "/sesja/" + client().session +
        " search='/szukaj?q=zuraw' request=/zadanie/7 settings=/ustawienia" +
        " start=/start --live / --live /zadania --submit /ustawienia opis "
        "'step=auth/challenge kind=drop' --dark overview" +
        (pictures == nullptr ? "" : std::string(" --pictures ") + pictures);
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 0);
    EXPECT_EQ(client().post("/auth/challenge").status, 0) << "the form set a fault";
}

}  // namespace
}  // namespace tavrix::sandbox::testing
