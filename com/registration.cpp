#include "com/registration.h"

#include <cstdio>
#include <optional>
#include <vector>

#include "com/guid_text.h"
#include "com/module.h"
#include "com/type_library.h"
#include "ports/windows/bstr.h"
#include "ports/windows/failure.h"
#include "ports/windows/key_handle.h"

namespace tavrix::com {
namespace {

/// One value; an empty name is the key's default value, and an entry without a value is just the
/// key.
struct Entry {
    base::Text key;
    base::Text name;
    std::optional<base::Text> value;
};

// Written in hexadecimal digits, unlike the version in a ProgID.
base::Text type_library_version(const Server& server) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%x.0", static_cast<unsigned>(server.version_major));
    return base::from_utf8(digits);
}

// The library under the neutral locale, where every system looks last, and the interfaces it
// describes.
void add_type_library(const Server& server, const base::Text& path, auto add) {
    const base::Text id = text_of(server.type_library_id);
    const base::Text version = type_library_version(server);
    const base::Text key = u"TypeLib\\" + id + u"\\" + version;
    add(u"TypeLib", u"", std::nullopt);
    add(u"TypeLib\\" + id, u"", std::nullopt);
    add(key, u"", base::Text(server.library));
    add(key + u"\\FLAGS", u"", u"0");
    add(key + u"\\0", u"", std::nullopt);
    add(key + (sizeof(void*) == 8 ? u"\\0\\win64" : u"\\0\\win32"), u"", path);
    add(u"Interface", u"", std::nullopt);
    const auto add_interface = [&](const GUID& interface_id, base::Text name) {
        const base::Text interface_key = u"Interface\\" + text_of(interface_id);
        add(interface_key, u"", std::move(name));
        // The system's own proxy for dispatch interfaces.
        add(interface_key + u"\\ProxyStubClsid32", u"", u"{00020420-0000-0000-C000-000000000046}");
        add(interface_key + u"\\TypeLib", u"", id);
        add(interface_key + u"\\TypeLib", u"Version", version);
    };
    for (const CreatableClass& creatable : server.classes) {
        const ClassTable& table = creatable.table;
        add_interface(table.interface_id, interface_name(table));
        if (table.events == nullptr) continue;
        add_interface(table.events->interface_id, event_interface_name(table));
    }
}

// Parents before children, so that walking backwards empties a key before it is removed.
std::vector<Entry> entries_of(const Server& server) {
    const base::Text path = module_path();
    std::vector<Entry> entries;
    const auto add = [&](base::Text key, base::Text name, std::optional<base::Text> value) {
        entries.push_back({u"Software\\Classes\\" + key, std::move(name), std::move(value)});
    };
    // Where a user has none yet.
    add(u"CLSID", u"", std::nullopt);
    const bool described = has_type_library();
    if (described) add_type_library(server, path, add);
    for (const CreatableClass& creatable : server.classes) {
        const ClassTable& table = creatable.table;
        const base::Text id = text_of(table.class_id);
        const base::Text help(table.help);
        const base::Text prog_id = base::Text(server.library) + u"." + base::Text(table.name);
        const base::Text versioned = prog_id + u"." + base::to_decimal(server.version_major);
        for (const base::Text& name : {prog_id, versioned}) {
            add(name, u"", help);
            add(name + u"\\CLSID", u"", id);
        }
        add(prog_id + u"\\CurVer", u"", versioned);
        const base::Text class_key = u"CLSID\\" + id;
        add(class_key, u"", help);
        add(class_key + u"\\InprocServer32", u"", path);
        // The classes live on the host's user-interface thread.
        add(class_key + u"\\InprocServer32", u"ThreadingModel", u"Apartment");
        add(class_key + u"\\ProgID", u"", versioned);
        add(class_key + u"\\VersionIndependentProgID", u"", prog_id);
        add(class_key + u"\\Programmable", u"", std::nullopt);
        if (!described) continue;
        add(class_key + u"\\TypeLib", u"", text_of(server.type_library_id));
        add(class_key + u"\\Version", u"", type_library_version(server));
    }
    return entries;
}

HKEY root_of(Scope scope) noexcept {
    return scope == Scope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void write(HKEY root, const Entry& entry) {
    windows::KeyHandle key;
    windows::check(HRESULT_FROM_WIN32(static_cast<DWORD>(RegCreateKeyExW(
                       root, windows::wide(entry.key), 0, nullptr, REG_OPTION_NON_VOLATILE,
                       KEY_SET_VALUE, nullptr, key.out(), nullptr))),
                   entry.key);
    if (!entry.value) return;
    const auto* data = reinterpret_cast<const BYTE*>(entry.value->c_str());
    const auto size = static_cast<DWORD>((entry.value->size() + 1) * sizeof(char16_t));
    windows::check(HRESULT_FROM_WIN32(static_cast<DWORD>(RegSetValueExW(
                       key.get(), windows::wide(entry.name), 0, REG_SZ, data, size))),
                   entry.key);
}

bool holds(HKEY key, const Entry& entry) {
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
    // Paths are compared as the file system does.
    return base::equal_case_blind(value, *entry.value);
}

bool is_empty(HKEY key) {
    DWORD keys = 0;
    DWORD values = 0;
    return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                            nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

void remove(HKEY root, const Entry& entry) {
    windows::KeyHandle key;
    if (RegOpenKeyExW(root, windows::wide(entry.key), 0, KEY_QUERY_VALUE | KEY_SET_VALUE,
                      key.out()) != ERROR_SUCCESS) {
        return;
    }
    if (entry.value && holds(key.get(), entry))
        RegDeleteValueW(key.get(), windows::wide(entry.name));
    const bool empty = is_empty(key.get());
    key.reset();
    if (empty) RegDeleteKeyW(root, windows::wide(entry.key));
}

}  // namespace

void register_classes(const Server& server, Scope scope) {
    try {
        for (const Entry& entry : entries_of(server)) write(root_of(scope), entry);
    } catch (...) {
        unregister_classes(server, scope);
        throw;
    }
}

void unregister_classes(const Server& server, Scope scope) {
    const std::vector<Entry> entries = entries_of(server);
    for (std::size_t i = entries.size(); i > 0; --i) remove(root_of(scope), entries[i - 1]);
}

}  // namespace tavrix::com
