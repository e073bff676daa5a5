#include "tests/com/late_host.h"

#include <cstring>
#include <map>
#include <sstream>

namespace tavrix::test {
namespace {

base::Text take(BSTR text) {
    const windows::Bstr owned(text);
    return base::Text(windows::view_of(text));
}

}  // namespace

Outcome invoke(const ComPointer<IDispatch>& object, const char16_t* name, WORD flags,
               const std::vector<Argument>& arguments, const std::vector<NamedArgument>& named,
               LCID locale) {
    std::vector<LPOLESTR> names{const_cast<wchar_t*>(windows::wide(name))};
    // The last argument comes first, and the named ones before all others.
    std::vector<VARIANT> list;
    for (const NamedArgument& argument : named) {
        names.push_back(const_cast<wchar_t*>(windows::wide(argument.name)));
        list.push_back(argument.value.get());
    }
    for (auto each = arguments.rbegin(); each != arguments.rend(); ++each) {
        list.push_back(each->get());
    }
    std::vector<DISPID> ids(names.size());
    Outcome outcome;
    outcome.code = object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                                         locale, ids.data());
    if (FAILED(outcome.code)) return outcome;

    std::vector<DISPID> places(ids.begin() + 1, ids.end());
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
        places.insert(places.begin(), DISPID_PROPERTYPUT);
    }
    DISPPARAMS parameters{list.data(), places.data(), static_cast<UINT>(list.size()),
                          static_cast<UINT>(places.size())};
    const std::vector<VARIANT> sent = list;
    EXCEPINFO information{};
    outcome.code = object->Invoke(ids[0], IID_NULL, locale, flags, &parameters,
                                  outcome.result.out(), &information, &outcome.argument_index);
    EXPECT_TRUE(list.empty() ||
                std::memcmp(list.data(), sent.data(), sizeof(VARIANT) * list.size()) == 0)
        << "values that are no references stay the host's";
    outcome.number = information.scode;
    outcome.source = take(information.bstrSource);
    outcome.description = take(information.bstrDescription);
    return outcome;
}

Outcome call(const ComPointer<IDispatch>& object, const char16_t* name,
             const std::vector<Argument>& arguments) {
    return invoke(object, name, DISPATCH_METHOD, arguments);
}

std::string type_words(VARTYPE type) {
    const std::map<int, const char*> words = {
        {VT_EMPTY, "empty"},     {VT_NULL, "null"},      {VT_VOID, "void"},
        {VT_BSTR, "text"},       {VT_BOOL, "bool"},      {VT_UI1, "byte"},
        {VT_I2, "integer"},      {VT_I4, "long"},        {VT_CY, "currency"},
        {VT_R8, "double"},       {VT_DATE, "date"},      {VT_DISPATCH, "object"},
        {VT_VARIANT, "variant"}, {VT_DECIMAL, "decimal"}};
    const auto word = words.find(type & ~(VT_BYREF | VT_ARRAY));
    return ((type & VT_BYREF) != 0 ? "ref " : "") +
           (word == words.end() ? "type " + std::to_string(type) : word->second) +
           ((type & VT_ARRAY) != 0 ? "[]" : "");
}

std::string written(const VARIANT& value) {
    VARIANT seen = windows::look_through(value);
    std::string text = type_words(static_cast<VARTYPE>(seen.vt | (value.vt & VT_BYREF)));
    if (seen.vt == (VT_ARRAY | VT_UI1)) {
        EXPECT_EQ(seen.parray->rgsabound[0].lLbound, 0);
        const windows::SafeArrayAccess access(seen.parray);
        const auto* bytes = static_cast<const std::uint8_t*>(access.data());
        for (ULONG i = 0; i < windows::element_count(seen.parray); ++i) {
            text += " " + std::to_string(bytes[i]);
        }
    } else if (seen.vt != VT_DISPATCH && seen.vt != VT_EMPTY) {
        EXPECT_FALSE(seen.vt == VT_BSTR && seen.bstrVal == nullptr);
        Variant content;
        VariantChangeTypeEx(content.address(), &seen, LOCALE_INVARIANT, 0, VT_BSTR);
        if (content.type() == VT_BSTR) {
            text += " " + base::to_utf8(windows::view_of(content.get().bstrVal));
        }
    }
    return text;
}

std::string written(const Outcome& outcome) {
    return outcome.code == S_OK ? written(outcome.result.get())
                                : refused(outcome.code, outcome.argument_index);
}

std::string refused(HRESULT code, UINT argument_index) {
    std::ostringstream text;
    text << "refused with " << std::hex << code;
    if (argument_index != Outcome::none) text << " for argument " << argument_index;
    return text.str();
}

std::string answer(const ComPointer<IDispatch>& object, const char16_t* name,
                   const std::vector<Argument>& arguments) {
    return written(call(object, name, arguments));
}

VARIANT by_reference(void* variable, int type) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(VT_BYREF | type);
    value.byref = variable;
    return value;
}

VARIANT by_reference(Variant& variable) {
    return by_reference(variable.address(), VT_VARIANT);
}

base::Text beside_program(base::TextView file) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const base::Text program = windows::text_from_wide(path);
    return program.substr(0, program.find_last_of(u'\\') + 1) + base::Text(file);
}

ComPointer<IDispatch> create(const char16_t* prog_id) {
    CLSID class_id{};
    EXPECT_EQ(CLSIDFromProgID(windows::wide(prog_id), &class_id), S_OK);
    ComPointer<IDispatch> object;
    EXPECT_EQ(
        CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.out_void()),
        S_OK);
    return object;
}

LoadedDll::LoadedDll(base::TextView file)
    : module_(LoadLibraryW(windows::wide(beside_program(file)))) {
    EXPECT_NE(module_, nullptr) << base::to_utf8(file);
}

LoadedDll::~LoadedDll() {
    FreeLibrary(module_);
}

}  // namespace tavrix::test
