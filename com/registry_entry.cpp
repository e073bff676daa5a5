#include "com/registry_entry.h"

#include "windows/bstr.h"
#include "windows/failure.h"
#include "windows/handles.h"

namespace tavrix::com {
namespace {

void check_status(LSTATUS status, base::TextView source) {
    windows::check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)), source);
}

bool is_absent(LSTATUS status) noexcept {
    return status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
}

bool holds(HKEY key, const RegistryEntry& entry) {
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, windows::wide(entry.name), nullptr, &type, nullptr, &size) !=
            ERROR_SUCCESS ||
        type != REG_SZ) {
        return false;
    }
    base::Text value(size / sizeof(char16_t), u'\0');
    if (RegQueryValueExW(key, windows::wide(entry.name), nullptr, &type,
                         reinterpret_cast<BYTE*>(value.data()), &size) != ERROR_SUCCESS) {
        return false;
    }
    while (!value.empty() && value.back() == u'\0') value.pop_back();
    return base::equal_case_blind(value, *entry.value);
}

bool is_empty(HKEY key) {
    DWORD keys = 0;
    DWORD values = 0;
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                            nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

}  // namespace

void write(HKEY root, const RegistryEntry& entry) {
    windows::KeyHandle key;
    check_status(
        RegCreateKeyExW(root, windows::wide(entry.key), 0, nullptr, REG_OPTION_NON_VOLATILE,
                        KEY_SET_VALUE, nullptr, key.out(), nullptr),
        entry.key);
    if (!entry.value) return;
    const auto* data = reinterpret_cast<const BYTE*>(entry.value->c_str());
    const auto size = static_cast<DWORD>((entry.value->size() + 1) * sizeof(char16_t));
    check_status(RegSetValueExW(key.get(), windows::wide(entry.name), 0, REG_SZ, data, size),
                 entry.key);
}

bool is_stored(HKEY root, const RegistryEntry& entry) {
    windows::KeyHandle key;
    return RegOpenKeyExW(root, windows::wide(entry.key), 0, KEY_QUERY_VALUE, key.out()) ==
               ERROR_SUCCESS &&
           holds(key.get(), entry);
}

void remove(HKEY root, const RegistryEntry& entry) {
    windows::KeyHandle key;
    const LSTATUS opened = RegOpenKeyExW(root, windows::wide(entry.key), 0,
                                         KEY_QUERY_VALUE | KEY_SET_VALUE, key.out());
    if (is_absent(opened)) return;
    check_status(opened, entry.key);
    if (entry.value && holds(key.get(), entry)) {
        check_status(RegDeleteValueW(key.get(), windows::wide(entry.name)), entry.key);
    }
    if (!is_empty(key.get())) return;
    key.reset();
    check_status(RegDeleteKeyW(root, windows::wide(entry.key)), entry.key);
}

bool key_exists(HKEY root, const base::Text& key, REGSAM view) {
    windows::KeyHandle found;
    return RegOpenKeyExW(root, windows::wide(key), 0, KEY_QUERY_VALUE | view, found.out()) ==
           ERROR_SUCCESS;
}

}  // namespace tavrix::com
