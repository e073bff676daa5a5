#pragma once

#include <libxml/parser.h>

#include <memory>
#include <vector>

#include "ports/xml_documents.h"

namespace tavrix::ports {

/// Gives an object of the XML libraries back with its own function.
template <auto free>
struct FreedBy {
    template <typename Object>
    void operator()(Object* object) const {
        free(object);
    }
};

using XmlDocument = std::unique_ptr<xmlDoc, FreedBy<xmlFreeDoc>>;
using XmlParser = std::unique_ptr<xmlParserCtxt, FreedBy<xmlFreeParserCtxt>>;

/// What the library says, in its words, while one of these stands; line ends become CR LF, as other
/// components end lines. The first thousand are kept.
class XmlErrors {
  public:
    XmlErrors();
    ~XmlErrors();
    XmlErrors(const XmlErrors&) = delete;
    XmlErrors& operator=(const XmlErrors&) = delete;

    void add(const xmlError& error, std::int32_t line, std::int32_t column);
    bool empty() const noexcept { return errors_.empty(); }
    /// The first reason; "unknown error" where there is none.
    base::Text first_reason() const;
    std::vector<XmlError> take() { return std::move(errors_); }

  private:
    std::vector<XmlError> errors_;
};

/// A parser of `utf8`, to be started by its caller: that encoding whatever the document declares,
/// no network, no entities, no document type. `utf8` outlives it.
XmlParser make_xml_parser(const std::string& utf8);

/// The document, or null; why is in the XmlErrors that stand.
XmlDocument parse_xml(const std::string& utf8);

/// Whether an element has more than a thousand attributes: the libraries compare each with each.
bool has_overlong_tag(std::string_view utf8);
constexpr base::TextView overlong_tag = u"Element ma ponad 1000 atrybutów.\r\n";
constexpr base::TextView too_long_document = u"Dokument jest dłuższy niż 100 000 000 znaków.\r\n";

[[noreturn]] void refuse_xml(const base::Text& reason);

std::unique_ptr<XmlSchema> load_xml_schema(const std::string& path,
                                           SchemaNamespace schema_namespace);
XmlTransformation transform_xml(const std::string& xml, const std::string& stylesheet,
                                XmlParameters parameters);

}  // namespace tavrix::ports
