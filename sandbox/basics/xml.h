// Reading XML that anybody may have written: no document type, no entities, no network, bounded
// depth.
#pragma once

#include <libxml/tree.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavrix::sandbox {

struct FreeXmlDocument {
    void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDocument>;

struct ParsedXml {
    XmlDocument document;
    /// Why there is no document; with line and column where known.
    std::string error;
};

/// Parses a whole document. A document type declaration is an error by itself: with it go entities
/// of every kind.
ParsedXml parse_xml(std::string_view text);

/// The document in UTF-8 with its elements on lines of their own, as far as it has no lines yet; as
/// it came when it cannot be read.
std::string set_out_xml(const std::string& text);

/// The encoding a document declares, in upper case; empty when it declares none.
std::string declared_encoding(const XmlDocument& document);

bool is_utf8(std::string_view text);

/// An element seen by local names, or nothing; every question to nothing answers with nothing.
class Element {
  public:
    Element() = default;
    explicit Element(const xmlNode* node) : node_(node) {}
    static Element root_of(const XmlDocument& document);

    explicit operator bool() const { return node_ != nullptr; }
    std::string_view name() const;
    std::string_view name_space() const;
    std::string attribute(const char* name) const;
    /// First child element of that name.
    Element child(std::string_view name) const;
    std::vector<Element> children() const;
    std::vector<Element> children(std::string_view name) const;
    /// The element's text, blanks at both ends removed.
    std::string text() const;
    /// Text of a child; empty when there is none.
    std::string text(std::string_view child_name) const { return child(child_name).text(); }

  private:
    const xmlNode* node_ = nullptr;
};

/// Escapes text for content and for attributes; characters XML forbids become U+FFFD.
std::string xml_escape(std::string_view text);

}  // namespace tavrix::sandbox
