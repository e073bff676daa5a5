#include <gtest/gtest.h>

#include <fstream>

#include "base/error.h"
#include "ksef/invoice_documents.h"
#include "ports/native/adapters.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {
namespace {

using ports::SchemaNamespace;

class InvoiceDocumentsTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return folder.path() / name; }
    base::Text file(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return base::from_utf8(path(name));
    }
    std::string content(const std::string& name) const {
        std::ifstream stream(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    std::string check(const std::string& xml, const base::Text& schema,
                      SchemaNamespace schema_namespace = SchemaNamespace::empty) {
        return base::to_utf8(
            check_invoice(*documents, base::from_utf8(xml), schema, schema_namespace, {}));
    }
    std::string to_html(const base::Text& xml, const std::string& sheet) {
        return base::to_utf8(write_html(*documents, *code_page, *files, xml, base::from_utf8(sheet),
                                        base::from_utf8(path("out.html"))));
    }

    test::ScratchFolder folder;
    std::unique_ptr<ports::XmlDocuments> documents = ports::make_native_xml_documents();
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();
    std::unique_ptr<ports::DataFiles> files = ports::make_native_files({});
    std::unique_ptr<ports::TextFiles> text_files = ports::make_native_text_files({});
};

std::string schema(const std::string& attributes, const std::string& inside) {
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + attributes + ">" + inside +
           "</xs:schema>";
}

const std::string rows =
    "<xs:element name='f'><xs:complexType><xs:sequence><xs:element name='ile' type='xs:int' "
    "maxOccurs='9'/></xs:sequence></xs:complexType></xs:element>";

std::string sheet(const std::string& inside) {
    return "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>" +
           inside + "</xsl:stylesheet>";
}

TEST_F(InvoiceDocumentsTest, TheFirstErrorIsToldWithItsPlace) {
    const base::Text plain = file("plain.xsd", schema("", rows));
    EXPECT_EQ(check("<f><ile>1</ile></f>", plain), "");
    EXPECT_EQ(check("<?xml version='1.0' encoding='windows-1250'?><f><ile>1</ile></f>", plain), "");
    const std::string invalid = check("<f>\n<ile>1</ile>\n<ile>a</ile><ile>", plain);
    EXPECT_TRUE(invalid.starts_with("Błąd walidacji: ") &&
                invalid.ends_with("\r\nLinia: 3, Kolumna: 13"))
        << invalid;
    EXPECT_NE(check("<f><ile>1</ile>", plain).find("Linia: 1, Kolumna: "), std::string::npos);
    EXPECT_NE(check("", plain).find("Linia: "), std::string::npos);
    EXPECT_NE(check("<!DOCTYPE f []><f><ile>1</ile></f>", plain).find("DTD is prohibited."),
              std::string::npos);
}

TEST_F(InvoiceDocumentsTest, ASchemaOfANamespaceCountsWhereItIsPutUnderIts) {
    file("typy.xsd", schema("targetNamespace='urn:t'",
                            "<xs:simpleType name='krotki'><xs:restriction base='xs:string'>"
                            "<xs:maxLength value='3'/></xs:restriction></xs:simpleType>"));
    const base::Text invoice =
        file("fa.xsd", schema("targetNamespace='urn:f' xmlns:t='urn:t'",
                              "<xs:import namespace='urn:t' "
                              "schemaLocation='http://nigdzie.example/schematy/typy.xsd'/>"
                              "<xs:element name='f' type='t:krotki'/>"));
    const std::string wrong = "<f xmlns='urn:f'>abcd</f>";
    EXPECT_EQ(check(wrong, invoice), "");
    EXPECT_EQ(check("<f xmlns='urn:f'>abc</f>", invoice, SchemaNamespace::its_own), "");
    EXPECT_TRUE(check(wrong, invoice, SchemaNamespace::its_own).starts_with("Błąd walidacji: "));
    for (const base::Text& unusable :
         {base::from_utf8(path("brak.xsd")), file("zly.xsd", "<xs:schema"),
          file("encje.xsd", "<!DOCTYPE x [<!ENTITY e SYSTEM 'typy.xsd'>]>" + schema("", rows)),
          file("szeroki.xsd", "\xFF\xFE<")}) {
        EXPECT_EQ(check(wrong, unusable), "");
        EXPECT_TRUE(
            check(wrong, unusable, SchemaNamespace::its_own).starts_with("Błąd ładowania XSD: "));
    }
}

TEST_F(InvoiceDocumentsTest, PagesAreInTheCodePageAndSaySo) {
    const std::string page =
        "<xsl:output method='html'/><xsl:template match='/'><html><head><title>x</title></head>"
        "<body><xsl:value-of select='.'/></body></html></xsl:template>";
    EXPECT_EQ(to_html(u"<f>Żółć \x20AC \x4E2D \xD83D\xDE00</f>", sheet(page)), "");
    std::string html = content("out.html");
    EXPECT_NE(html.find("charset=windows-1250\""), std::string::npos) << html;
    EXPECT_NE(html.find("\xAF\xF3\xB3\xE6 \x80 &#20013; &#128512;"), std::string::npos) << html;
    EXPECT_TRUE(html.ends_with("\r\n"));

    // Read by LoadXMLFromFile: each byte of UTF-8 a character, those that 1250 lacks included.
    const base::Text text = load_invoice(*text_files, file("fa.xml", "\xEF\xBB\xBF<f>Łódź Ń</f>"));
    EXPECT_TRUE(text.starts_with(u"<f>"));
    EXPECT_EQ(to_html(text, sheet(page)), "");
    html = content("out.html");
    EXPECT_NE(html.find("charset=utf-8\""), std::string::npos) << html;
    EXPECT_NE(html.find("<body>Łódź Ń</body>"), std::string::npos) << html;
    EXPECT_EQ(html.find("20013"), std::string::npos);
    // A reference stands between such bytes as what it is; capitals of ordinary text look like
    // them.
    EXPECT_EQ(
        to_html(load_invoice(*text_files, file("odn.xml", "<f>Łódź&#160;&#243;</f>")), sheet(page)),
        "");
    EXPECT_NE(content("out.html").find("<body>Łódź&#160;&#243;</body>"), std::string::npos)
        << content("out.html");
    EXPECT_EQ(to_html(u"<f>MĘŻA</f>", sheet(page)), "");
    EXPECT_NE(content("out.html")
                  .find("<body>M\xCA\xAF"
                        "A</body>"),
              std::string::npos)
        << content("out.html");

    EXPECT_TRUE(to_html(u"<f/>", "<xsl:").starts_with("Błąd XSL: "));
    EXPECT_TRUE(to_html(u"<f>", sheet(page)).starts_with("Błąd transformacji: "));
    EXPECT_TRUE(to_html(u"<f/>", "<f/>").starts_with("Błąd transformacji: "));
    std::filesystem::create_directory(path("gone"));
    EXPECT_TRUE(base::to_utf8(write_html(*documents, *code_page, *files, u"<f/>",
                                         base::from_utf8(sheet(page)),
                                         base::from_utf8(path("no/out.html"))))
                    .starts_with("Błąd transformacji: "));
}

TEST_F(InvoiceDocumentsTest, FilesThatCannotBeReadRaiseTheHostsNumbers) {
    EXPECT_EQ(load_invoice(*text_files, file("bez.xml", "<f>a</f>")), u"<f>a</f>");
    const auto number = [&](const base::Text& of) {
        try {
            load_invoice(*text_files, of);
        } catch (const base::AutomationError& error) {
            return static_cast<std::uint32_t>(error.number()) & 0xFFFF;
        }
        return 0u;
    };
    EXPECT_EQ(number(file("pusty.xml", "")), 62u);
    EXPECT_EQ(number(base::from_utf8(path("brak.xml"))), 53u);
    EXPECT_EQ(number(base::from_utf8(path("brak/brak.xml"))), 76u);
    EXPECT_EQ(number(base::from_utf8(folder.path().string())), 70u);
}

TEST_F(InvoiceDocumentsTest, NothingHostileGetsOutOrGrows) {
    const base::Text plain = file("plain.xsd", schema("", rows));
    file("tajne.txt", "<f>tajne</f>");
    std::string deep;
    for (int i = 0; i < 300; ++i) deep += "<f>";
    EXPECT_NE(check(deep, plain), "");
    std::string wide = "<f";
    for (int i = 0; i < 60'000; ++i) wide += " a" + std::to_string(i) + "='>'";
    EXPECT_NE(check(wide + "/>", plain).find("1000"), std::string::npos);
    EXPECT_NE(check(std::string(ports::XmlDocuments::most_characters + 1, ' '), plain)
                  .find("100 000 000"),
              std::string::npos);

    const std::string secret = path("tajne.txt");
    const std::string written = path("written.txt");
    for (const std::string& inside : {
             "<xsl:template match='/'><xsl:copy-of select=\"document('" + secret +
                 "')\"/></xsl:template>",
             "<xsl:include href='" + secret + "'/>",
             "<xsl:import href='" + secret + "'/>",
             "<xsl:template match='/'><xsl:document href='" + written +
                 "'>x</xsl:document></xsl:template>",
             std::string("<xsl:template match='/'><xsl:call-template "
                         "name='a'/></xsl:template><xsl:template "
                         "name='a'><xsl:call-template name='a'/></xsl:template>"),
             std::string(
                 "<xsl:template match='/'><xsl:call-template name='a'><xsl:with-param name='t' "
                 "select=\"'0123456789abcdef'\"/></xsl:call-template></xsl:template><xsl:template "
                 "name='a'>"
                 "<xsl:param name='t'/><xsl:call-template name='a'><xsl:with-param name='t' "
                 "select='concat($t,$t)'/></xsl:call-template></xsl:template>"),
         }) {
        const std::string outcome = to_html(u"<f/>", sheet(inside));
        EXPECT_EQ(content("out.html").find("tajne"), std::string::npos) << inside;
        EXPECT_TRUE(outcome.starts_with("Błąd transformacji: ")) << inside << outcome;
    }
    EXPECT_FALSE(std::filesystem::exists(written));
}

}  // namespace
}  // namespace tavrix::ksef
