#include "ksef/invoice_documents.h"

#include <new>

#include "base/error.h"

namespace tavrix::ksef {
namespace {

using base::Text;

// EF BB BF in code page 1250.
constexpr base::TextView utf8_mark = u"ď»ż";
constexpr base::TextView page_end = u"\r\n";

Text worded(const ports::XmlError& error) {
    return u"Błąd walidacji: " + error.reason + u"\r\nLinia: " + base::to_decimal(error.line) +
           u", Kolumna: " + base::to_decimal(error.column);
}

}  // namespace

Text load_invoice(ports::TextFiles& files, const Text& path) {
    Text text = files.read_all(path);
    const std::size_t mark = text.find(utf8_mark);
    if (mark != Text::npos) text.erase(mark, utf8_mark.size());
    return text;
}

Text check_invoice(ports::XmlDocuments& documents, const Text& xml, const Text& schema,
                   ports::SchemaNamespace schema_namespace,
                   const std::function<void(base::TextView)>& show_message) {
    try {
        const ports::XmlValidation validation = documents.validate(xml, schema, schema_namespace);
        if (!validation.has_schema) {
            if (show_message) show_message(u"Błąd ładowania XSD: " + validation.schema_reason);
            return {};
        }
        return validation.errors.empty() ? Text() : worded(validation.errors.front());
    } catch (const base::AutomationError& error) {
        // Nobody was asked whether the document is valid; hosts of long standing are told so by
        // nothing.
        if (schema_namespace == ports::SchemaNamespace::empty) return {};
        return u"Błąd ładowania XSD: " + error.description();
    } catch (const std::bad_alloc&) {
        return u"Błąd walidacji: Out of memory";
    }
}

Text write_html(ports::XmlDocuments& documents, const ports::CodePage& code_page,
                ports::DataFiles& files, const Text& xml, const Text& xsl, const Text& path) {
    try {
        const ports::XmlTransformation page = documents.transform(xml, xsl, {});
        if (!page.stylesheet_reason.empty()) return u"Błąd XSL: " + page.stylesheet_reason;
        const auto file = files.create(path, ports::Readers::everyone);
        file->write(html_page(code_page, page.output + Text(page_end)));
        file->keep();
        return {};
    } catch (const base::AutomationError& error) {
        return u"Błąd transformacji: " + error.description();
    } catch (const std::bad_alloc&) {
        return u"Błąd transformacji: Out of memory";
    }
}

}  // namespace tavrix::ksef
