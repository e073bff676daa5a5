#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/error.h"
#include "fuzz/fuzz_target.h"
#include "ksef/invoice_documents.h"
#include "ports/native/adapters.h"

using namespace tavrix;

namespace {

const std::string head =
    "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>";
const std::string sheet = head +
                          "<xsl:output method='html'/><xsl:template "
                          "match='/'><html><head/><body><xsl:copy-of select='*'/>"
                          "</body></html></xsl:template></xsl:stylesheet>";

// A file of this process's own, which the schema reader opens by its name.
base::Text schema() {
    static const std::string path = [] {
        const auto name = std::filesystem::temp_directory_path() /
                          ("tavrix-fuzz-" + std::to_string(std::rand()) + ".xsd");
        std::ofstream(name)
            << "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='f'>"
               "<xs:complexType mixed='true'><xs:sequence><xs:any minOccurs='0' maxOccurs='9' "
               "processContents='lax'/></xs:sequence><xs:attribute name='a' type='xs:date'/>"
               "</xs:complexType></xs:element></xs:schema>";
        return name.string();
    }();
    return base::from_utf8(path);
}

}  // namespace

std::vector<std::string> fuzz::seeds() {
    return {
        "<?xml version='1.0' encoding='UTF-8'?><f a='2026-11-22'>Łódź&#160;<b/><!-- c "
        "--><![CDATA[<]]></f>",
        "<!DOCTYPE f [<!ENTITY e 'eeee'>]><f>&e;</f>",
        sheet,
        head +
            "<xsl:param name='p'/><xsl:decimal-format name='pl' "
            "decimal-separator=','/><xsl:template match='f'>"
            "<xsl:for-each select='b'><xsl:sort select='@a'/><xsl:value-of "
            "select=\"format-number(@a,'0,00','pl')\"/>"
            "<xsl:call-template name='t'/></xsl:for-each></xsl:template><xsl:template "
            "name='t'/></xsl:stylesheet>",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto documents = ports::make_native_xml_documents();
    static const auto code_page = ports::make_native_code_page();
    const base::Text text = base::from_utf8({reinterpret_cast<const char*>(data), size});
    try {
        documents->validate(text, schema(), ports::SchemaNamespace::its_own);
    } catch (const base::AutomationError&) {
    }
    const std::pair<base::Text, base::Text> pairs[] = {{text, base::from_utf8(sheet)},
                                                       {u"<f><b a='1'/></f>", text}};
    for (const auto& [document, stylesheet] : pairs) {
        try {
            const auto page = documents->transform(document, stylesheet, {});
            ksef::html_page(*code_page, page.output);
            ksef::html_page_utf8(page.output);
        } catch (const base::AutomationError&) {
        }
    }
    return 0;
}
