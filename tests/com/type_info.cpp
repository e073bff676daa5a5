#include "tests/com/type_info.h"

namespace tavrix::test {
namespace {

VARTYPE flattened(const TYPEDESC* type) {
    unsigned flags = 0;
    for (; type->vt == VT_PTR || type->vt == VT_SAFEARRAY; type = type->lptdesc) {
        flags |= type->vt == VT_PTR ? VT_BYREF : VT_ARRAY;
    }
    return static_cast<VARTYPE>(flags | type->vt);
}

}  // namespace

TypeAttributes::TypeAttributes(ITypeInfo* of) : info(of) {
    info->GetTypeAttr(&attributes);
}

TypeAttributes::~TypeAttributes() {
    info->ReleaseTypeAttr(attributes);
}

Function::Function(ITypeInfo* of, UINT index) : info(of) {
    info->GetFuncDesc(index, &description);
}

Function::~Function() {
    info->ReleaseFuncDesc(description);
}

std::vector<base::Text> Function::names() const {
    BSTR found[32] = {};
    UINT count = 0;
    info->GetNames(description->memid, found, 32, &count);
    std::vector<base::Text> texts;
    for (UINT i = 0; i < count; ++i)
        texts.emplace_back(windows::view_of(windows::Bstr(found[i]).get()));
    return texts;
}

VARTYPE Function::argument(int index) const {
    return flattened(&description->lprgelemdescParam[index].tdesc);
}

VARTYPE Function::result() const {
    return flattened(&description->elemdescFunc.tdesc);
}

bool Function::is_own() const {
    // The compilers of type libraries number IUnknown's functions from 0x60000000 and IDispatch's
    // from 0x60010000 on.
    return (static_cast<ULONG>(description->memid) & 0xFFFE0000) != 0x60000000;
}

ComPointer<ITypeInfo> type_info(const ComPointer<IDispatch>& object) {
    UINT count = 0;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u) << "the DLL was built without its type library";
    ComPointer<ITypeInfo> info;
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.out()), S_OK);
    return info;
}

base::Text name_of(ITypeInfo* info) {
    windows::Bstr name;
    info->GetDocumentation(MEMBERID_NIL, name.out(), nullptr, nullptr, nullptr);
    return base::Text(windows::view_of(name.get()));
}

base::Text help_of(ITypeInfo* info, MEMBERID member) {
    windows::Bstr help;
    info->GetDocumentation(member, nullptr, help.out(), nullptr, nullptr);
    return base::Text(windows::view_of(help.get()));
}

}  // namespace tavrix::test
