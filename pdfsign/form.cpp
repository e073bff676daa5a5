#include "pdfsign/form.h"

#include "pdfsign/refusal.h"
#include "pdfsign/visits.h"

namespace tavrix::pdfsign {
namespace {

constexpr int deepest_field = 50;
constexpr std::size_t most_fields = 200'000;

// No changes at all: the first of the three levels of certification, or of a field that locks.
bool forbids_changes(QPDFObjectHandle parameters) {
    QPDFObjectHandle level = parameters.isDictionary() ? parameters.getKey("/P") : parameters;
    return level.isInteger() && level.getIntValue() == 1;
}

bool is_certified_closed(QPDFObjectHandle catalog) {
    QPDFObjectHandle permissions = catalog.getKey("/Perms");
    if (!permissions.isDictionary()) return false;
    QPDFObjectHandle signature = permissions.getKey("/DocMDP");
    if (!signature.isDictionary()) return false;
    QPDFObjectHandle references = signature.getKey("/Reference");
    if (!references.isArray()) return false;
    for (QPDFObjectHandle entry : references.getArrayAsVector()) {
        if (entry.isDictionary() && forbids_changes(entry.getKey("/TransformParams"))) return true;
    }
    return false;
}

class FieldWalk {
  public:
    explicit FieldWalk(Form& form) : form_(form) {}

    void walk(QPDFObjectHandle fields, const std::string& parent, int depth) {
        if (depth > deepest_field) refuse(u"pola formularza są zagnieżdżone zbyt głęboko");
        if (!visits_.is_first(fields)) return;
        for (int i = 0; i < fields.getArrayNItems(); ++i) {
            QPDFObjectHandle field = fields.getArrayItem(i);
            if (!field.isDictionary() || !visits_.is_first(field)) continue;
            if (visits_.count() > most_fields) refuse(u"formularz ma zbyt wiele pól");
            look_at(field, parent, depth);
        }
    }

  private:
    void look_at(QPDFObjectHandle& field, const std::string& parent, int depth) {
        std::string name = parent;
        if (QPDFObjectHandle own = field.getKey("/T"); own.isString()) {
            if (depth == 0) form_.names.insert(own.getUTF8Value());
            name += (parent.empty() ? "" : ".") + own.getUTF8Value();
        }
        QPDFObjectHandle value = field.getKey("/V");
        if (value.isDictionary() && value.hasKey("/Contents") && value.hasKey("/ByteRange")) {
            form_.signatures.push_back({name, value});
            if (forbids_changes(field.getKey("/Lock"))) form_.is_closed = true;
        }
        QPDFObjectHandle kids = field.getKey("/Kids");
        if (kids.isArray()) {
            walk(kids, name, depth + 1);
        } else if (!field.hasKey("/AP")) {
            form_.is_drawn = false;
        }
    }

    Form& form_;
    Visits visits_;
};

}  // namespace

Form read_form(QPDF& document) {
    QPDFObjectHandle catalog = document.getRoot();
    Form form;
    form.dictionary = catalog.getKey("/AcroForm");
    form.is_closed = is_certified_closed(catalog);
    QPDFObjectHandle needs = catalog.getKey("/NeedsRendering");
    form.is_dynamic = needs.isBool() && needs.getBoolValue();
    if (!form.dictionary.isDictionary()) return form;
    if (QPDFObjectHandle fields = form.dictionary.getKey("/Fields"); fields.isArray()) {
        FieldWalk(form).walk(fields, {}, 0);
    }
    return form;
}

}  // namespace tavrix::pdfsign
