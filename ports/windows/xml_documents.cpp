#include "ports/xml_documents.h"

#include <msxml2.h>

#include <set>

#include "base/error.h"
#include "ports/windows/adapters.h"
#include "windows/failure.h"
#include "windows/late_bound.h"
#include "windows/variant_value.h"

namespace tavrix::ports {
namespace {

using windows::LateBound;

constexpr const char16_t* document_class = u"Msxml2.DOMDocument.6.0";

base::Text text_of(const windows::Variant& value) {
    return value.get().vt == VT_BSTR ? base::Text(windows::view_of(value.get().bstrVal))
                                     : base::Text();
}

std::int32_t number_of(const LateBound& object, const char16_t* name) {
    const windows::Variant value = object.get(name);
    return value.get().vt == VT_I4 ? value.get().lVal : 0;
}

[[noreturn]] void refuse(const base::Text& reason) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"XmlDocuments", reason);
}

void require_length(base::TextView xml) {
    if (xml.size() > XmlDocuments::most_characters)
        refuse(u"Dokument jest dłuższy niż 100 000 000 znaków.\r\n");
}

// The component's defaults hold: no document types, no reaching out, elements 256 deep.
LateBound new_document(const char16_t* class_name) {
    auto document = LateBound::create(class_name);
    document.put(u"async", false);
    return document;
}

bool load(const LateBound& document, base::TextView xml) {
    const windows::Variant loaded = document.call(u"loadXML", xml);
    return loaded.get().vt == VT_BOOL && loaded.get().boolVal != VARIANT_FALSE;
}

// Nothing where the document is in order.
std::vector<XmlError> parse_errors(const LateBound& document, bool loaded) {
    const LateBound error = document.object(u"parseError");
    if (loaded && number_of(error, u"errorCode") == 0) return {};
    return {
        {text_of(error.get(u"reason")), number_of(error, u"line"), number_of(error, u"linepos")}};
}

// A schema and, before it, what it imports from its own folder: the component looks nowhere by
// itself.
class SchemaWithImports {
  public:
    explicit SchemaWithImports(const LateBound& cache) : cache_(cache) {}

    void add(const base::Text& path) {
        if (!added_.insert(path).second) return;
        const LateBound schema = new_document(document_class);
        schema.put(u"validateOnParse", false);
        const windows::Variant loaded = schema.call(u"load", path);
        const bool is_loaded = loaded.get().vt == VT_BOOL && loaded.get().boolVal != VARIANT_FALSE;
        if (!is_loaded) refuse(parse_errors(schema, false).front().reason);

        const LateBound imports = schema.object(u"selectNodes", u"/*/*[local-name()='import']");
        for (std::int32_t i = 0; i < number_of(imports, u"length"); ++i) {
            const base::Text location = attribute(imports.object(u"item", i), u"schemaLocation");
            if (!location.empty()) add(beside(path, location));
        }
        cache_.call(u"add", attribute(schema.object(u"documentElement"), u"targetNamespace"), path);
    }

  private:
    static base::Text attribute(const LateBound& element, const char16_t* name) {
        return text_of(element.call(u"getAttribute", name));
    }
    // Whatever address it names.
    static base::Text beside(const base::Text& path, const base::Text& location) {
        const std::size_t folder_end = path.find_last_of(u"\\/") + 1;
        return path.substr(0, folder_end) + location.substr(location.find_last_of(u"\\/:") + 1);
    }

    const LateBound& cache_;
    std::set<base::Text> added_;
};

// Early-bound, because the property takes no object by name everywhere.
void put_input(const LateBound& processor, const LateBound& document) {
    const auto early = windows::ComPointer<IDispatch>(processor.dispatch()).query<IXSLProcessor>();
    if (!early) refuse(u"IXSLProcessor");
    const windows::Variant input(windows::ComPointer<IDispatch>(document.dispatch()));
    windows::check(early->put_input(input.get()), u"IXSLProcessor.input");
}

class MsxmlDocuments final : public XmlDocuments {
  public:
    XmlValidation validate(base::TextView xml, base::TextView schema,
                           SchemaNamespace schema_namespace) override {
        require_length(xml);
        const auto cache = LateBound::create(u"Msxml2.XMLSchemaCache.6.0");
        const LateBound document = new_document(document_class);
        if (schema_namespace == SchemaNamespace::empty) {
            cache.call(u"add", u"", schema);
        } else {
            SchemaWithImports(cache).add(base::Text(schema));
        }
        XmlValidation validation;
        validation.has_schema = number_of(cache, u"length") != 0;
        if (!validation.has_schema) {
            validation.schema_reason = text_of(document.object(u"parseError").get(u"reason"));
            return validation;
        }
        document.put_reference(u"schemas", cache);
        document.put(u"validateOnParse", true);
        validation.errors = parse_errors(document, load(document, xml));
        return validation;
    }

    XmlTransformation transform(base::TextView xml, base::TextView stylesheet,
                                XmlParameters parameters) override {
        require_length(xml);
        require_length(stylesheet);
        const auto transformer = LateBound::create(u"Msxml2.XSLTemplate.6.0");
        // The transformer takes no other kind.
        const LateBound sheet = new_document(u"Msxml2.FreeThreadedDOMDocument.6.0");
        if (const auto errors = parse_errors(sheet, load(sheet, stylesheet)); !errors.empty())
            return {errors.front().reason, {}};
        transformer.put_reference(u"stylesheet", sheet);
        const LateBound processor(windows::object_of(transformer.call(u"createProcessor").get()));
        const LateBound document = new_document(document_class);
        if (const auto errors = parse_errors(document, load(document, xml)); !errors.empty())
            refuse(errors.front().reason);
        put_input(processor, document);
        for (const auto& [name, value] : parameters) processor.call(u"addParameter", name, value);
        processor.call(u"transform");
        // Reading it empties it.
        return {{}, text_of(processor.get(u"output"))};
    }
};

}  // namespace

std::unique_ptr<XmlDocuments> make_windows_xml_documents() {
    return std::make_unique<MsxmlDocuments>();
}

}  // namespace tavrix::ports
