// The DLL's own door: class objects, locks, unloading, registration.

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

TEST_F(Module, StaysLoadedWhileAnObjectOrALockIsLeft) {
    ASSERT_EQ(can_unload_now(), S_OK);
    ComPointer<IClassFactory> factory;
    ASSERT_EQ(get_class_object(class_id, IID_IClassFactory, factory.out_void()), S_OK);
    EXPECT_EQ(can_unload_now(), S_FALSE);

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
    ASSERT_FALSE(block.empty());
    ASSERT_TRUE(GetFileVersionInfoW(windows::wide(path), 0, static_cast<DWORD>(block.size()),
                                    block.data()));
    const auto value = [&](const wchar_t* name) {
        void* found = nullptr;
        UINT size = 0;
        return VerQueryValueW(block.data(), name, &found, &size) ? found : nullptr;
    };
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value(L"\\"));
    ASSERT_NE(fixed, nullptr);
    EXPECT_EQ(fixed->dwFileVersionMS, DWORD{MAKELONG(0, 10)});
    EXPECT_EQ(fixed->dwFileVersionLS, DWORD{MAKELONG(0, 36)});
    const auto text = [&](const wchar_t* name) {
        return windows::text_from_wide(static_cast<const wchar_t*>(value(name)));
    };
    EXPECT_EQ(text(L"\\StringFileInfo\\041504B0\\FileVersion"), u"10.0.36");
    EXPECT_EQ(text(L"\\StringFileInfo\\041504B0\\FileDescription"),
              u"Składniki dla polskich programów handlowych");
    EXPECT_EQ(text(L"\\StringFileInfo\\040904B0\\FileDescription"),
              u"Components for Polish business applications");
}

// Whatever the libraries inside left with the process would bring it down when it ends.
TEST(Unloading, LeavesTheProcessWhole) {
    CLSID class_id{};
    ASSERT_EQ(CLSIDFromProgID(L"Tavrix.KseF_comm", &class_id), S_OK);
    for (int round = 0; round < 3; ++round) {
        CoFreeUnusedLibrariesEx(0, 0);
        const LoadedDll dll(u"Tavrix.dll");
        ComPointer<IClassFactory> factory;
        ASSERT_EQ(dll.function<GetClassObject>("DllGetClassObject")(class_id, IID_IClassFactory,
                                                                    factory.out_void()),
                  S_OK);
        ComPointer<IDispatch> object;
        ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, object.out_void()), S_OK);
        EXPECT_EQ(call(object, u"Sha256XmlSimpleb", {Variant(base::Bytes{1}).get()}).code, S_OK);
        factory = {};
        object = {};
        EXPECT_EQ(dll.function<NoArguments>("DllCanUnloadNow")(), S_OK);
    }
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_EQ(GetModuleHandleW(L"Tavrix.dll"), nullptr);
}

TEST_F(Module, RefusesWhatItDoesNotHave) {
    void* object = this;
    EXPECT_EQ(get_class_object(IID_IUnknown, IID_IClassFactory, &object),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(get_class_object(class_id, IID_IStream, &object), E_NOINTERFACE);

    ComPointer<IClassFactory> factory;
    ASSERT_EQ(get_class_object(class_id, IID_IClassFactory, factory.out_void()), S_OK);
    EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    factory = {};
    EXPECT_EQ(can_unload_now(), S_OK);
}

using Lines = std::vector<std::wstring>;

windows::KeyHandle open_key(HKEY root, const std::wstring& path) {
    windows::KeyHandle key;
    RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.out());
    return key;
}

Lines keys_of(HKEY root, const std::wstring& path) {
    const windows::KeyHandle key = open_key(root, path);
    Lines names;
    wchar_t name[512];
    DWORD size = 512;
    for (DWORD i = 0; RegEnumKeyExW(key.get(), i, name, &size, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, size = 512) {
        names.push_back(path + L"\\" + name);
    }
    return names;
}

// Every key and value under a key, one a line.
void list(HKEY root, const std::wstring& path, Lines& lines) {
    lines.push_back(path);
    const windows::KeyHandle key = open_key(root, path);
    wchar_t name[512];
    DWORD size = 512;
    for (DWORD i = 0; RegEnumValueW(key.get(), i, name, &size, nullptr, nullptr, nullptr,
                                    nullptr) == ERROR_SUCCESS;
         ++i, size = 512) {
        wchar_t value[1024] = L"";
        DWORD value_size = sizeof value;
        RegQueryValueExW(key.get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(value),
                         &value_size);
        lines.push_back(path + L":" + name + L"=" + value);
    }
    for (const std::wstring& inner : keys_of(root, path)) list(root, inner, lines);
}

Lines classes_of(HKEY root) {
    Lines lines;
    list(root, L"Software\\Classes", lines);
    return lines;
}

bool any_contains(const Lines& lines, const std::wstring& text) {
    for (const std::wstring& line : lines) {
        if (line.find(text) != std::wstring::npos) return true;
    }
    return false;
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

TEST_F(Registration, OfTheMachineGoesInAndOutWithoutATrace) {
    const auto before = classes_of(HKEY_LOCAL_MACHINE);
    const auto of_the_user = classes_of(HKEY_CURRENT_USER);
    // By setup, or by the host itself: registering again changes nothing.
    const base::Text path = beside_program(u"Tavrix.dll");
    run_program(u"regsvr32.exe /s \"" + path + u"\"");
    const auto registered = classes_of(HKEY_LOCAL_MACHINE);
    EXPECT_EQ(register_server(), S_OK);
    EXPECT_EQ(classes_of(HKEY_LOCAL_MACHINE), registered);
    for (const PublishedClass& published : published_classes()) {
        const std::wstring name = windows::wide(base::Text(published.name));
        EXPECT_TRUE(any_contains(registered, L"\\Tavrix." + name + L"\\CLSID:={"));
    }
    for (const wchar_t* line : {L"Tavrix.KseF_comm\\CurVer:=Tavrix.KseF_comm.10",
                                L"{D422C633-A288-42AD-9710-6414035C1877}\\InprocServer32:=",
                                L"InprocServer32:ThreadingModel=Apartment"}) {
        EXPECT_TRUE(any_contains(registered, line));
    }
    run_program(u"regsvr32.exe /s /u \"" + path + u"\"");
    EXPECT_EQ(classes_of(HKEY_LOCAL_MACHINE), before);
    EXPECT_EQ(classes_of(HKEY_CURRENT_USER), of_the_user);
    EXPECT_EQ(unregister_server(), S_OK) << "there may be nothing to remove";
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
    EXPECT_EQ(bstr_of(call(create(u"Tavrix.CInfo"), u"VersjaLib").result), u"10.0.36.Tavrix");
    DeactivateActCtx(0, cookie);
    ReleaseActCtx(context);
}

TEST_F(Registration, OfTheUserLeavesTheMachineAlone) {
    const auto machine = classes_of(HKEY_LOCAL_MACHINE);
    const auto before = classes_of(HKEY_CURRENT_USER);
    ASSERT_EQ(install(TRUE, L"user"), S_OK);
    EXPECT_TRUE(any_contains(classes_of(HKEY_CURRENT_USER), L"Tavrix.KseF_comm"));
    EXPECT_EQ(classes_of(HKEY_LOCAL_MACHINE), machine);
    ASSERT_EQ(install(FALSE, L"user"), S_OK);
    EXPECT_EQ(classes_of(HKEY_CURRENT_USER), before);
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
        const auto registered = classes_of(HKEY_LOCAL_MACHINE);
        EXPECT_EQ(unregister_server(), S_OK);
        EXPECT_EQ(classes_of(HKEY_LOCAL_MACHINE), registered);
        EXPECT_TRUE(create(u"Tavrix.CInfo"));
        CoFreeUnusedLibrariesEx(0, 0);
        EXPECT_EQ(other.function<NoArguments>("DllUnregisterServer")(), S_OK);
        EXPECT_EQ(classes_of(HKEY_LOCAL_MACHINE), before);
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
