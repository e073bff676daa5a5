#include "tests/cli/cli_fixture.h"
#include "tests/ports/loopback_server.h"
#include "tests/support/exim.h"
#include "tests/support/openssl_tool.h"

namespace tavrix::cli {
namespace {

TEST_F(Cli, SendsOverTlsOfAPrivateAuthorityAndTellsMachines) {
    test::Sandbox sandbox("--https --ca-file-out '" + folder_ + "ca.pem'");
    const std::string send = ready_to_send(sandbox);
    const Outcome distrusted = run(send);
    EXPECT_EQ(distrusted.exit_code, 1)
        << "a certificate of an unknown authority is refused: " << distrusted.output;
    EXPECT_NE(distrusted.output.find("auth/challenge:STATUS:0"), std::string::npos)
        << distrusted.output;

    ready_to_send(sandbox, R"(,"private_ca_file":")" + folder_ + "ca.pem\"");
    const Outcome sent = run(send);
    ASSERT_EQ(sent.exit_code, 0) << sent.output;
    const Json answer = Json::parse(sent.output);
    EXPECT_EQ(answer.at("result"), "");
    EXPECT_EQ(answer.at("upo_stored"), true);
    const Json& row = answer.at("row");
    EXPECT_EQ(row.at("status_ksef"), "200");
    EXPECT_EQ(row.size(), 8u) << "every column that the library writes";
    EXPECT_GT(row.at("upo_bytes"), 1000);
    EXPECT_EQ(run("hash '" + folder_ + "faktura.xml'").output.substr(0, 44), row.at("HashFaktury"));

    const Outcome again = run(send);
    EXPECT_EQ(again.exit_code, 0) << "a duplicate keeps number and UPO: " << again.output;
    EXPECT_EQ(Json::parse(again.output).at("row").at("numer_ksef"), row.at("numer_ksef"));
}

// The documents share a schema, and a document may name one of its own: none has a say in the next.
TEST_F(Cli, ValidatesDocumentsOneByOneAndRendersOne) {
    const std::string xs = "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'";
    write("f.xsd", xs + "><xs:element name='f' type='xs:int'/></xs:schema>");
    write("own.xsd", xs + " targetNamespace='urn:o'><xs:element name='o'/></xs:schema>");
    write("good.xml", "<f>1</f>");
    write("bad.xml", "<f>\n x</f>");
    write("own.xml",
          "<o xmlns='urn:o' xmlns:i='http://www.w3.org/2001/XMLSchema-instance' "
          "i:schemaLocation='urn:o own.xsd'/>");
    const std::string here = " " + folder_;
    const auto validate = [&](const std::vector<std::string>& names, const char* form = "") {
        std::string files;
        for (const std::string& name : names) files += here + name;
        return run("validate --schema" + here + "f.xsd" + form + files);
    };
    const Outcome all =
        validate({"good.xml", "bad.xml", "own.xml", "own.xml", "good.xml"}, " --json");
    EXPECT_EQ(all.exit_code, 1);
    std::string verdicts;
    for (const Json& answer : Json::parse(all.output)) {
        verdicts += answer.at("valid").get<bool>() ? "+" : "-";
    }
    EXPECT_EQ(verdicts, "+---+");
    EXPECT_EQ(validate({"good.xml"}).output, folder_ + "good.xml: poprawny\n");
    EXPECT_TRUE(validate({"bad.xml"}).output.starts_with(folder_ + "bad.xml:2:"));
    EXPECT_TRUE(Json::parse(validate({"bad.xml"}, " --json").output).is_object());
    EXPECT_EQ(validate({"good.xml", "none.xml"}).exit_code, 2);

    write("f.xsl",
          "<x:stylesheet version='1.0' xmlns:x='http://www.w3.org/1999/XSL/Transform'><x:param "
          "name='p'/><x:template match='/'><html>Zażółć <x:value-of select='$p'/></html>"
          "</x:template></x:stylesheet>");
    EXPECT_EQ(run("render" + here + "good.xml --xsl" + here + "f.xsl -o" + here +
                  "page.html --param 'p=<jaźń>'")
                  .exit_code,
              0);
    EXPECT_NE(content("page.html").find("Zażółć &lt;jaźń&gt;"), std::string::npos);
}

TEST_F(Cli, ExitCodesTellWhoseFaultItIs) {
    const std::string send = "send --nip 1 --xml /dev/null --table t --id 1 --db /no/such.db";
    const std::string with_token = send + " --token 'R|nip-1|s'";
    const std::pair<std::string, int> calls[] = {
        {"--help", 0},
        {"send", 2},
        {"hash /no/such/file", 2},
        {"nonsense", 2},
        {send, 2},
        {with_token, 1},
        {"mail parse '" + folder_ + "none.eml'", 2},
        {"mail fetch --host 127.0.0.1 --port 1 --user u --password-file /dev/null --folder ''", 2},
        {"mail send --server 127.0.0.1 --to c@d.pl", 2},
        {"mail send --server 127.0.0.1 --from a@b.pl --to c@d.pl --user jan", 2},
        {"mail send --server 127.0.0.1 --port 1 --from a@b.pl --to c@d.pl", 1},
        {"qr --text x --out - --color pink", 2},
        {"barcode --text 590123412345 --out - --color CYAN", 0},
        {"barcode --as-class --text 590123412345 --out - --size 5", 0},
        {"barcode --as-class --text 590123412345 --out - --size 20000000", 2},
        {"barcode --as-class --text 590123412345 --out - --size 214748365", 2},
        {"barcode --text 590123412345 --out x.png --module 9000 --dpi 4800", 2},
    };
    for (const auto& [arguments, exit_code] : calls) {
        EXPECT_EQ(run(arguments).exit_code, exit_code) << arguments;
    }
    write("Tavrix.json", "{\"ksef\":\n{\"tset\":\"x\"}}");
    const Outcome settings = run(with_token);
    EXPECT_EQ(settings.exit_code, 4) << settings.output;
    EXPECT_NE(settings.output.find("wiersz 2"), std::string::npos) << settings.output;
}

TEST_F(Cli, AMailIsShownWithoutSteeringTheTerminal) {
    write("a.eml", "Subject: \xC5\xBC\x1B]0;x\x07\n\na\x1B[2J\tb\r\nc\xC2\x9B\n");
    EXPECT_EQ(run("mail parse '" + folder_ + "a.eml'").output,
              "Temat: ż\uFFFD]0;x\uFFFD\n\na\uFFFD[2J\tb\nc\uFFFD\n");
}

TEST_F(Cli, FetchesMailWholeFromAServerThatDeletesNothing) {
    std::string said;
    const std::string message = "Message-ID: <1@a>\r\n\r\nTreść\r\n";
    {
        const test::LoopbackServer server([&](test::Peer& peer) {
            peer.write("+OK\r\n");
            for (std::string line; !(line = peer.read_until("\r\n")).empty();) {
                said += line;
                if (line.starts_with("CAPA")) return;
                peer.write(line.starts_with("STAT")   ? "+OK 1 9\r\n"
                           : line.starts_with("RETR") ? "+OK\r\n" + message + ".\r\n"
                           : line.starts_with("DELE") ? "+OK\r\n+OK\r\n"  // QUIT came with it
                                                      : "+OK\r\n");
            }
        });
        write("haslo.txt", "tajne \n");
        const std::string fetch = "mail fetch --host 127.0.0.1 --user u --delete --folder '" +
                                  folder_ + "in' --password-file '" + folder_ +
                                  "haslo.txt' --port " + std::to_string(server.port());
        EXPECT_EQ(run(fetch).exit_code, 1) << "no password in the clear";
        EXPECT_EQ(run(fetch + " --json --security none", ">/dev/full").exit_code, 1);
        const Outcome outcome = run(fetch + " --json --security none", "2>/dev/null");
        EXPECT_EQ(outcome.exit_code, 1);
        const Json answer = Json::parse(outcome.output);
        EXPECT_EQ(answer.at("failure"), "Serwer nie usuwa wiadomości.");
        ASSERT_EQ(answer.at("messages").size(), 1u);
        EXPECT_EQ(answer.at("messages")[0].at("MessageText"), "Treść\r\n");
        EXPECT_EQ(answer.at("messages")[0].at("Files"), Json::array({"1@a.eml"}));
    }
    EXPECT_EQ(content("in/1@a.eml"), message);
    EXPECT_TRUE(said.starts_with("CAPA\r\nUSER u\r\nPASS tajne \r\n")) << said;
    std::size_t times = 0;
    for (std::size_t at = 0; (at = said.find("DELE", at)) != std::string::npos; ++at) ++times;
    EXPECT_EQ(times, 3u) << "once where the answer cannot be written";
}

TEST_F(Cli, SendsAMessageAndTellsMachinesWhyNot) {
    if (!test::Exim::is_installed()) GTEST_SKIP() << "exim4-daemon-light is not installed";
    test::Exim exim;
    write("Tavrix.json", R"({"http":{"private_ca_file":")" + exim.certificate() + "\"}}");
    const std::string send =
        " mail send --json --server localhost --user jan --from jan@localhost "
        "--subject ż --text x --port ";
    const std::string tls = std::to_string(exim.tls_port()) + " --security tls";
    write("haslo.txt", "tajne\n");
    EXPECT_EQ(Json::parse(
                  run(send + tls + " --to ola@localhost --password-file '" + folder_ + "haslo.txt'")
                      .output),
              (Json{{"sent", true}}));
    exim.delivered_to("ola");
    setenv("TAVRIX_SMTP_PASS", "złe", 1);
    const Outcome refused = run(send + std::to_string(exim.port()) + " --to ola@localhost");
    unsetenv("TAVRIX_SMTP_PASS");
    EXPECT_EQ(refused.exit_code, 1);
    EXPECT_EQ(Json::parse(refused.output),
              (Json{{"sent", false},
                    {"error", "Serwer odrzucił logowanie: 535 Incorrect authentication data"}}));
}

TEST_F(Cli, TokenCheckSaysWhatIsWrongWithoutShowingTheSecret) {
    EXPECT_EQ(run("token check --token 'R|nip-5265877635|tajne' --nip 5265877635").exit_code, 0);
    for (const char* token : {"R|nip-1111111111|tajne", "tajne", "R|x|tajne"}) {
        const Outcome outcome =
            run(std::string("token check --nip 5265877635 --token '") + token + "'");
        EXPECT_EQ(outcome.exit_code, 1) << token;
        EXPECT_EQ(outcome.output.find("tajne"), std::string::npos) << outcome.output;
    }
}

// No settings, no network, no token.
TEST_F(Cli, CertificateLinksOfEveryKindOfKeyHoldForOpenssl) {
    test::run_in(scratch_, R"(
        openssl ecparam -name prime256v1 -genkey -out sec1
        openssl pkcs8 -topk8 -nocrypt -in sec1 -out pkcs8
        openssl pkcs8 -topk8 -in sec1 -passout pass:haslo -out locked8
        openssl ec -in sec1 -aes256 -passout pass:haslo -out locked1
        openssl genrsa -out rsa 2048)");
    setenv("TAVRIX_KEY_PASS", "haslo", 1);
    const std::string invoice = "--hash UtQp9Gpc51y+u3xApZjIjgkpZ01js+J8KflSPW8WzIE= ";
    const std::string call = "certlink --serial 01f20a5d352ae590 --nip 526-587-76-35 --env prod " +
                             invoice + "--key " + folder_;
    constexpr std::tuple<const char*, const char*, const char*, std::size_t> links[] = {
        {"sec1", "", "Nip/5265877635", 86},
        {"pkcs8", " --context 1111111111", "Nip/1111111111", 86},
        {"locked8", " --context-type PeppolId --context PPL000001", "PeppolId/PPL000001", 86},
        {"locked1", " --base64", "NIP/5265877635", 88},
        {"rsa", "", "Nip/5265877635", 342},
    };
    for (const auto& [key, options, context, size] : links) {
        Outcome made = run(call + key + options);
        const std::string beginning =
            std::string("https://qr.ksef.mf.gov.pl/certificate/") + context +
            "/5265877635/01F20A5D352AE590/UtQp9Gpc51y-u3xApZjIjgkpZ01js-J8KflSPW8WzIE/";
        EXPECT_EQ(made.output.substr(0, beginning.size()), beginning) << made.output;
        EXPECT_EQ(made.output.size(), beginning.size() + size + 1) << key;
        made.output.pop_back();
        EXPECT_NO_THROW(test::verify_link(scratch_, made.output, *key == 'r' ? "rsa" : "sec1"));
    }
    EXPECT_EQ(run("invoicelink --nip 1111111111 --date 2026-02-01 " + invoice).output,
              "https://qr-test.ksef.mf.gov.pl/invoice/1111111111/01-02-2026/"
              "UtQp9Gpc51y-u3xApZjIjgkpZ01js-J8KflSPW8WzIE\n");
}

// From a folder to a session that the service, which unpacks every part, has done.
TEST_F(Cli, PacksAndSendsAPackageInParts) {
    test::Sandbox sandbox;
    ready_to_send(sandbox);
    const std::string invoices = folder_ + "faktury/";
    std::filesystem::create_directory(invoices);
    const std::string invoice = test::demonstration_invoice_file();
    const std::size_t number = invoice.find("FV/2026/11/0147");
    for (const char* name : {"dok_fak-1001", "dok_fak-1002", "FV-2026"}) {
        std::string other = invoice;
        write("faktury/" + std::string(name) + ".xml", other.replace(number, 2, name));
    }
    const auto pack = [&](const std::string& name) {
        return run("pack '" + invoices + "' '" + folder_ + name + "'");
    };
    ASSERT_EQ(pack("a.zip").exit_code, 0);
    ASSERT_EQ(pack("b.zip").exit_code, 0);
    EXPECT_EQ(content("a.zip"), content("b.zip"));

    const Outcome sent = run("batch --json --part-bytes 1000 --token-file '" + folder_ +
                             "token.txt' '" + folder_ + "a.zip'");
    ASSERT_EQ(sent.exit_code, 0) << sent.output;
    const std::string session = Json::parse(sent.output).at("session");
    EXPECT_GT(sandbox.requests("storage/batch-parts").size(), 2u);
    EXPECT_FALSE(std::filesystem::exists(folder_ + "a.zip.upload-state"));
    EXPECT_EQ(sandbox.state().at("invoices").size(), 3u) << sandbox.state().at("sessions").dump();
    const std::string noted = content("Tavrix.sent-packages.jsonl");
    for (const char* document :
         {R"("table":"dok_fak","ddout_id":1002)", R"("table":"","ddout_id":0)"})
        EXPECT_NE(noted.find(document), std::string::npos) << noted;
    EXPECT_NE(noted.find(session), std::string::npos) << noted;
}

}  // namespace
}  // namespace tavrix::cli
