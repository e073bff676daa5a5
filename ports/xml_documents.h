#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/text.h"

namespace tavrix::ports {

/// Why and where a document was refused.
struct XmlError {
    /// In the component's words and with its line ends.
    base::Text reason;
    /// From 1, where the parser stood; 0 where it does not say.
    std::int32_t line = 0;
    std::int32_t column = 0;
};

/// Under which name a schema is put before documents.
enum class SchemaNamespace {
    /// The empty one, whatever the schema says of itself: a schema with a target namespace is
    /// refused.
    empty,
    /// The schema's own, and those that it imports from its own folder.
    its_own,
};

struct XmlValidation {
    /// False when the schema was taken and yet is not there; `schema_reason` may say why.
    bool has_schema = true;
    base::Text schema_reason;
    /// In the document's order; none when it is valid. A component that stops at the first says the
    /// first.
    std::vector<XmlError> errors;
};

struct XmlTransformation {
    /// What is wrong with the stylesheet as an XML document; empty when nothing is.
    base::Text stylesheet_reason;
    base::Text output;
};

/// Names and values of a stylesheet's parameters; the values are texts, not expressions.
using XmlParameters = std::span<const std::pair<base::Text, base::Text>>;

/// A schema that was taken, for one document after the other.
class XmlSchema {
  public:
    virtual ~XmlSchema() = default;
    virtual XmlValidation validate(base::TextView xml) = 0;
};

/// The platform's XML component at work on whole documents. None of them reaches the network, a
/// document type is refused wherever it stands, and elements are 256 deep at most. Throws
/// base::AutomationError with the component's words when it cannot do what it is asked.
class XmlDocuments {
  public:
    /// Longer documents are refused before anything reads them.
    static constexpr std::size_t most_characters = 100'000'000;

    virtual ~XmlDocuments() = default;
    /// `path` is the schema's file. Throws when the schema is refused.
    virtual std::unique_ptr<XmlSchema> load_schema(base::TextView path,
                                                   SchemaNamespace schema_namespace) = 0;
    XmlValidation validate(base::TextView xml, base::TextView schema,
                           SchemaNamespace schema_namespace) {
        return load_schema(schema, schema_namespace)->validate(xml);
    }
    /// XSLT 1.0. Throws when the document or the transformation fails.
    virtual XmlTransformation transform(base::TextView xml, base::TextView stylesheet,
                                        XmlParameters parameters) = 0;
};

}  // namespace tavrix::ports
