#include <libxslt/transform.h>
#include <libxslt/variables.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>

#include "ports/native/xml/documents.h"
#include "ports/native/xml/limits.h"

namespace tavrix::ports {
namespace {

using Stylesheet = std::unique_ptr<xsltStylesheet, FreedBy<xsltFreeStylesheet>>;
using Transformation = std::unique_ptr<xsltTransformContext, FreedBy<xsltFreeTransformContext>>;

// Enough for an invoice of ten thousand lines several times over; a sheet that goes in circles ends
// within seconds. Long texts are one operation however long, so there is the limit of time as well.
constexpr unsigned long most_operations = 50'000'000;

const xmlChar* xml_chars(const std::string& text) {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

// What the transformer says, in pieces of lines.
class Words {
  public:
    Words() { xsltSetGenericErrorFunc(this, add); }
    ~Words() { xsltSetGenericErrorFunc(nullptr, nullptr); }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;

    static void add(void* words, const char* format, ...) {
        std::string& text = static_cast<Words*>(words)->text_;
        if (text.size() > 4096) return;
        char piece[1024];
        va_list values;
        va_start(values, format);
        const int length = std::vsnprintf(piece, sizeof piece, format, values);
        va_end(values);
        if (length > 0)
            text.append(piece,
                        std::min<std::size_t>(static_cast<std::size_t>(length), sizeof piece - 1));
    }
    base::Text text() const {
        return base::replace_all(base::from_utf8(text_.empty() ? "unknown error\n" : text_), u"\n",
                                 u"\r\n");
    }

  private:
    std::string text_;
};

Stylesheet compile(XmlDocument document, const Words& words) {
    Stylesheet sheet(xsltParseStylesheetDoc(document.get()));
    if (sheet == nullptr) refuse_xml(words.text());
    // It is the sheet's now.
    document.release();
    if (sheet->errors != 0) refuse_xml(words.text());
    // The text is nobody's bytes yet.
    xmlFree(sheet->encoding);
    sheet->encoding = xmlStrdup(xml_chars("UTF-8"));
    return sheet;
}

std::string written(xsltStylesheet& sheet, xmlDoc& result) {
    xmlChar* bytes = nullptr;
    int length = 0;
    if (xsltSaveResultToString(&bytes, &length, &result, &sheet) != 0) throw std::bad_alloc();
    const std::unique_ptr<xmlChar, FreedBy<[](xmlChar* block) { xmlFree(block); }>> owned(bytes);
    return bytes == nullptr
               ? std::string()
               : std::string(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(length));
}

// Where the library keeps whom it tells of errors, there is one place for the process.
std::mutex one_at_a_time;

}  // namespace

XmlTransformation transform_xml(const std::string& xml, const std::string& stylesheet,
                                XmlParameters parameters) {
    const std::lock_guard lock(one_at_a_time);
    const XmlLimits limits({});
    if (has_overlong_tag(xml) || has_overlong_tag(stylesheet)) refuse_xml(base::Text(overlong_tag));
    XmlErrors errors;
    XmlDocument sheet_document = parse_xml(stylesheet);
    const auto refuse_beyond_limits = [&] {
        if (const base::Text refusal = limits.refusal(); !refusal.empty()) refuse_xml(refusal);
    };
    refuse_beyond_limits();
    if (sheet_document == nullptr) return {errors.first_reason(), {}};
    const XmlDocument document = parse_xml(xml);
    refuse_beyond_limits();
    if (document == nullptr) refuse_xml(errors.first_reason());

    Words words;
    const Stylesheet sheet = compile(std::move(sheet_document), words);
    const Transformation transformation(xsltNewTransformContext(sheet.get(), document.get()));
    if (transformation == nullptr) throw std::bad_alloc();
    transformation->opLimit = most_operations;
    for (const auto& [name, value] : parameters) {
        xsltQuoteOneUserParam(transformation.get(), xml_chars(base::to_utf8(name)),
                              xml_chars(base::to_utf8(value)));
    }
    const XmlDocument result(xsltApplyStylesheetUser(sheet.get(), document.get(), nullptr, nullptr,
                                                     nullptr, transformation.get()));
    refuse_beyond_limits();
    if (result == nullptr || transformation->state != XSLT_STATE_OK) refuse_xml(words.text());
    const std::string output = written(*sheet, *result);
    refuse_beyond_limits();
    return {{}, base::from_utf8(output)};
}

}  // namespace tavrix::ports
