#include "com/module.h"

#include <atomic>

#include "windows/automation.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

std::atomic<long> uses = 0;

}  // namespace

ModuleReference::ModuleReference() noexcept {
    ++uses;
}
ModuleReference::~ModuleReference() {
    --uses;
}

void lock_module(bool lock) noexcept {
    uses += lock ? 1 : -1;
}

bool module_in_use() noexcept {
    return uses != 0;
}

void stay_loaded() noexcept {
    // Once is enough, and asking the loader costs more than making an object.
    [[maybe_unused]] static const BOOL pinned = [] {
        HMODULE module = nullptr;
        return GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
            reinterpret_cast<LPCWSTR>(&module_handle), &module);
    }();
}

HMODULE module_handle() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&module_handle), &module);
    return module;
}

base::Text module_path() {
    base::Text path(MAX_PATH, u'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(module_handle(), reinterpret_cast<wchar_t*>(path.data()),
                               static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

}  // namespace tavrix::com
