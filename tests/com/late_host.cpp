#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

base::Text take(BSTR text) {
    const windows::Bstr owned(text);
    return base::Text(windows::view_of(text));
}

}  // namespace

DISPID id_of(IDispatch* object, const char16_t* name) {
    auto* wide_name = const_cast<wchar_t*>(windows::wide(name));
    DISPID id = DISPID_UNKNOWN;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &wide_name, 1, LOCALE_USER_DEFAULT, &id), S_OK)
        << base::to_utf8(name);
    return id;
}

Outcome invoke(IDispatch* object, const char16_t* name, WORD flags, std::vector<VARIANT> arguments,
               const std::vector<NamedArgument>& named) {
    std::vector<LPOLESTR> names{const_cast<wchar_t*>(windows::wide(name))};
    for (const NamedArgument& argument : named) {
        names.push_back(const_cast<wchar_t*>(windows::wide(argument.name)));
    }
    std::vector<DISPID> ids(names.size());
    Outcome outcome;
    outcome.code = object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                                         LOCALE_USER_DEFAULT, ids.data());
    if (FAILED(outcome.code)) return outcome;

    std::vector<VARIANT> list;
    for (const NamedArgument& argument : named) list.push_back(argument.value);
    list.insert(list.end(), arguments.rbegin(), arguments.rend());
    std::vector<DISPID> places(ids.begin() + 1, ids.end());
    if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0) {
        places.insert(places.begin(), DISPID_PROPERTYPUT);
    }
    DISPPARAMS parameters{list.data(), places.data(), static_cast<UINT>(list.size()),
                          static_cast<UINT>(places.size())};
    EXCEPINFO information{};
    outcome.code = object->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                  outcome.result.out(), &information, &outcome.argument_index);
    outcome.number = information.scode;
    outcome.source = take(information.bstrSource);
    outcome.description = take(information.bstrDescription);
    return outcome;
}

Outcome call(const ComPointer<IDispatch>& object, const char16_t* name,
             std::vector<VARIANT> arguments) {
    return invoke(object.get(), name, DISPATCH_METHOD, std::move(arguments));
}

Outcome get(const ComPointer<IDispatch>& object, const char16_t* name,
            std::vector<VARIANT> arguments) {
    return invoke(object.get(), name, DISPATCH_PROPERTYGET, std::move(arguments));
}

Outcome put(const ComPointer<IDispatch>& object, const char16_t* name,
            std::vector<VARIANT> arguments) {
    return invoke(object.get(), name, DISPATCH_PROPERTYPUT, std::move(arguments));
}

base::Text bstr_of(const Variant& value) {
    EXPECT_EQ(value.type(), VT_BSTR);
    if (value.type() != VT_BSTR) return {};
    EXPECT_NE(value.get().bstrVal, nullptr);
    return base::Text(windows::view_of(value.get().bstrVal));
}

base::Bytes bytes_of(const Variant& value) {
    EXPECT_EQ(value.type(), VT_ARRAY | VT_UI1);
    if (value.type() != (VT_ARRAY | VT_UI1)) return {};
    SAFEARRAY* array = value.get().parray;
    EXPECT_EQ(array->rgsabound[0].lLbound, 0);
    const windows::SafeArrayAccess access(array);
    const auto* bytes = static_cast<const std::uint8_t*>(access.data());
    return {bytes, bytes + windows::element_count(array)};
}

VARIANT reference(void* variable, int type) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(VT_BYREF | type);
    value.byref = variable;
    return value;
}

VARIANT plain(LONG number) {
    VARIANT value{};
    value.vt = VT_I4;
    value.lVal = number;
    return value;
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
