// The DLL's own door: class objects, locks, unloading, registration.

#include <map>

#include "tests/com/interface_table.h"
#include "tests/com/late_host.h"
#include "tests/com/run_program.h"
#include "windows/handles.h"

namespace tavrix::test {
namespace {

using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
using NoArguments = HRESULT STDAPICALLTYPE();
using Install = HRESULT STDAPICALLTYPE(BOOL, LPCWSTR);

class Module : public testing::Test {
  protected:
    LoadedDll dll{u"Tavrix.dll"};
    GetClassObject* get_class_object = dll.function<GetClassObject>("DllGetClassObject");
    NoArguments* can_unload_now = dll.function<NoArguments>("DllCanUnloadNow");
    CLSID class_id{};

    void SetUp() override {
        ASSERT_NE(get_class_object, nullptr) << "exported under its plain name";
        ASSERT_EQ(CLSIDFromProgID(L"Tavrix.KseF_comm", &class_id), S_OK);
    }
};

TEST_F(Module, RefusesWhatItDoesNotHaveAndStaysWhileAnObjectOrALockIsLeft) {
    void* refused = this;
    EXPECT_EQ(get_class_object(IID_IUnknown, IID_IClassFactory, &refused),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(refused, nullptr);
    ASSERT_EQ(can_unload_now(), S_OK);
    ComPointer<IClassFactory> factory;
    ASSERT_EQ(get_class_object(class_id, IID_IClassFactory, factory.out_void()), S_OK);
    EXPECT_EQ(can_unload_now(), S_FALSE);
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &refused),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &refused), E_NOINTERFACE);

    ComPointer<IDispatch> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, object.out_void()), S_OK);
    factory->LockServer(TRUE);
    factory = {};
    EXPECT_EQ(can_unload_now(), S_FALSE);
    object = {};
    EXPECT_EQ(can_unload_now(), S_FALSE) << "the lock is left";

    ASSERT_EQ(get_class_object(class_id, IID_IClassFactory, factory.out_void()), S_OK);
    factory->LockServer(FALSE);
    factory = {};
    EXPECT_EQ(can_unload_now(), S_OK);
}

// What Windows shows on the file's property page and setup programs compare.
TEST(VersionResource, IsPolishAndEnglish) {
    const base::Text path = beside_program(u"Tavrix.dll");
    std::vector<BYTE> block(GetFileVersionInfoSizeW(windows::wide(path), nullptr));
    ASSERT_TRUE(GetFileVersionInfoW(windows::wide(path), 0, static_cast<DWORD>(block.size()),
                                    block.data()));
    const std::map<std::wstring, base::Text> texts = {
        {L"041504B0\\FileVersion", u"10.0.36"},
        {L"041504B0\\FileDescription", u"Składniki dla polskich programów handlowych"},
        {L"040904B0\\FileDescription", u"Components for Polish business applications"}};
    for (const auto& [name, text] : texts) {
        void* found = nullptr;
        UINT size = 0;
        ASSERT_TRUE(
            VerQueryValueW(block.data(), (L"\\StringFileInfo\\" + name).c_str(), &found, &size));
        EXPECT_EQ(windows::text_from_wide(static_cast<const wchar_t*>(found)), text);
    }
}

std::string lone_host(const base::Text& story) {
    return run_program(u"\"" + beside_program(u"lone_host.exe") + u"\" " + story);
}

// As servers do that open COM for each piece of work.
TEST(LoneHost, CreatesCallsAndGivesBackThousandsOfTimes) {
    EXPECT_EQ(lone_host(u"rounds"), "whole\r\n");
}

// Its unwinder must not be handed the DLL's own tables, which the DLL's own one would miss.
TEST(LoneHost, MayHaveTheSharedUnwinderLoaded) {
    const base::Text unwinder = u"..\\tests\\com\\host_runtime\\" TAVRIX_LIBGCC;
    if (GetFileAttributesW(windows::wide(beside_program(unwinder))) == INVALID_FILE_ATTRIBUTES) {
        GTEST_SKIP() << "the compiler has no shared run-time library";
    }
    EXPECT_EQ(lone_host(u"unwinder " + unwinder), "whole\r\n");
}

// Every key under a key, one a line.
std::wstring listed(HKEY parent, const std::wstring& name) {
    windows::KeyHandle key;
    RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, key.out());
    std::wstring text = name + L"\n";
    wchar_t inner[512];
    for (DWORD i = 0; RegEnumKeyW(key.get(), i, inner, 512) == ERROR_SUCCESS; ++i) {
        text += listed(key.get(), inner);
    }
    return text + L"end of " + name + L"\n";
}

std::wstring classes_of(HKEY root) {
    return listed(root, L"Software\\Classes");
}

std::wstring registered(HKEY root, const std::wstring& key, const wchar_t* value = L"") {
    wchar_t text[MAX_PATH] = L"";
    DWORD size = sizeof text;
    RegGetValueW(root, (L"Software\\Classes\\" + key).c_str(), value, RRF_RT_REG_SZ, nullptr, text,
                 &size);
    return text;
}

void expect_every_class(HKEY root) {
    for (const PublishedClass& published : published_classes()) {
        const std::wstring name = windows::wide(u"Tavrix." + base::Text(published.name));
        const std::wstring server =
            L"CLSID\\" + registered(root, name + L"\\CLSID") + L"\\InprocServer32";
        EXPECT_EQ(registered(root, name + L"\\CurVer"), name + L".10");
        EXPECT_EQ(registered(root, server), windows::wide(beside_program(u"Tavrix.dll")));
        EXPECT_EQ(registered(root, server, L"ThreadingModel"), L"Apartment");
    }
    EXPECT_EQ(registered(root, L"Tavrix.KseF_comm\\CLSID"),
              L"{D422C633-A288-42AD-9710-6414035C1877}");
}

class Registration : public Module {
  protected:
    NoArguments* register_server = dll.function<NoArguments>("DllRegisterServer");
    NoArguments* unregister_server = dll.function<NoArguments>("DllUnregisterServer");
    Install* install = dll.function<Install>("DllInstall");

    void SetUp() override {
        Module::SetUp();
        ASSERT_EQ(unregister_server(), S_OK);
    }
    void TearDown() override { register_server(); }
};

TEST_F(Registration, GoesInAndOutWithoutATrace) {
    const base::Text quoted = u" \"" + beside_program(u"Tavrix.dll") + u"\"";
    const auto by_setup = [&](bool in) {
        run_program((in ? u"regsvr32.exe /s" : u"regsvr32.exe /s /u") + quoted);
    };
    const auto for_the_user = [&](bool in) { EXPECT_EQ(install(in, L"user"), S_OK); };
    const auto for_the_machine = [&](bool in) { EXPECT_EQ(install(in, L"machine"), S_OK); };
    const auto in_and_out = [&](HKEY root, HKEY other_root, const auto& go) {
        const std::wstring before = classes_of(root);
        const std::wstring of_the_other = classes_of(other_root);
        go(true);
        expect_every_class(root);
        const std::wstring once = classes_of(root);
        go(true);
        EXPECT_TRUE(classes_of(root) == once) << "registering again changes nothing";
        EXPECT_TRUE(classes_of(other_root) == of_the_other);
        go(false);
        EXPECT_TRUE(classes_of(root) == before);
        go(false);  // there may be nothing to remove
    };
    in_and_out(HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, by_setup);
    in_and_out(HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, for_the_machine);
    in_and_out(HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, for_the_user);
    for_the_user(true);
    for_the_machine(false);
    expect_every_class(HKEY_CURRENT_USER);
    for_the_user(false);
}

TEST_F(Registration, IsNotNeededByAHostWithAManifest) {
    CLSID found{};
    ASSERT_NE(CLSIDFromProgID(L"Tavrix.CInfo", &found), S_OK);
    const base::Text manifest = beside_program(u"host.exe.manifest");
    ACTCTXW wanted{};
    wanted.cbSize = sizeof wanted;
    wanted.lpSource = windows::wide(manifest);
    const HANDLE context = CreateActCtxW(&wanted);
    ULONG_PTR cookie = 0;
    ASSERT_TRUE(ActivateActCtx(context, &cookie)) << GetLastError();
    for (const PublishedClass& published : published_classes()) {
        EXPECT_TRUE(create((u"Tavrix." + base::Text(published.name)).c_str()))
            << base::to_utf8(published.name);
    }
    DeactivateActCtx(0, cookie);
    ReleaseActCtx(context);
}

TEST_F(Registration, LeavesAnotherCopyItsEntries) {
    const auto before = classes_of(HKEY_LOCAL_MACHINE);
    const base::Text copy = beside_program(u"TavrixCopy.dll");
    ASSERT_TRUE(
        CopyFileW(windows::wide(beside_program(u"Tavrix.dll")), windows::wide(copy), FALSE));
    {
        const LoadedDll other(u"TavrixCopy.dll");
        ASSERT_EQ(register_server(), S_OK);
        // As an upgrade does it: the new copy in, then the old one out.
        ASSERT_EQ(other.function<NoArguments>("DllRegisterServer")(), S_OK);
        const auto upgraded = classes_of(HKEY_LOCAL_MACHINE);
        EXPECT_EQ(unregister_server(), S_OK);
        EXPECT_TRUE(classes_of(HKEY_LOCAL_MACHINE) == upgraded);
        // The class is found; an object of it would keep the copy loaded.
        ComPointer<IClassFactory> factory;
        EXPECT_EQ(CoGetClassObject(class_id, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                   factory.out_void()),
                  S_OK);
        factory = {};
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_EQ(other.function<NoArguments>("DllUnregisterServer")(), S_OK);
        EXPECT_TRUE(classes_of(HKEY_LOCAL_MACHINE) == before);
    }
    DeleteFileW(windows::wide(copy));
}

#ifdef _WIN64  // the 32-bit prefix has room for one DLL only
// Both DLLs' classes are found under one name; a host takes the one of its own bits.
TEST_F(Registration, KeepsTheNamesWhileTheDllOfTheOtherBitsIsThere) {
    const REGSAM other_view = KEY_WOW64_32KEY;
    const wchar_t* path =
        L"Software\\Classes\\CLSID\\{D422C633-A288-42AD-9710-6414035C1877}\\InprocServer32";
    windows::KeyHandle other;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_SET_VALUE | other_view,
                              nullptr, other.out(), nullptr),
              ERROR_SUCCESS);
    other.reset();
    ASSERT_EQ(register_server(), S_OK);
    ASSERT_EQ(unregister_server(), S_OK);
    CLSID found{};
    EXPECT_EQ(CLSIDFromProgID(L"Tavrix.KseF_comm", &found), S_OK);
    EXPECT_NE(CLSIDFromProgID(L"Tavrix.CInfo", &found), S_OK);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path, other_view, 0);
    ASSERT_EQ(register_server(), S_OK);
    ASSERT_EQ(unregister_server(), S_OK);
    EXPECT_NE(CLSIDFromProgID(L"Tavrix.KseF_comm", &found), S_OK);
}
#endif

}  // namespace
}  // namespace tavrix::test
