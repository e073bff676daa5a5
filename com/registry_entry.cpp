#include "com/registry_entry.h"

#include "windows/bstr.h"
#include "windows/failure.h"
#include "windows/handles.h"

namespace tavrix::com {
namespace {

using windows::wide;

void check_status(LSTATUS status, base::TextView source) {
    windows::check(HRESULT_FROM_WIN32(static_cast<DWORD>(status)), source);
}

class SystemRegistry final : public RegistryDoor {
  public:
    bool key_exists(HKEY root, const base::Text& key, REGSAM view) const override {
        windows::KeyHandle found;
        return open(root, key, KEY_QUERY_VALUE | view, found) == ERROR_SUCCESS;
    }
    bool is_empty(HKEY root, const base::Text& key) const override {
        windows::KeyHandle found;
        DWORD keys = 0;
        DWORD values = 0;
        return open(root, key, KEY_QUERY_VALUE, found) == ERROR_SUCCESS &&
               RegQueryInfoKeyW(found.get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr,
                                &values, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               keys == 0 && values == 0;
    }
    std::optional<base::Text> value(HKEY root, const base::Text& key,
                                    const base::Text& name) const override {
        windows::KeyHandle found;
        if (open(root, key, KEY_QUERY_VALUE, found) != ERROR_SUCCESS) return std::nullopt;
        DWORD type = 0;
        DWORD size = 0;
        if (RegQueryValueExW(found.get(), wide(name), nullptr, &type, nullptr, &size) !=
                ERROR_SUCCESS ||
            type != REG_SZ) {
            return std::nullopt;
        }
        base::Text text(size / sizeof(char16_t), u'\0');
        if (RegQueryValueExW(found.get(), wide(name), nullptr, &type,
                             reinterpret_cast<BYTE*>(text.data()), &size) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        while (!text.empty() && text.back() == u'\0') text.pop_back();
        return text;
    }
    void create_key(HKEY root, const base::Text& key) override {
        windows::KeyHandle made;
        check_status(RegCreateKeyExW(root, wide(key), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                     KEY_QUERY_VALUE, nullptr, made.out(), nullptr),
                     key);
    }
    void set_value(HKEY root, const base::Text& key, const base::Text& name,
                   const base::Text& value) override {
        windows::KeyHandle found;
        check_status(open(root, key, KEY_SET_VALUE, found), key);
        const auto* data = reinterpret_cast<const BYTE*>(value.c_str());
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(char16_t));
        check_status(RegSetValueExW(found.get(), wide(name), 0, REG_SZ, data, size), key);
    }
    void delete_value(HKEY root, const base::Text& key, const base::Text& name) override {
        windows::KeyHandle found;
        check_status(open(root, key, KEY_SET_VALUE, found), key);
        check_status(RegDeleteValueW(found.get(), wide(name)), key);
    }
    void delete_key(HKEY root, const base::Text& key) override {
        check_status(RegDeleteKeyW(root, wide(key)), key);
    }

  private:
    static LSTATUS open(HKEY root, const base::Text& key, REGSAM rights,
                        windows::KeyHandle& found) {
        return RegOpenKeyExW(root, wide(key), 0, rights, found.out());
    }
};

// Paths are among the values.
bool is_stored(const RegistryDoor& door, HKEY root, const RegistryEntry& entry) {
    const std::optional<base::Text> stored = door.value(root, entry.key, entry.name);
    return stored && entry.value && base::equal_case_blind(*stored, *entry.value);
}

}  // namespace

RegistryDoor& system_registry() noexcept {
    static SystemRegistry registry;
    return registry;
}

void write(RegistryDoor& door, HKEY root, const RegistryEntry& entry) {
    door.create_key(root, entry.key);
    if (entry.value) door.set_value(root, entry.key, entry.name, *entry.value);
}

void remove(RegistryDoor& door, HKEY root, const RegistryEntry& entry) {
    if (is_stored(door, root, entry)) door.delete_value(root, entry.key, entry.name);
    if (door.is_empty(root, entry.key)) door.delete_key(root, entry.key);
}

}  // namespace tavrix::com
