// What object browsers and early-bound compilers read.

#include "com/type_library.h"

#include "com/guid.h"
#include "tests/com/probe.h"
#include "tests/com/type_info.h"

namespace tavrix::test {
namespace {

TEST(TypeLibrary, DescribesEachMemberUnderItsNumber) {
    const auto ksef = create(u"Tavrix.KseF_comm");
    const auto info = type_info(ksef);
    ASSERT_TRUE(info);
    EXPECT_EQ(name_of(info.get()), u"_KseF_comm");
    EXPECT_EQ(TypeAttributes(info.get())->typekind, TKIND_DISPATCH);
    for (DISPID member = 1; member <= 12; ++member) {
        const Function function(info.get(), index_of(info.get(), member));
        ASSERT_FALSE(function.names().empty());
        EXPECT_EQ(id_of(ksef.get(), function.names()[0].c_str()), member);
    }
}

TEST(TypeLibrary, DescribesArgumentsAsTheyTravel) {
    const auto info = type_info(create(u"Tavrix.KseF_comm"));
    ASSERT_TRUE(info);
    const Function send(info.get(), index_of(info.get(), 4));
    EXPECT_EQ(send.names(),
              (std::vector<base::Text>{u"SendInvoiceToKSeF", u"dbb", u"nip", u"Token",
                                       u"xmlContent", u"systemCode", u"schemaVersion", u"formcode",
                                       u"pog517", u"Tablica", u"Tablica_id"}));
    const VARTYPE types[] = {
        VT_BYREF | VT_DISPATCH, VT_BSTR, VT_BSTR, VT_BSTR, VT_BSTR, VT_BYREF | VT_BSTR,
        VT_BYREF | VT_BSTR,     VT_I4,   VT_BSTR, VT_I4};
    ASSERT_EQ(send->cParams, 10);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(send.argument(i), types[i]) << i;
    EXPECT_EQ(send.result(), VT_BSTR);
    const Function encode(info.get(), index_of(info.get(), 10));
    EXPECT_EQ(encode.names()[0], u"Base64Encode");
    EXPECT_EQ(encode.argument(0), VT_BYREF | VT_ARRAY | VT_UI1);
}

TEST(TypeLibrary, NamesTheClassBehindAnObject) {
    const auto provider = create(u"Tavrix.KseF_comm").query<IProvideClassInfo>();
    ASSERT_TRUE(provider);
    ComPointer<ITypeInfo> info;
    ASSERT_EQ(provider->GetClassInfo(info.out()), S_OK);
    EXPECT_EQ(name_of(info.get()), u"KseF_comm");
    EXPECT_EQ(TypeAttributes(info.get())->typekind, TKIND_COCLASS);
}

TEST(TypeLibrary, IsRegisteredForCompilers) {
    ComPointer<ITypeLib> library;
    const GUID id = com::guid("5FC8EFCB-3C8D-44BB-8DB5-710083B78EB0");
    EXPECT_EQ(LoadRegTypeLib(id, 10, 0, LOCALE_USER_DEFAULT, library.out()), S_OK);
    ASSERT_TRUE(library);
}

TEST(TypeLibrary, KeepsPolishLetters) {
    const base::Text path = beside_program(u"probe.tlb");
    const com::CreatableClass classes[] = {{probe_class, &make_probe}};
    com::write_type_library({.library = u"Probes",
                             .version_major = 1,
                             .classes = classes,
                             .type_library_id = com::guid("693EA445-72CE-4762-B80A-5942361C7918")},
                            path);
    {
        ComPointer<ITypeLib> library;
        ASSERT_EQ(LoadTypeLibEx(windows::wide(path), REGKIND_NONE, library.out()), S_OK);
        ComPointer<ITypeInfo> info;
        ASSERT_EQ(library->GetTypeInfoOfGuid(probe_class.interface_id, info.out()), S_OK);
        MEMBERID ids[2] = {};
        LPOLESTR names[] = {const_cast<wchar_t*>(L"Potęga"), const_cast<wchar_t*>(L"Wykładnik")};
        EXPECT_EQ(info->GetIDsOfNames(names, 2, ids), S_OK);
        EXPECT_EQ(ids[0], id_of(make_probe().get(), u"Potęga"));
        EXPECT_EQ(ids[1], 1);
    }
    DeleteFileW(windows::wide(path));
}

}  // namespace
}  // namespace tavrix::test
