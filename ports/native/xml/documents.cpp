#include "ports/native/xml/documents.h"

#include <libxml/parserInternals.h>

#include <algorithm>
#include <new>

#include "base/error.h"
#include "ports/native/adapters.h"

namespace tavrix::ports {
namespace {

constexpr std::size_t most_errors = 1000;

void collect(void* errors, xmlErrorPtr error) {
    if (error == nullptr || error->level < XML_ERR_ERROR) return;
    static_cast<XmlErrors*>(errors)->add(*error, error->line, error->int2);
}

void refuse_document_type(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* const context = static_cast<xmlParserCtxtPtr>(parser);
    // The words that people know from the other component.
    xmlError error{};
    error.message = const_cast<char*>("DTD is prohibited.\n");
    error.level = XML_ERR_FATAL;
    error.line = context->input->line;
    error.int2 = context->input->col;
    if (xmlStructuredErrorContext != nullptr) collect(xmlStructuredErrorContext, &error);
    context->wellFormed = 0;
    xmlStopParser(context);
}

class LibxmlDocuments final : public XmlDocuments {
  public:
    std::unique_ptr<XmlSchema> load_schema(base::TextView path,
                                           SchemaNamespace schema_namespace) override {
        return load_xml_schema(base::to_utf8(base::replace_all(path, u"\\", u"/")),
                               schema_namespace);
    }
    XmlTransformation transform(base::TextView xml, base::TextView stylesheet,
                                XmlParameters parameters) override {
        if (xml.size() > most_characters || stylesheet.size() > most_characters)
            refuse_xml(base::Text(too_long_document));
        return transform_xml(base::to_utf8(xml), base::to_utf8(stylesheet), parameters);
    }
};

}  // namespace

XmlErrors::XmlErrors() {
    xmlSetStructuredErrorFunc(this, collect);
}

XmlErrors::~XmlErrors() {
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

void XmlErrors::add(const xmlError& error, std::int32_t line, std::int32_t column) {
    if (errors_.size() >= most_errors) return;
    const char* const message = error.message == nullptr ? "unknown error\n" : error.message;
    errors_.push_back({base::replace_all(base::from_utf8(message), u"\n", u"\r\n"), line, column});
}

base::Text XmlErrors::first_reason() const {
    return errors_.empty() ? base::Text(u"unknown error") : errors_.front().reason;
}

XmlParser make_xml_parser(const std::string& utf8) {
    // The library makes none of an empty text; a blank is as empty a document.
    XmlParser parser(utf8.empty()
                         ? xmlCreateMemoryParserCtxt(" ", 1)
                         : xmlCreateMemoryParserCtxt(utf8.data(), static_cast<int>(utf8.size())));
    if (parser == nullptr) throw std::bad_alloc();
    xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET | XML_PARSE_IGNORE_ENC);
    xmlSwitchEncoding(parser.get(), XML_CHAR_ENCODING_UTF8);
    parser->sax->internalSubset = refuse_document_type;
    return parser;
}

XmlDocument parse_xml(const std::string& utf8) {
    const XmlParser parser = make_xml_parser(utf8);
    xmlParseDocument(parser.get());
    XmlDocument document(std::exchange(parser->myDoc, nullptr));
    return parser->wellFormed ? std::move(document) : nullptr;
}

bool has_overlong_tag(std::string_view utf8) {
    constexpr std::size_t most_attributes = 1000;
    constexpr std::pair<std::string_view, std::string_view> skipped[] = {
        {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (std::size_t at = utf8.find('<'); at != utf8.npos; at = utf8.find('<', at)) {
        const auto other = std::ranges::find_if(
            skipped, [&](const auto& kind) { return utf8.substr(at).starts_with(kind.first); });
        if (other != std::end(skipped)) {
            at = utf8.find(other->second, at + other->first.size());
            continue;
        }
        std::size_t attributes = 0;
        for (++at; at < utf8.size() && utf8[at] != '>' && utf8[at] != '<'; ++at) {
            if (utf8[at] == '=' && ++attributes > most_attributes) return true;
            if (utf8[at] != '"' && utf8[at] != '\'') continue;
            at = utf8.find(utf8[at], at + 1);
            if (at == utf8.npos) return false;
        }
    }
    return false;
}

void refuse_xml(const base::Text& reason) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"XmlDocuments", reason);
}

std::unique_ptr<XmlDocuments> make_native_xml_documents() {
    return std::make_unique<LibxmlDocuments>();
}

}  // namespace tavrix::ports
