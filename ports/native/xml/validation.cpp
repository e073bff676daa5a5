#include <libxml/parserInternals.h>
#include <libxml/schemasInternals.h>
#include <libxml/xmlschemas.h>

#include "ports/native/xml/documents.h"
#include "ports/native/xml/limits.h"

namespace tavrix::ports {
namespace {

using Schema = std::unique_ptr<xmlSchema, FreedBy<xmlSchemaFree>>;
using SchemaParser = std::unique_ptr<xmlSchemaParserCtxt, FreedBy<xmlSchemaFreeParserCtxt>>;
using Validator = std::unique_ptr<xmlSchemaValidCtxt, FreedBy<xmlSchemaFreeValidCtxt>>;
using Plug = std::unique_ptr<xmlSchemaSAXPlugStruct, FreedBy<xmlSchemaSAXUnplug>>;

Schema load_schema(const std::string& path) {
    XmlErrors errors;
    const SchemaParser parser(xmlSchemaNewParserCtxt(path.c_str()));
    Schema schema(parser == nullptr ? nullptr : xmlSchemaParse(parser.get()));
    if (schema == nullptr) refuse_xml(errors.first_reason());
    return schema;
}

struct Walk {
    XmlErrors& errors;
    xmlParserCtxt& parser;
};

// The schema's errors know no column, and no line beyond 65 535: the parser stands where they are.
void collect_invalid(void* context, xmlErrorPtr error) {
    const Walk& walk = *static_cast<Walk*>(context);
    if (error == nullptr || error->level < XML_ERR_ERROR || walk.parser.input == nullptr) return;
    walk.errors.add(*error, walk.parser.input->line, walk.parser.input->col);
}

std::vector<XmlError> errors_of(const std::string& utf8, xmlSchema& schema) {
    XmlErrors errors;
    const Validator validator(xmlSchemaNewValidCtxt(&schema));
    const XmlParser parser = make_xml_parser(utf8);
    Walk walk{errors, *parser};
    xmlSchemaSetValidStructuredErrors(validator.get(), collect_invalid, &walk);
    {
        // In the document's way from the parser into its tree; gone before the parser is.
        const Plug plug(xmlSchemaSAXPlug(validator.get(), &parser->sax, &parser->userData));
        if (plug == nullptr) throw std::bad_alloc();
        xmlParseDocument(parser.get());
    }
    xmlFreeDoc(std::exchange(parser->myDoc, nullptr));
    return errors.take();
}

class LibxmlSchema final : public XmlSchema {
  public:
    LibxmlSchema(const std::string& path, SchemaNamespace schema_namespace)
        : folder_(path.substr(0, path.rfind('/') + 1)) {
        const XmlLimits limits(folder());
        schema_ = load_schema(path);
        if (schema_namespace == SchemaNamespace::empty && schema_->targetNamespace != nullptr)
            refuse_xml(u"The namespace differs from the schema's targetNamespace.\r\n");
    }
    XmlValidation validate(base::TextView xml) override {
        if (xml.size() > XmlDocuments::most_characters)
            return {true, {}, {{base::Text(too_long_document), 0, 0}}};
        const std::string utf8 = base::to_utf8(xml);
        if (has_overlong_tag(utf8)) return {true, {}, {{base::Text(overlong_tag), 0, 0}}};
        const XmlLimits limits(folder());
        XmlValidation validation;
        validation.errors = errors_of(utf8, *schema_);
        // What the library makes of it is no error of the document.
        if (const base::Text refusal = limits.refusal(); !refusal.empty())
            validation.errors = {{refusal, 0, 0}};
        return validation;
    }

  private:
    std::string folder() const { return folder_.empty() ? "./" : folder_; }

    std::string folder_;
    Schema schema_;
};

}  // namespace

std::unique_ptr<XmlSchema> load_xml_schema(const std::string& path,
                                           SchemaNamespace schema_namespace) {
    return std::make_unique<LibxmlSchema>(path, schema_namespace);
}

}  // namespace tavrix::ports
