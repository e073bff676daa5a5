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

// Of msxml2.idl; no import library has it.
constexpr IID processor_interface = {
    0x2933bf92, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

[[noreturn]] void refuse(const base::Text& reason) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"XmlDocuments", reason);
}

constexpr base::TextView too_long = u"Dokument jest dłuższy niż 100 000 000 znaków.\r\n";

bool is_too_long(base::TextView xml) {
    return xml.size() > XmlDocuments::most_characters;
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

XmlError told(const LateBound& error) {
    return {text_of(error.get(u"reason")), number_of(error, u"line"), number_of(error, u"linepos")};
}

// Nothing where the document is in order.
std::vector<XmlError> parse_errors(const LateBound& document, bool loaded) {
    const LateBound error = document.object(u"parseError");
    if (loaded && number_of(error, u"errorCode") == 0) return {};
    return {told(error)};
}

// RFC 8089 of a path with a drive or of a share.
base::Text address_of(const base::Text& path) {
    base::Text address = path.starts_with(u"\\\\") ? u"file:" : u"file:///";
    for (const char byte : base::to_utf8(path)) {
        const bool is_plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                              (byte >= '0' && byte <= '9') ||
                              std::string_view("-._~/:").find(byte) != std::string_view::npos;
        constexpr base::TextView digits = u"0123456789ABCDEF";
        const auto value = static_cast<std::uint8_t>(byte);
        if (byte == '\\') {
            address += u'/';
        } else if (is_plain) {
            address += static_cast<char16_t>(value);
        } else {
            address += {u'%', digits[value >> 4], digits[value & 15]};
        }
    }
    return address;
}

// A schema as one document, and before it those that it imports: given a file, the component looks
// for nothing else, and the addresses in the files are of the web. What they name is taken from the
// schema's own folder.
class SchemaWithImports {
  public:
    explicit SchemaWithImports(const LateBound& cache) : cache_(cache) {}

    void add(const base::Text& path) {
        if (!added_.insert(path).second) return;
        const LateBound schema = read(path);
        std::set<base::Text> included = {path};
        include(schema, path, included);
        for (const LateBound& import : children(schema, u"import")) {
            const base::Text location = attribute(import, u"schemaLocation");
            if (location.empty()) continue;
            const base::Text file = beside(path, location);
            add(file);
            // Known by its namespace now; Wine's component looks for the file all the same.
            import.call(u"setAttribute", u"schemaLocation", address_of(file));
        }
        // Read once more, the prefixes of all its pieces are in one place.
        const LateBound whole = new_document(document_class);
        if (!load(whole, text_of(schema.get(u"xml"))))
            refuse(parse_errors(whole, false).front().reason);
        cache_.call(u"add", attribute(whole.object(u"documentElement"), u"targetNamespace"),
                    windows::ComPointer<IDispatch>(whole.dispatch()));
    }

  private:
    // Puts what a schema includes in the place of the element that says so.
    static void include(const LateBound& schema, const base::Text& path,
                        std::set<base::Text>& included) {
        const LateBound root = schema.object(u"documentElement");
        for (const LateBound& element : children(schema, u"include")) {
            const base::Text file = beside(path, attribute(element, u"schemaLocation"));
            root.call(u"removeChild", windows::ComPointer<IDispatch>(element.dispatch()));
            if (!included.insert(file).second) continue;
            const LateBound piece = read(file);
            include(piece, file, included);
            take_prefixes(piece.object(u"documentElement"), root);
            for (const LateBound& child : children(piece, u"")) take(child, root);
        }
    }
    static void take(const LateBound& child, const LateBound& root) {
        const windows::Variant copy = child.call(u"cloneNode", true);
        const windows::ComPointer<IDispatch> node = windows::object_of(copy.get());
        const windows::ComPointer<IDispatch> first(root.object(u"firstChild").dispatch());
        // Imports stand before everything else.
        if (text_of(child.get(u"baseName")) == u"import" && first) {
            root.call(u"insertBefore", node, first);
        } else {
            root.call(u"appendChild", node);
        }
    }
    // Types are named by prefixes, which only the root declares.
    static void take_prefixes(const LateBound& from, const LateBound& to) {
        const LateBound attributes = from.object(u"attributes");
        for (std::int32_t i = 0; i < number_of(attributes, u"length"); ++i) {
            const LateBound declaration = attributes.object(u"item", i);
            const base::Text name = text_of(declaration.get(u"nodeName"));
            const base::Text value = text_of(declaration.get(u"text"));
            if (!name.starts_with(u"xmlns:")) continue;
            const base::Text before = attribute(to, name);
            if (before.empty()) to.call(u"setAttribute", name, value);
            if (!before.empty() && before != value)
                refuse(u"Przedrostek " + name + u" znaczy co innego w dołączonym schemacie.\r\n");
        }
    }
    static LateBound read(const base::Text& path) {
        LateBound schema = new_document(document_class);
        schema.put(u"validateOnParse", false);
        const windows::Variant loaded = schema.call(u"load", path);
        if (loaded.get().vt != VT_BOOL || loaded.get().boolVal == VARIANT_FALSE)
            refuse(parse_errors(schema, false).front().reason);
        return schema;
    }
    // Elements under the root; all of them where `name` is empty.
    static std::vector<LateBound> children(const LateBound& schema, const base::Text& name) {
        const base::Text path =
            name.empty() ? base::Text(u"/*/*") : u"/*/*[local-name()='" + name + u"']";
        const LateBound found(windows::object_of(schema.call(u"selectNodes", path).get()));
        std::vector<LateBound> elements;
        for (std::int32_t i = 0; i < number_of(found, u"length"); ++i)
            elements.push_back(found.object(u"item", i));
        return elements;
    }
    static base::Text attribute(const LateBound& element, base::TextView name) {
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
    windows::ComPointer<IXSLProcessor> early;
    windows::check(processor.dispatch()->QueryInterface(processor_interface, early.out_void()),
                   u"IXSLProcessor");
    const windows::Variant input(windows::ComPointer<IDispatch>(document.dispatch()));
    windows::check(early->put_input(input.get()), u"IXSLProcessor.input");
}

class MsxmlSchema final : public XmlSchema {
  public:
    MsxmlSchema(base::TextView path, SchemaNamespace schema_namespace)
        : schema_namespace_(schema_namespace) {
        // The component would fetch it.
        if (path.find(u"://") != base::TextView::npos) refuse(u"To nie jest plik.\r\n");
        if (schema_namespace == SchemaNamespace::empty) {
            cache_.call(u"add", u"", path);
        } else {
            SchemaWithImports(cache_).add(base::Text(path));
        }
    }

    XmlValidation validate(base::TextView xml) override {
        if (is_too_long(xml)) return {true, {}, {{base::Text(too_long), 0, 0}}};
        const LateBound document = new_document(document_class);
        XmlValidation validation;
        validation.has_schema = number_of(cache_, u"length") != 0;
        if (!validation.has_schema) {
            validation.schema_reason = text_of(document.object(u"parseError").get(u"reason"));
            return validation;
        }
        document.put_reference(u"schemas", cache_);
        document.put(u"validateOnParse", true);
        validation.errors = parse_errors(document, load(document, xml));
        // What holds a document against its schemas while it is read finds it valid here; Wine's
        // component only does when it is asked.
        if (schema_namespace_ == SchemaNamespace::its_own && validation.errors.empty()) {
            if (const LateBound error(windows::object_of(document.call(u"validate").get()));
                number_of(error, u"errorCode") != 0)
                validation.errors = {told(error)};
        }
        return validation;
    }

  private:
    SchemaNamespace schema_namespace_;
    LateBound cache_ = LateBound::create(u"Msxml2.XMLSchemaCache.6.0");
};

class MsxmlDocuments final : public XmlDocuments {
  public:
    std::unique_ptr<XmlSchema> load_schema(base::TextView path,
                                           SchemaNamespace schema_namespace) override {
        return std::make_unique<MsxmlSchema>(path, schema_namespace);
    }

    XmlTransformation transform(base::TextView xml, base::TextView stylesheet,
                                XmlParameters parameters) override {
        if (is_too_long(xml) || is_too_long(stylesheet)) refuse(base::Text(too_long));
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
