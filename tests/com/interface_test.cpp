// The type library that stands in the DLL, read as compilers read it, and live objects, asked as
// late-bound hosts ask: both must offer what hosts were promised, to the letter.

#include <map>
#include <ostream>

#include "com/guid.h"
#include "tests/com/interface_table.h"
#include "tests/com/type_info.h"

namespace tavrix::test {

// A failure names the class.
static void PrintTo(const PublishedClass& published, std::ostream* out) {
    *out << base::to_utf8(published.name);
}

namespace {

constexpr struct {
    VARTYPE type;
    const char* word;
} type_words[] = {
    {VT_BSTR, "text"}, {VT_BOOL, "bool"},       {VT_UI1, "byte"},  {VT_I2, "integer"},
    {VT_I4, "long"},   {VT_CY, "currency"},     {VT_R8, "double"}, {VT_DISPATCH, "object"},
    {VT_VOID, "void"}, {VT_VARIANT, "variant"},
};

std::string written(VARTYPE type) {
    const VARTYPE element = static_cast<VARTYPE>(type & ~(VT_BYREF | VT_ARRAY));
    std::string word = "type " + std::to_string(element);
    for (const auto& row : type_words) {
        if (row.type == element) word = row.word;
    }
    return ((type & VT_BYREF) != 0 ? "ref " : "") + word + ((type & VT_ARRAY) != 0 ? "[]" : "");
}

// "(ref text first, long second)". Compilers go by the flags as well as by the pointer, so flags
// that say otherwise are written down too.
std::string written_arguments(const Function& function) {
    const std::vector<base::Text> names = function.names();
    std::string text;
    for (int i = 0; i < function->cParams; ++i) {
        const VARTYPE type = function.argument(i);
        const USHORT flags = function->lprgelemdescParam[i].paramdesc.wParamFlags;
        const int usual = (type & VT_BYREF) != 0 ? PARAMFLAG_FIN | PARAMFLAG_FOUT : PARAMFLAG_FIN;
        text += i == 0 ? "" : ", ";
        if (flags != usual) text += "[flags " + std::to_string(flags) + "] ";
        text += written(type);
        const auto place = static_cast<std::size_t>(i) + 1;
        if (place < names.size()) text += " " + base::to_utf8(names[place]);
    }
    return "(" + text + ")";
}

// The members in the notation of PublishedClass::members.
std::map<MEMBERID, std::string> written_members(ITypeInfo* info) {
    std::map<MEMBERID, std::string> lines;
    const TypeAttributes type(info);
    for (UINT i = 0; i < type->cFuncs; ++i) {
        const Function function(info, i);
        if (!function.is_own()) continue;
        const std::string name = base::to_utf8(function.names().at(0));
        const std::string arguments = written_arguments(function);
        std::string& line = lines[function->memid];
        if (function->invkind == INVOKE_PROPERTYGET && line.empty() && arguments == "()") {
            line = "readonly " + written(function.result()) + " " + name;
        } else if (function->invkind == INVOKE_PROPERTYPUT && function->cParams == 1 &&
                   line == "readonly " + written(function.argument(0)) + " " + name) {
            line.replace(0, std::string("readonly").size(), "property");
        } else {
            const std::string kind = function->invkind == INVOKE_FUNC ? "" : "property function ";
            line += kind + written(function.result()) + " " + name + arguments;
        }
    }
    return lines;
}

ComPointer<ITypeLib> library() {
    ComPointer<ITypeLib> library;
    EXPECT_EQ(
        LoadTypeLibEx(windows::wide(beside_program(u"Tavrix.dll")), REGKIND_NONE, library.out()),
        S_OK);
    return library;
}

std::map<base::Text, ComPointer<ITypeInfo>> classes_of(ITypeLib* library) {
    std::map<base::Text, ComPointer<ITypeInfo>> classes;
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        TYPEKIND kind{};
        ComPointer<ITypeInfo> info;
        EXPECT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
        EXPECT_EQ(library->GetTypeInfo(i, info.out()), S_OK);
        if (kind == TKIND_COCLASS) classes[name_of(info.get())] = info;
    }
    return classes;
}

// The dispatch interface behind exactly these flags; empty when the class has none.
ComPointer<ITypeInfo> interface_of(ITypeInfo* creatable, int flags) {
    ComPointer<ITypeInfo> info;
    const TypeAttributes type(creatable);
    for (UINT i = 0; i < type->cImplTypes; ++i) {
        int found = 0;
        HREFTYPE reference = 0;
        EXPECT_EQ(creatable->GetImplTypeFlags(i, &found), S_OK);
        if (found != flags) continue;
        EXPECT_FALSE(info) << "two interfaces with the flags " << flags;
        EXPECT_EQ(creatable->GetRefTypeOfImplType(i, &reference), S_OK);
        EXPECT_EQ(creatable->GetRefTypeInfo(reference, info.out()), S_OK);
        EXPECT_EQ(TypeAttributes(info.get())->typekind, TKIND_DISPATCH);
    }
    return info;
}

void expect_help(ITypeInfo* info) {
    EXPECT_NE(help_of(info), u"") << base::to_utf8(name_of(info));
    const TypeAttributes type(info);
    for (UINT i = 0; i < type->cFuncs; ++i) {
        const Function function(info, i);
        if (!function.is_own()) continue;
        EXPECT_NE(help_of(info, function->memid), u"") << base::to_utf8(function.names().at(0));
    }
}

TEST(Interface, HasTheNumbersAndTheLanguageOfTheLibrary) {
    const auto tavrix = library();
    ASSERT_TRUE(tavrix);
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(tavrix->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->wMajorVerNum, 10);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    // Names outside the language's code page would be lost.
    EXPECT_EQ(attributes->lcid, LCID{0x0415});
    tavrix->ReleaseTLibAttr(attributes);
}

TEST(Interface, IsRegisteredForCompilers) {
    ComPointer<ITypeLib> registered;
    EXPECT_EQ(LoadRegTypeLib(com::guid("5FC8EFCB-3C8D-44BB-8DB5-710083B78EB0"), 10, 0,
                             LOCALE_USER_DEFAULT, registered.out()),
              S_OK);
    EXPECT_TRUE(registered);
}

TEST(Interface, OffersNoOtherClass) {
    const auto tavrix = library();
    ASSERT_TRUE(tavrix);
    auto classes = classes_of(tavrix.get());
    UINT types = 0;
    for (const PublishedClass& published : published_classes()) {
        classes.erase(published.name);
        types += published.events.empty() ? 2 : 3;
    }
    for (const auto& [name, info] : classes) ADD_FAILURE() << base::to_utf8(name);
    EXPECT_EQ(tavrix->GetTypeInfoCount(), types) << "a class, its interface and its events";
}

class PublishedInterface : public testing::TestWithParam<PublishedClass> {
  protected:
    void SetUp() override {
        const auto tavrix = library();
        ASSERT_TRUE(tavrix);
        creatable = classes_of(tavrix.get())[name];
        ASSERT_TRUE(creatable) << "the library has no class of this name";
        members = interface_of(creatable.get(), IMPLTYPEFLAG_FDEFAULT);
        ASSERT_TRUE(members) << "the class has no default interface";
        events = interface_of(creatable.get(), IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE);
    }
    ComPointer<IDispatch> created() const { return create((u"Tavrix." + name).c_str()); }

    const base::Text name{GetParam().name};
    ComPointer<ITypeInfo> creatable;
    ComPointer<ITypeInfo> members;
    ComPointer<ITypeInfo> events;
};

TEST_P(PublishedInterface, DeclaresEachMemberAndNoOther) {
    EXPECT_EQ(name_of(members.get()), u"_" + name);
    std::map<MEMBERID, std::string> declared = written_members(members.get());
    MEMBERID number = 0;
    for (const char16_t* line : GetParam().members) {
        EXPECT_EQ(declared[++number], base::to_utf8(line)) << base::to_utf8(name) << " " << number;
        declared.erase(number);
    }
    for (const auto& [extra, line] : declared) {
        ADD_FAILURE() << base::to_utf8(name) << " has too much: " << extra << " " << line;
    }
}

TEST_P(PublishedInterface, DeclaresItsEventsAsTheDefaultSource) {
    if (GetParam().events.empty()) {
        EXPECT_FALSE(events) << base::to_utf8(name) << " raises no events";
        return;
    }
    ASSERT_TRUE(events) << base::to_utf8(name) << " has no source of events";
    EXPECT_EQ(name_of(events.get()), u"__" + name);
    std::map<MEMBERID, base::Text> declared;
    const TypeAttributes type(events.get());
    for (UINT i = 0; i < type->cFuncs; ++i) {
        const Function function(events.get(), i);
        if (function.is_own()) declared[function->memid] = function.names().at(0);
    }
    std::map<MEMBERID, base::Text> expected;
    for (const char16_t* event : GetParam().events) {
        expected[static_cast<MEMBERID>(expected.size()) + 1] = event;
    }
    EXPECT_EQ(declared, expected) << base::to_utf8(name);
    // Hosts connect to the interface that the library names.
    const auto container = created().query<IConnectionPointContainer>();
    ASSERT_TRUE(container);
    ComPointer<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(type->guid, point.out()), S_OK);
}

TEST_P(PublishedInterface, ExplainsItself) {
    EXPECT_NE(help_of(creatable.get()), u"") << base::to_utf8(name);
    expect_help(members.get());
    if (events) expect_help(events.get());
}

TEST_P(PublishedInterface, IsWhatAnObjectAnswersTo) {
    const TypeAttributes type(members.get());
    const TypeAttributes class_type(creatable.get());
    EXPECT_NE(class_type->wTypeFlags & TYPEFLAG_FCANCREATE, 0);
    CLSID registered{};
    ASSERT_EQ(CLSIDFromProgID(windows::wide(u"Tavrix." + name), &registered), S_OK);
    EXPECT_EQ(class_type->guid, registered);
    const auto object = created();
    ASSERT_TRUE(object);
    const auto own_type = type_info(object);
    ASSERT_TRUE(own_type);
    EXPECT_EQ(TypeAttributes(own_type.get())->guid, type->guid);
    const auto provider = object.query<IProvideClassInfo>();
    ASSERT_TRUE(provider);
    ComPointer<ITypeInfo> own_class;
    ASSERT_EQ(provider->GetClassInfo(own_class.out()), S_OK);
    EXPECT_EQ(TypeAttributes(own_class.get())->guid, registered);

    for (UINT i = 0; i < type->cFuncs; ++i) {
        const Function function(members.get(), i);
        if (!function.is_own()) continue;
        const std::vector<base::Text> texts = function.names();
        std::vector<LPOLESTR> names;
        for (const base::Text& text : texts)
            names.push_back(const_cast<wchar_t*>(windows::wide(text)));
        std::vector<DISPID> expected{function->memid};
        while (expected.size() < names.size())
            expected.push_back(static_cast<DISPID>(expected.size()) - 1);
        std::vector<DISPID> ids(names.size(), DISPID_UNKNOWN);
        EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names.data(), static_cast<UINT>(names.size()),
                                        LOCALE_USER_DEFAULT, ids.data()),
                  S_OK)
            << base::to_utf8(name + u"." + texts.at(0));
        EXPECT_EQ(ids, expected) << base::to_utf8(name + u"." + texts.at(0));
    }
}

INSTANTIATE_TEST_SUITE_P(Tavrix, PublishedInterface, testing::ValuesIn(published_classes()),
                         [](const auto& of) { return base::to_utf8(of.param.name); });

}  // namespace
}  // namespace tavrix::test
