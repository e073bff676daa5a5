#include "ports/windows/adapters.h"

#include "base/base64.h"
#include "base/error.h"
#include "windows/late_bound.h"
#include "windows/variant_value.h"

namespace tavrix::ports {
namespace {

using windows::LateBound;

const char16_t* prog_id(DomDocument document) {
    switch (document) {
        case DomDocument::version_6:
            return u"Msxml2.DOMDocument.6.0";
        case DomDocument::version_3:
            return u"MSXML2.DOMDocument.3.0";
        case DomDocument::unversioned:
            break;
    }
    return u"MSXML2.DOMDocument";
}

// The element is useless without its document, so they travel together.
struct TypedElement {
    LateBound document;
    LateBound element;
};

TypedElement create_base64_element(DomDocument version, base::TextView name) {
    TypedElement typed;
    typed.document = LateBound::create(prog_id(version));
    typed.element =
        LateBound(windows::object_of(typed.document.call(u"createElement", name).get()));
    typed.element.put(u"dataType", u"bin.base64");
    return typed;
}

// Some versions of the component decode what is not Base64 into something or nothing, so it is
// checked first.
void require_base64(base::TextView element, base::TextView base64) {
    if (base::base64_decode(base::to_utf8(base64))) return;
    throw base::AutomationError(base::ErrorNumber::type_mismatch, u"Xml",
                                u"Error parsing the text of element '" + base::Text(element) +
                                    u"' as bin.base64 datatype.");
}

class Msxml final : public Xml {
  public:
    base::Bytes bytes_from_base64(DomDocument document, base::TextView element,
                                  base::TextView base64) override;
    base::Text base64_from_bytes(DomDocument document, base::TextView element,
                                 base::ByteView bytes) override;
};

base::Bytes Msxml::bytes_from_base64(DomDocument document, base::TextView element,
                                     base::TextView base64) {
    require_base64(element, base64);
    const TypedElement typed = create_base64_element(document, element);
    typed.element.put(u"text", base64);
    // An element without text has no typed value at all.
    base::Value value = windows::value_of(typed.element.get(u"nodeTypedValue").get());
    auto* bytes = std::get_if<base::Bytes>(&value);
    return bytes != nullptr ? std::move(*bytes) : base::Bytes();
}

base::Text Msxml::base64_from_bytes(DomDocument document, base::TextView element,
                                    base::ByteView bytes) {
    const TypedElement typed = create_base64_element(document, element);
    typed.element.put(u"nodeTypedValue", bytes);
    return base::Text(windows::view_of(typed.element.get(u"text").get().bstrVal));
}

}  // namespace

std::unique_ptr<Xml> make_windows_xml() {
    return std::make_unique<Msxml>();
}

}  // namespace tavrix::ports
