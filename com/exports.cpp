// The functions that Windows and regsvr32 call. They only forward.

#include "com/class_factory.h"
#include "com/error_bridge.h"
#include "com/registration.h"
#include "windows/automation.h"
#include "windows/failure.h"

namespace {

using namespace tavrix::com;

// With every failure as its HRESULT.
template <typename Action>
HRESULT guarded(Action action) noexcept {
    try {
        action();
        return S_OK;
    } catch (...) {
        return report_current_exception(server().library);
    }
}

bool runs_under_wine() noexcept {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

HRESULT register_in(Scope scope) noexcept {
    if (server().only_under_wine && !runs_under_wine()) {
        return HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED);
    }
    return guarded([&] { register_classes(server(), scope, system_registry()); });
}

HRESULT unregister_in(Scope scope) noexcept {
    return guarded([&] { unregister_classes(server(), scope, system_registry()); });
}

}  // namespace

extern "C" {

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID class_id, REFIID id, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    for (const CreatableClass& creatable : server().classes) {
        if (creatable.table.class_id != class_id) continue;
        return guarded([&] {
            const auto factory =
                tavrix::windows::ComPointer<ClassFactory>::adopt(new ClassFactory(creatable));
            tavrix::windows::check(factory->QueryInterface(id, object), server().library);
        });
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

// Says whether anything is left in use, also when the DLL is to stay: a host that gives it back
// then only counts down.
HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return module_in_use() ? S_FALSE : S_OK;
}

// For the machine, never silently for less: services and elevated programs would not see it.
HRESULT STDAPICALLTYPE DllRegisterServer() {
    return register_in(Scope::machine);
}

HRESULT STDAPICALLTYPE DllUnregisterServer() {
    return guarded([] { unregister_everywhere(server(), system_registry()); });
}

// `regsvr32 /n /i:user` and `/n /i:machine` register and unregister in that one place and touch no
// other; any other command line does what the two functions above do.
HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR command_line) {
    const LPCWSTR place = command_line != nullptr ? command_line : L"";
    const bool user = lstrcmpiW(place, L"user") == 0;
    if (!user && lstrcmpiW(place, L"machine") != 0) {
        return install != FALSE ? DllRegisterServer() : DllUnregisterServer();
    }
    const Scope scope = user ? Scope::user : Scope::machine;
    return install != FALSE ? register_in(scope) : unregister_in(scope);
}

}  // extern "C"
