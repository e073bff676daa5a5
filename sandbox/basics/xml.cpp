#include "sandbox/basics/xml.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

struct FreeParser {
    void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};

const char* as_text(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

/// Called by the parser at `<!DOCTYPE`, before anything in it is read.
void refuse_document_type(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    static_cast<ParsedXml*>(parser->_private)->error = "Deklaracja DOCTYPE jest niedozwolona.";
    xmlStopParser(parser);
}

std::string last_error(xmlParserCtxt* parser) {
    const xmlError* error = xmlCtxtGetLastError(parser);
    if (error == nullptr || error->message == nullptr)
        return "Dokument nie jest poprawnym plikiem XML.";
    std::string message = error->message;
    message.erase(message.find_last_not_of("\r\n ") + 1);
    return "Wiersz " + std::to_string(error->line) + ", kolumna " + std::to_string(error->int2) +
           ": " + message;
}

}  // namespace

ParsedXml parse_xml(std::string_view text) {
    ParsedXml result;
    const std::unique_ptr<xmlParserCtxt, FreeParser> parser(xmlNewParserCtxt());
    if (!parser) {
        result.error = "Brak pamięci.";
        return result;
    }
    parser->_private = &result;
    parser->sax->internalSubset = refuse_document_type;
    parser->sax->externalSubset = nullptr;
    result.document.reset(xmlCtxtReadMemory(
        parser.get(), text.data(), int(text.size()), nullptr, nullptr,
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NOCDATA));
    if (!result.error.empty() || parser->wellFormed == 0) result.document.reset();
    if (!result.document && result.error.empty()) result.error = last_error(parser.get());
    return result;
}

std::string set_out_xml(const std::string& text) {
    const ParsedXml parsed = parse_xml(text);
    xmlChar* lines = nullptr;
    int size = 0;
    if (parsed.document)
        xmlDocDumpFormatMemoryEnc(parsed.document.get(), &lines, &size, "UTF-8", 1);
    if (lines == nullptr) return text;
    std::string result(as_text(lines), std::size_t(size));
    xmlFree(lines);
    return result;
}

std::string declared_encoding(const XmlDocument& document) {
    if (!document || document->encoding == nullptr) return {};
    return upper(as_text(document->encoding));
}

bool is_utf8(std::string_view text) {
    std::size_t i = 0;
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    while (i < text.size()) {
        const unsigned lead = at(i);
        std::size_t more = 0;
        unsigned code = 0, least = 0;
        if (lead < 0x80) {
            ++i;
            continue;
        }
        if (lead >= 0xC2 && lead < 0xE0) {
            more = 1, code = lead & 0x1F, least = 0x80;
        } else if (lead >= 0xE0 && lead < 0xF0) {
            more = 2, code = lead & 0x0F, least = 0x800;
        } else if (lead >= 0xF0 && lead < 0xF5) {
            more = 3, code = lead & 0x07, least = 0x10000;
        } else {
            return false;
        }
        if (text.size() - i <= more) return false;
        for (std::size_t k = 1; k <= more; ++k) {
            if ((at(i + k) & 0xC0) != 0x80) return false;
            code = code << 6 | (at(i + k) & 0x3F);
        }
        if (code < least || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return false;
        i += more + 1;
    }
    return true;
}

Element Element::root_of(const XmlDocument& document) {
    return Element(document ? xmlDocGetRootElement(document.get()) : nullptr);
}

std::string_view Element::name() const {
    return node_ == nullptr ? "" : as_text(node_->name);
}

std::string_view Element::name_space() const {
    return node_ == nullptr || node_->ns == nullptr ? "" : as_text(node_->ns->href);
}

std::string Element::attribute(const char* name) const {
    if (node_ == nullptr) return {};
    xmlChar* value = xmlGetNoNsProp(node_, reinterpret_cast<const xmlChar*>(name));
    if (value == nullptr) return {};
    std::string result = as_text(value);
    xmlFree(value);
    return result;
}

Element Element::child(std::string_view name) const {
    if (node_ == nullptr) return {};
    for (const xmlNode* child = node_->children; child != nullptr; child = child->next)
        if (child->type == XML_ELEMENT_NODE && as_text(child->name) == name) return Element(child);
    return {};
}

std::vector<Element> Element::children() const {
    std::vector<Element> found;
    if (node_ == nullptr) return found;
    for (const xmlNode* child = node_->children; child != nullptr; child = child->next)
        if (child->type == XML_ELEMENT_NODE) found.emplace_back(child);
    return found;
}

std::vector<Element> Element::children(std::string_view name) const {
    std::vector<Element> found;
    for (const Element child : children())
        if (child.name() == name) found.push_back(child);
    return found;
}

std::string Element::text() const {
    if (node_ == nullptr) return {};
    xmlChar* content = xmlNodeGetContent(node_);
    if (content == nullptr) return {};
    std::string result = as_text(content);
    xmlFree(content);
    constexpr const char* blanks = " \t\r\n";
    result.erase(result.find_last_not_of(blanks) + 1);
    result.erase(0, std::min(result.find_first_not_of(blanks), result.size()));
    return result;
}

std::string xml_escape(std::string_view text) {
    constexpr std::pair<char, std::string_view> escapes[] = {
        {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}};
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        const auto* escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [c](const auto& it) { return it.first == c; });
        if (escape != std::end(escapes))
            result += escape->second;
        else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
            result += "\xEF\xBF\xBD";
        else
            result += c;
    }
    return result;
}

}  // namespace tavrix::sandbox
