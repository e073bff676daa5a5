// The type library that stands in the DLL, read as compilers read it, and live objects, asked as
// late-bound hosts ask: both must offer what hosts were promised, to the letter.

#include <map>

#include "com/guid.h"
#include "tests/com/event_sink.h"
#include "tests/com/interface_table.h"

namespace tavrix::test {
namespace {

// What the library says of a type or of a function is given back to it.
auto attributes_of(ITypeInfo* info) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(info->GetTypeAttr(&attributes), S_OK);
    const auto give_back = [info](TYPEATTR* given) { info->ReleaseTypeAttr(given); };
    return std::unique_ptr<TYPEATTR, decltype(give_back)>(attributes, give_back);
}

auto function_of(ITypeInfo* info, UINT index) {
    FUNCDESC* function = nullptr;
    EXPECT_EQ(info->GetFuncDesc(index, &function), S_OK);
    const auto give_back = [info](FUNCDESC* given) { info->ReleaseFuncDesc(given); };
    return std::unique_ptr<FUNCDESC, decltype(give_back)>(function, give_back);
}

// The name of a type or of one of its members; the test fails where nothing explains it.
base::Text name_of(ITypeInfo* info, MEMBERID member = MEMBERID_NIL) {
    windows::Bstr name;
    windows::Bstr help;
    info->GetDocumentation(member, name.out(), help.out(), nullptr, nullptr);
    const base::Text text(windows::view_of(name.get()));
    EXPECT_FALSE(windows::view_of(help.get()).empty()) << base::to_utf8(text) << " without help";
    return text;
}

// The function's own name, then those of its arguments.
std::vector<base::Text> names_of(ITypeInfo* info, MEMBERID function) {
    BSTR found[32] = {};
    UINT count = 0;
    EXPECT_EQ(info->GetNames(function, found, 32, &count), S_OK);
    std::vector<base::Text> names;
    for (UINT i = 0; i < count; ++i)
        names.emplace_back(windows::view_of(windows::Bstr(found[i]).get()));
    return names;
}

// A reference to the interface `_Class` is an object of the class.
std::string written(const TYPEDESC* type, ITypeInfo* info) {
    if (type->vt == VT_PTR && type->lptdesc->vt == VT_USERDEFINED) {
        ComPointer<ITypeInfo> object;
        EXPECT_EQ(info->GetRefTypeInfo(type->lptdesc->hreftype, object.out()), S_OK);
        const std::string name = base::to_utf8(name_of(object.get()));
        EXPECT_EQ(name.front(), '_');
        return name.substr(1);
    }
    unsigned flags = 0;
    for (; type->vt == VT_PTR || type->vt == VT_SAFEARRAY; type = type->lptdesc) {
        flags |= type->vt == VT_PTR ? VT_BYREF : VT_ARRAY;
    }
    return type_words(static_cast<VARTYPE>(flags | type->vt));
}

// "(ref text first, long second)". Compilers go by the flags as well as by the pointer, so flags
// that say otherwise are written down too.
std::string written_arguments(const FUNCDESC& function, const std::vector<base::Text>& names,
                              ITypeInfo* info) {
    std::string text;
    for (int i = 0; i < function.cParams; ++i) {
        const ELEMDESC& argument = function.lprgelemdescParam[i];
        const USHORT flags = argument.paramdesc.wParamFlags;
        const int usual =
            argument.tdesc.vt == VT_PTR ? PARAMFLAG_FIN | PARAMFLAG_FOUT : PARAMFLAG_FIN;
        text += i == 0 ? "" : ", ";
        if (flags != usual) text += "[flags " + std::to_string(flags) + "] ";
        text += written(&argument.tdesc, info);
        const auto place = static_cast<std::size_t>(i) + 1;
        if (place < names.size()) text += " " + base::to_utf8(names[place]);
    }
    return "(" + text + ")";
}

void expect_same_numbers(const ComPointer<IDispatch>& object, MEMBERID function,
                         const std::vector<base::Text>& texts) {
    std::vector<LPOLESTR> names;
    std::vector<DISPID> expected;
    for (const base::Text& text : texts) {
        expected.push_back(names.empty() ? function : static_cast<DISPID>(names.size()) - 1);
        names.push_back(const_cast<wchar_t*>(windows::wide(text)));
    }
    std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
    object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                          LOCALE_USER_DEFAULT, ids.data());
    EXPECT_EQ(ids, expected) << base::to_utf8(texts.at(0));
}

// The members in the notation of PublishedClass, each after its number. A live object has to know
// them by the same numbers.
std::map<MEMBERID, std::string> written_members(ITypeInfo* info,
                                                const ComPointer<IDispatch>& object) {
    std::map<MEMBERID, std::string> lines;
    const auto type = attributes_of(info);
    EXPECT_EQ(type->typekind, TKIND_DISPATCH);
    for (UINT i = 0; i < type->cFuncs; ++i) {
        const auto function = function_of(info, i);
        // The compilers of type libraries number IUnknown's functions from 0x60000000 and
        // IDispatch's from 0x60010000 on.
        if ((static_cast<ULONG>(function->memid) & 0xFFFE0000) == 0x60000000) continue;
        const std::vector<base::Text> names = names_of(info, function->memid);
        expect_same_numbers(object, function->memid, names);
        const std::string name = base::to_utf8(name_of(info, function->memid));
        const std::string result = written(&function->elemdescFunc.tdesc, info);
        const std::string arguments = written_arguments(*function, names, info);
        std::string& line = lines[function->memid];
        if (function->invkind == INVOKE_PROPERTYGET && line.empty() && arguments == "()") {
            line = "readonly " + result + " " + name;
        } else if (function->invkind == INVOKE_PROPERTYPUT && function->cParams == 1 &&
                   line == "readonly " + written(&function->lprgelemdescParam[0].tdesc, info) +
                               " " + name) {
            line.replace(0, std::string("readonly").size(), "property");
        } else {
            EXPECT_EQ(function->invkind, INVOKE_FUNC) << name;
            line += result + " " + name + arguments;
        }
    }
    return lines;
}

// The events, numbered. Hosts connect to the interface that the library names.
std::map<MEMBERID, std::string> written_events(ITypeInfo* info,
                                               const ComPointer<IDispatch>& object) {
    std::map<MEMBERID, std::string> names;
    const auto type = attributes_of(info);
    for (UINT i = 0; i < type->cFuncs; ++i) {
        const MEMBERID event = function_of(info, i)->memid;
        if (event < 0x60000000) names[event] = base::to_utf8(name_of(info, event));
    }
    EXPECT_TRUE(events_of(object, type->guid));
    return names;
}

std::map<MEMBERID, std::string> numbered(const std::vector<const char16_t*>& lines) {
    std::map<MEMBERID, std::string> numbered;
    for (const char16_t* line : lines) {
        numbered[static_cast<MEMBERID>(numbered.size()) + 1] = base::to_utf8(line);
    }
    return numbered;
}

void expect_class(ITypeInfo* creatable, const PublishedClass& published) {
    const base::Text name(published.name);
    const auto type = attributes_of(creatable);
    EXPECT_NE(type->wTypeFlags & TYPEFLAG_FCANCREATE, 0);
    CLSID registered{};
    EXPECT_EQ(CLSIDFromProgID(windows::wide(u"Tavrix." + name), &registered), S_OK);
    EXPECT_EQ(type->guid, registered);
    const auto object = create((u"Tavrix." + name).c_str());
    ASSERT_TRUE(object);
    ASSERT_EQ(type->cImplTypes, published.events.empty() ? 1 : 2);
    for (UINT i = 0; i < type->cImplTypes; ++i) {
        int flags = 0;
        HREFTYPE reference = 0;
        ComPointer<ITypeInfo> info;
        EXPECT_EQ(creatable->GetImplTypeFlags(i, &flags), S_OK);
        EXPECT_EQ(creatable->GetRefTypeOfImplType(i, &reference), S_OK);
        ASSERT_EQ(creatable->GetRefTypeInfo(reference, info.out()), S_OK);
        EXPECT_NE(attributes_of(info.get())->wTypeFlags & TYPEFLAG_FNONEXTENSIBLE, 0)
            << "compilers refuse names that are not there";
        if (flags == IMPLTYPEFLAG_FDEFAULT) {
            EXPECT_EQ(name_of(info.get()), u"_" + name);
            EXPECT_EQ(written_members(info.get(), object), numbered(published.members));
            // An object says itself of which class and interface it is.
            ComPointer<ITypeInfo> own;
            ASSERT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, own.out()), S_OK);
            EXPECT_EQ(attributes_of(own.get())->guid, attributes_of(info.get())->guid);
            ASSERT_EQ(object.query<IProvideClassInfo>()->GetClassInfo(own.out()), S_OK);
            EXPECT_EQ(attributes_of(own.get())->guid, registered);
        } else {
            EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE);
            EXPECT_EQ(name_of(info.get()), u"__" + name);
            EXPECT_EQ(written_events(info.get(), object), numbered(published.events));
        }
    }
}

TEST(Interface, IsWhatHostsWerePromised) {
    ComPointer<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(com::guid("5FC8EFCB-3C8D-44BB-8DB5-710083B78EB0"), 10, 0,
                             LOCALE_USER_DEFAULT, library.out()),
              S_OK);
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    // Names outside the language's code page would be lost.
    EXPECT_EQ(attributes->lcid, LCID{0x0415});
    library->ReleaseTLibAttr(attributes);

    std::map<base::Text, ComPointer<ITypeInfo>> classes;
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        TYPEKIND kind{};
        ComPointer<ITypeInfo> info;
        EXPECT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
        EXPECT_EQ(library->GetTypeInfo(i, info.out()), S_OK);
        if (kind == TKIND_COCLASS) classes[name_of(info.get())] = info;
    }
    EXPECT_EQ(classes.size(), published_classes().size());
    UINT types = 0;
    for (const PublishedClass& published : published_classes()) {
        SCOPED_TRACE(base::to_utf8(published.name));
        const auto found = classes.find(published.name);
        ASSERT_NE(found, classes.end());
        expect_class(found->second.get(), published);
        types += published.events.empty() ? 2 : 3;
    }
    EXPECT_EQ(library->GetTypeInfoCount(), types) << "a class, its interface and its events";
}

}  // namespace
}  // namespace tavrix::test
