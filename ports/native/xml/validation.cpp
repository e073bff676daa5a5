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

}  // namespace

XmlValidation validate_xml(const std::string& utf8, const std::string& schema_path,
                           SchemaNamespace schema_namespace) {
    const std::string folder = schema_path.substr(0, schema_path.rfind('/') + 1);
    const XmlLimits limits(folder.empty() ? "./" : folder);
    const Schema schema = load_schema(schema_path);
    if (has_overlong_tag(utf8)) return {true, {}, {{base::Text(overlong_tag), 0, 0}}};
    if (schema_namespace == SchemaNamespace::empty && schema->targetNamespace != nullptr)
        refuse_xml(u"The namespace differs from the schema's targetNamespace.\r\n");
    XmlValidation validation;
    validation.errors = errors_of(utf8, *schema);
    // What the library makes of it is no error of the document.
    if (const base::Text refusal = limits.refusal(); !refusal.empty())
        validation.errors = {{refusal, 0, 0}};
    return validation;
}

}  // namespace tavrix::ports
