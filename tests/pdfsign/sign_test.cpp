// Documents of every kind, signed by the hosts' class and judged by programs that others wrote:
// pdfsig, qpdf, openssl; and by structure.py, which is stricter than they are.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "pdfsign/caption.h"
#include "pdfsign/cls_pdf_podpis.h"
#include "pdfsign/verify.h"
#include "ports/native/adapters.h"
#include "ports/portable/openssl_signing.h"
#include "tests/support/code_page.h"
#include "tests/support/failing.h"
#include "tests/support/fake_clock.h"
#include "tests/support/openssl_tool.h"

namespace tavrix::pdfsign {
namespace {

const base::Text polish_pin = u"zażółć";

class Signing : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        kept_ = std::make_unique<test::ScratchFolder>();
        test::run_in(*kept_, R"sh(
request() { openssl req -new "${@:2}" -nodes -keyout $1.key -out $1.csr -utf8 -subj '/CN=Zażółć Gęśla-Jaźń'; }
issue() { openssl x509 -req -in $1.csr -CA ${2:-ca}.pem -CAkey ${2:-ca}.key -CAcreateserial -out $1.pem "${@:3}"; }
pack() { openssl pkcs12 -export -inkey $1.key -in $1.pem -out $2.pfx "${@:3}"; }
openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj '/CN=Urząd'
openssl req -new -newkey rsa:2048 -nodes -keyout middle.key -out middle.csr -subj '/CN=Pośredni'
issue middle ca -extfile <(echo basicConstraints=critical,CA:TRUE)
request rsa -newkey rsa:2048; issue rsa middle -days 30
request ec -newkey ec -pkeyopt ec_paramgen_curve:P-256; issue ec
request p521 -newkey ec -pkeyopt ec_paramgen_curve:P-521; issue p521
request ed -newkey ed25519; issue ed
cp rsa.key old.key; cp rsa.csr old.csr; issue old ca -days -1
pack rsa rsa -certfile middle.pem -passout pass:zażółć
pack ec ec -passout pass:zażółć; pack p521 p521 -passout pass:; pack ed ed -passout pass:x
pack old old -passout pass:x
pack rsa legacy -legacy -certfile middle.pem -passout pass:zażółć
pack rsa nomac -nomac -certfile middle.pem -passout pass:zażółć
pack rsa ansi -certfile middle.pem -passout "pass:$(iconv -t cp1250 <<<zażółć)"
openssl pkcs12 -export -nokeys -in rsa.pem -out nokey.pfx -passout pass:x
# For pdfsig: its own store of certificates.
mkdir nss; certutil -N --empty-password -d sql:nss
pk12util -i legacy.pfx -W zażółć -d sql:nss -n author || pk12util -i ec.pfx -W zażółć -d sql:nss
)sh");
    }
    static void TearDownTestSuite() { kept_.reset(); }

    base::Text path(const std::string& name) { return (folder_.path() / name).u16string(); }
    std::string read(const std::string& name) {
        std::ifstream file(folder_.path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void write(const std::string& name, const std::string& content) {
        std::ofstream(folder_.path() / name, std::ios::binary) << content;
    }
    void run(const std::string& commands) {
        test::run_in(folder_, "keys='" + kept_->path().string() + "'\n" + commands);
    }
    std::size_t files() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_.path()), {}));
    }

    /// `in.pdf` with one page, its parts given, as qpdf writes it with `options`.
    void make(const std::string& catalog, const std::string& page, const std::string& objects,
              const std::string& options) {
        write("draft.pdf",
              "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R " + catalog +
                  " >> endobj\n2 0 obj << /Type /Pages /Kids [ 3 0 R ] /Count 1 "
                  "/MediaBox [ 0 0 400 300 ] >> endobj\n3 0 obj << /Type /Page /Parent "
                  "2 0 R /Contents 4 0 R " +
                  page +
                  " >> endobj\n4 0 obj << /Length 3 >> stream\nq Q\nendstream "
                  "endobj\n" +
                  objects + "\ntrailer << /Root 1 0 R /Size 9 >>\nstartxref\n9\n%%EOF\n");
        run("qpdf --warning-exit-0 --allow-weak-crypto " + options + " draft.pdf in.pdf");
    }
    bool sign(const std::string& in = "in.pdf", const std::string& out = "out.pdf",
              const std::string& pfx = "rsa", const base::Text& pin = polish_pin) {
        return ClsPdfPodpis(ports_).pdfpodpis(path(in), path(out),
                                              (kept_->path() / (pfx + ".pfx")).u16string(),
                                              base::SecretText(base::TextView(pin)));
    }
    std::vector<VerifiedSignature> verify(const std::string& name, std::string_view trusted) {
        return verify_pdf(*files_->open(path(name)), *signing_, trusted);
    }
    /// Throws unless every judge is content with `out.pdf`, signed `times` times.
    void expect_accepted(int times = 1) {
        run("pdfsig out.pdf > said; grep -c 'Signature is Valid' said | grep -qx " +
            std::to_string(times) +
            "\ngrep -q 'Total document signed' said; qpdf --check out.pdf; "
            "test $(grep 'Field Name' said | sort -u | wc -l) = " +
            std::to_string(times));
    }
    void expect_sound(const std::string& original = "in.pdf") {
        run("python3 " TAVRIX_PDF_STRUCTURE " " + original +
            " out.pdf .\nopenssl cms -verify -cades -binary -inform DER -in signature -content "
            "content "
            "-CAfile $keys/ca.pem -certfile $keys/middle.pem -purpose any -no_check_time -out nul");
    }

    inline static std::unique_ptr<test::ScratchFolder> kept_;
    test::ScratchFolder folder_;
    std::unique_ptr<ports::DataFiles> files_ = ports::make_native_files({});
    test::FakeClock clock_;
    std::unique_ptr<ports::CodePage> code_page_ = test::system_code_page();
    std::unique_ptr<ports::Signing> signing_ = ports::make_openssl_signing();
    PdfPorts ports_{*files_, clock_, *code_page_, *signing_};
};

struct Kind {
    const char* name;
    const char* options;
    const char* catalog = "";
    const char* page = "";
    const char* objects = "";
};

TEST_F(Signing, DocumentsOfEveryKind) {
    const char* const signature =
        "6 0 obj << /Type /Sig /Filter /F /Contents <00> /Reference [ << /TransformMethod /DocMDP "
        "/TransformParams << /P 2 >> >> ] >> endobj";
    const Kind kinds[] = {
        {"table", ""},
        {"oldest", "--force-version=1.3"},
        {"newest", "--force-version=2.0 --object-streams=generate"},
        {"linearized", "--linearize"},
        {"linearized with streams", "--linearize --object-streams=generate"},
        {"RC4, 40 bits", "--encrypt '' o 40 --"},
        {"RC4, 128 bits", "--encrypt '' o 128 --use-aes=n --"},
        {"AES, 128 bits", "--encrypt '' o 128 --use-aes=y --cleartext-metadata --"},
        {"AES, 256 bits, may not be changed", "--encrypt '' o 256 --modify=none --", "/Lang (pl)"},
        {"AES in streams", "--object-streams=generate --encrypt '' o 256 --", "/AcroForm 5 0 R", "",
         "5 0 obj << /Fields [ ] /DA (/Helv 0 Tf) >> endobj"},
        {"form with fields", "", "/AcroForm << /Fields 5 0 R /NeedAppearances true >>",
         "/Annots 7 0 R",
         "5 0 obj [ 6 0 R ] endobj 6 0 obj << /FT /Tx /T (Signature1) /Subtype /Widget /Type "
         "/Annot "
         "/Rect [ 10 250 200 290 ] /V (x) >> endobj 7 0 obj [ 6 0 R ] endobj"},
        {"certified, signing allowed", "", "/Perms << /DocMDP 6 0 R >>", "", signature},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.name);
        make(kind.catalog, kind.page, kind.objects, kind.options);
        ASSERT_TRUE(sign());
        EXPECT_NO_THROW(expect_accepted());
        EXPECT_NO_THROW(expect_sound());
        // A second signature leaves the first one whole, and is found below it.
        std::filesystem::rename(folder_.path() / "out.pdf", folder_.path() / "once.pdf");
        ASSERT_TRUE(sign("once.pdf", "out.pdf", "ec"));
        EXPECT_NO_THROW(expect_accepted(2));
        EXPECT_NO_THROW(expect_sound("once.pdf"));
    }
}

TEST_F(Signing, AHybridFileAndOneWithoutALineEnd) {
    make("", "", "", "");
    const std::string plain = read("in.pdf");
    const auto old_at = plain.substr(plain.rfind("startxref") + 10);
    char row[8] = "\1";
    row[3] = static_cast<char>(plain.size() >> 8);
    row[4] = static_cast<char>(plain.size());
    std::string hidden = plain + "8 0 obj 5 endobj\n";
    const std::size_t section = hidden.size();
    hidden += "9 0 obj << /Type /XRef /W [ 1 4 1 ] /Index [ 8 1 ] /Size 10 /Length 6 >> stream\n" +
              std::string(row, 6) + "\nendstream endobj\n";
    const std::size_t table = hidden.size();
    hidden += "xref\n0 0\ntrailer << /Size 10 /Root 1 0 R /XRefStm " + std::to_string(section) +
              " /Prev " + old_at.substr(0, old_at.find('\n')) + " >>\nstartxref\n" +
              std::to_string(table) + "\n%%EOF";
    write("in.pdf", hidden);
    ASSERT_TRUE(sign());
    EXPECT_NO_THROW(expect_accepted());
    EXPECT_NO_THROW(expect_sound());
}

TEST_F(Signing, KeysAndFilesOfKeys) {
    make("", "", "", "");
    const struct {
        const char* pfx;
        base::Text pin;
        bool signs = true;
    } keys[] = {
        {"ec", polish_pin},        {"p521", u""},          {"legacy", polish_pin},
        {"nomac", polish_pin},     {"ansi", polish_pin},   {"old", u"x"},
        {"rsa", u"zazolc", false}, {"nomac", u"x", false}, {"ed", u"x", false},
        {"nokey", u"x", false},    {"none", u"x", false},
    };
    for (const auto& key : keys) {
        SCOPED_TRACE(key.pfx);
        std::filesystem::remove(folder_.path() / "out.pdf");
        EXPECT_EQ(sign("in.pdf", "out.pdf", key.pfx, key.pin), key.signs);
        if (key.signs) {
            EXPECT_NO_THROW(expect_sound());
        }
        EXPECT_EQ(std::filesystem::exists(folder_.path() / "out.pdf"), key.signs);
    }
}

TEST_F(Signing, WhatCannotBeSignedLeavesNothing) {
    const char* const closed =
        "6 0 obj << /Type /Sig /Contents <00> /Reference [ << /TransformParams << /P 1 >> >> ] >> "
        "endobj";
    write("in.pdf", "");
    EXPECT_FALSE(sign()) << "empty";
    write("in.pdf", std::string(2000, 'x'));
    EXPECT_FALSE(sign()) << "no PDF";
    EXPECT_FALSE(sign("missing.pdf"));
    make("/Perms << /DocMDP 6 0 R >>", "", closed, "");
    EXPECT_FALSE(sign()) << "certified against any change";
    make("/NeedsRendering true", "", "", "");
    EXPECT_FALSE(sign()) << "no pages of its own";
    make("", "", "", "--encrypt user owner 256 --");
    EXPECT_FALSE(sign()) << "needs a password";
    for (const char* options : {"", "--linearize", "--object-streams=generate"}) {
        make("", "/Resources << /Font << /F << /Type /Font >> >> >>", "", options);
        const std::string whole = read("in.pdf");
        for (std::size_t tenth = 1; tenth < 10; ++tenth) {
            write("in.pdf", whole.substr(0, whole.size() * tenth / 10));
            EXPECT_FALSE(sign()) << options << " cut at " << tenth << " tenths";
        }
    }
    make("", "/Resources << /XObject << /X 5 0 R >> >>",
         "5 0 obj << /Subtype /Form /Resources << /Font << /F 8 0 R >> >> /Length 0 >> stream\n"
         "\nendstream endobj 6 0 obj [ << /Kids 6 0 R >> << /Kids 6 0 R >> ] endobj",
         "");
    EXPECT_FALSE(sign("draft.pdf")) << "its table is lost, and a font of a font's user";
    std::string draft = read("draft.pdf");
    write("in.pdf", draft.replace(draft.find("[ 3 0 R ]"), 9, "6 0 R"));
    EXPECT_FALSE(sign()) << "two ways to everywhere";
    make("", "", "", "");
    write("cut.pdf", read("in.pdf") + "8 0 obj 5 endobj\nxref\n0 0\ntrailer << /Si");
    EXPECT_FALSE(sign("cut.pdf")) << "the last change is cut";
    std::filesystem::remove(folder_.path() / "cut.pdf");
    EXPECT_FALSE(sign("in.pdf", "no/out.pdf")) << "no such folder";
    EXPECT_EQ(files(), 2u) << "draft.pdf and in.pdf";
}

TEST_F(Signing, DamagedDocumentsAreWrittenAnewUnlessSigned) {
    make("", "", "", "");
    const std::string whole = read("in.pdf");
    const std::string lost = whole.substr(0, whole.rfind("startxref")) + "startxref\n77\n%%EOF\n";
    for (const std::string& damaged : {lost, "junk\n" + whole, whole + "\n% 7 junk\n"}) {
        write("in.pdf", damaged);
        ASSERT_TRUE(sign());
        EXPECT_NO_THROW(expect_accepted());
        EXPECT_EQ(files(), 4u) << "draft, in, out, said";
    }
    const std::string once = read("out.pdf");
    write("in.pdf", "junk\n" + once);
    EXPECT_FALSE(sign());
    EXPECT_EQ(read("out.pdf"), once);
}

TEST_F(Signing, ASignatureOfAnotherProgramStaysValidAndChangesAreNoticed) {
    make("", "", "", "--object-streams=generate");
    run("pdfsig -nssdir sql:$keys/nss -add-signature -nick \"$(certutil -L -d sql:$keys/nss | grep "
        "-o "
        "'.*u,u,u' | sed 's/ *u,u,u//')\" in.pdf out.pdf");
    ASSERT_TRUE(sign("out.pdf", "out.pdf")) << "into the same file";
    EXPECT_NO_THROW(expect_accepted(2));
    std::ifstream authority(kept_->path() / "ca.pem");
    const std::string trusted{std::istreambuf_iterator<char>(authority), {}};
    const auto both = verify("out.pdf", trusted);
    ASSERT_EQ(both.size(), 2u);
    EXPECT_TRUE(both[0].findings.intact && both[1].findings.intact && both[1].findings.trusted);
    EXPECT_GT(both[0].added_bytes, 0u);
    EXPECT_EQ(both[1].added_bytes, 0u);
    EXPECT_EQ(both[1].findings.signer, u"Zażółć Gęśla-Jaźń");

    const std::string good = read("out.pdf");
    write("out.pdf", good + "\n");
    EXPECT_EQ(verify("out.pdf", "")[1].added_bytes, 1u);
    EXPECT_ANY_THROW(expect_accepted(2));
    std::string shorter = good;
    const std::size_t number = shorter.find(" ]", shorter.rfind("/ByteRange")) - 1;
    shorter[number] = shorter[number] == '9' ? '0' : '9';
    shorter[number - 1] = '0';
    write("out.pdf", shorter);
    EXPECT_NE(verify("out.pdf", "")[1].fault, u"") << "ends within a revision";
    std::string changed = good;
    changed[11] ^= 1;  // in the comment that makes the file binary
    write("out.pdf", changed);
    for (const auto& one : verify("out.pdf", "")) {
        EXPECT_FALSE(one.findings.intact);
    }
}

TEST_F(Signing, AFailureOfAnyStepLeavesWhatWasThere) {
    make("/AcroForm 5 0 R", "", "5 0 obj << /Fields [ ] >> endobj", "");
    write("out.pdf", "before");
    test::FailingAt failing;
    test::FailingFiles files(*files_, failing);
    const PdfPorts ports{files, clock_, *code_page_, *signing_};
    const int calls = test::fail_each_call(failing, test::out_of_space, [&](int call) {
        const bool done = ClsPdfPodpis(ports).pdfpodpis(
            path("in.pdf"), path("out.pdf"), (kept_->path() / "rsa.pfx").u16string(),
            base::SecretText(base::TextView(polish_pin)));
        EXPECT_EQ(done, !failing.struck()) << call;
        EXPECT_TRUE(done || read("out.pdf") == "before") << call;
        EXPECT_EQ(this->files(), 3u) << call;
    });
    EXPECT_GT(calls, 10);
}

TEST_F(Signing, StrangersWordsStayOnTheirLine) {
    const std::string signature = "/V << /Contents <00> /ByteRange [ 0 1 2 3 ] >>";
    make("/AcroForm << /Fields [ << /T (a\\012b: \\033[2J) " + signature + " >> ] >>", "", "", "");
    run("if " TAVRIX_PROGRAM
        " verify-pdf in.pdf > said; then exit 1; fi; "
        "test $(wc -l < said) = 1; if grep -q $'\\033' said; then exit 1; fi");
    std::string fields;
    for (int i = 0; i <= 1000; ++i) fields += "<< /T (a) /V 5 0 R >> ";
    make("/AcroForm << /Fields [ " + fields + "] >>", "",
         "5 0 obj" + signature.substr(2) + "endobj", "");
    EXPECT_ANY_THROW(verify("in.pdf", "")) << "who knows how many passes through the file";
    EXPECT_EQ(readable_name(base::Text(99, u'a') + u"\U0001F600"), base::Text(99, u'a'));
}

TEST_F(Signing, TheProgramSignsVerifiesAndLeavesNothingOnAFullDisk) {
    make("", "", "", "");
    const std::string program = TAVRIX_PROGRAM;
    run("printf 'zażółć\\r\\n' | " + program +
        " sign-pdf in.pdf out.pdf --pfx $keys/rsa.pfx --pades\ngrep -aq ETSI.CAdES.detached "
        "out.pdf");
    EXPECT_NO_THROW(expect_accepted());
    EXPECT_NO_THROW(expect_sound());
    run(program + " verify-pdf out.pdf --ca $keys/ca.pem | grep -q 'zaufany, obejmuje cały plik'");
    run("cp out.pdf more.pdf; echo >> more.pdf; if " + program +
        " verify-pdf more.pdf > said; then exit 1; fi; grep -q 'dopisano 1 bajtów, treść mogła "
        "się zmienić' said\nprintf x | " +
        program +
        " sign-pdf in.pdf out.pdf --pfx $keys/p521.pfx --pin ''\nprintf '\\xEF\\xBB\\xBFzażółć' > "
        "pin; " +
        program + " sign-pdf in.pdf out.pdf --pfx $keys/rsa.pfx --pin-file pin\nif " + program +
        " sign-pdf in.pdf out.pdf --pfx none.pfx --pin x 2> said; then exit 1; fi; grep -q "
        "'none.pfx: nie można' said");
    const std::size_t before = files();
    EXPECT_ANY_THROW(run("trap '' XFSZ; ulimit -f 8; " + program +
                         " sign-pdf in.pdf full.pdf --pfx $keys/rsa.pfx --pin zażółć"));
    EXPECT_EQ(files(), before);
}

TEST_F(Signing, WhoMayReadADocumentMayReadItSignedAndLinksStay) {
    make("", "", "", "");
    for (const auto mode : {0600, 0640, 0604}) {
        const auto rights = static_cast<std::filesystem::perms>(mode);
        std::filesystem::permissions(folder_.path() / "in.pdf", rights);
        std::filesystem::remove(folder_.path() / "out.pdf");
        for (const char* out : {"out.pdf", "in.pdf"}) {
            ASSERT_TRUE(sign("in.pdf", out));
            EXPECT_EQ(std::filesystem::status(folder_.path() / out).permissions(), rights) << out;
        }
    }
    std::filesystem::create_symlink("out.pdf", folder_.path() / "link.pdf");
    ASSERT_TRUE(sign("in.pdf", "link.pdf"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.path() / "link.pdf"));
    EXPECT_EQ(read("link.pdf"), read("out.pdf"));
    run("mkfifo pipe");
    EXPECT_FALSE(sign("in.pdf", "pipe"));
    run("test -p pipe");
}

// The picture's dark dots in the corner where the box belongs, and elsewhere.
TEST_F(Signing, TheBoxStandsUprightInTheShownCorner) {
    const struct {
        const char* page;
        int width;
        int dots = 72;  // poppler does not look at the unit
    } pages[] = {{"", 400},
                 {"/Rotate 90", 300},
                 {"/Rotate 180", 400},
                 {"/Rotate -90", 300},
                 {"/MediaBox [ 100 300 -300 0 ]", 400},
                 {"/CropBox [ -50 20 350 250 ]", 350},
                 {"/UserUnit 2 /MediaBox [ 7 7 207 157 ]", 400, 144}};
    std::string upright;
    for (const auto& page : pages) {
        SCOPED_TRACE(page.page);
        make("", page.page, "", "");
        ASSERT_TRUE(sign());
        const std::string draw =
            "pdftoppm -cropbox -gray -singlefile -r " + std::to_string(page.dots);
        run(draw + " out.pdf page; " + draw + " -x 0 -y 0 -W 280 -H 46 out.pdf corner");
        const auto dark = [this](const std::string& name) {
            const std::string picture = read(name + ".pgm");
            return std::ranges::count_if(
                picture.substr(15), [](char c) { return static_cast<unsigned char>(c) < 128; });
        };
        const auto in_corner = dark("corner");
        EXPECT_GT(in_corner, 400);
        EXPECT_EQ(dark("page"), in_corner) << "and nothing elsewhere";
        EXPECT_EQ(read("page.pgm").substr(3, 3), std::to_string(page.width));
        if (upright.empty()) upright = read("corner.pgm");
        EXPECT_TRUE(page.dots != 72 || read("corner.pgm") == upright);
    }
}

}  // namespace
}  // namespace tavrix::pdfsign
