// The pages a person looks at.
#include "tests/sandbox/fixture.h"

namespace tavrix::sandbox::testing {
namespace {

using PageTest = SandboxTest;

TEST_F(PageTest, ShowsInvoicesAndRequestsWithTokensMasked) {
    open_as_seller();
    const std::string reference = client().send(SampleInvoice().xml());
    // Older clients close with a token and a blank where the reference number belongs.
    const std::string path = "/sessions/online/" + client().access_token + "%20/close";
    EXPECT_EQ(client().post(path).exception_code(), 21405);
    const std::string overview = control().get("/").body;
    EXPECT_NE(overview.find("FV/1/2026"), std::string::npos);
    EXPECT_NE(overview.find("/v2/sessions/online/{token}%20/close"), std::string::npos);
    EXPECT_EQ(overview.find(client().access_token), std::string::npos);
    const std::string page = control().get("/faktura/" + reference).body;
    for (const char* text :
         {"Zakład Usługowy Żuraw", "Nabywca S.A.", "Usługa serwisowa",
          "1\xC2\xA0"
          "950,53 PLN",
          "stawka obniżona druga (5%)", "&lt;Faktura xmlns=", "NumerKSeFDokumentu"})
        EXPECT_NE(page.find(text), std::string::npos) << text;
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
                                    "/sesja/" + client().session}) {
        const Reply page = control().get(path);
        EXPECT_EQ(page.status, 200) << path;
        EXPECT_EQ(page.body.find("<script"), std::string::npos) << path;
        EXPECT_EQ(page.body.find("<img"), std::string::npos) << path;
        EXPECT_EQ(page.header("Content-Security-Policy").substr(0, 18), "default-src 'none'")
            << path;
    }
}

}  // namespace
}  // namespace tavrix::sandbox::testing
