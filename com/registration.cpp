#include "com/registration.h"

#include <algorithm>
#include <cstdio>
#include <ranges>
#include <vector>

#include "com/guid_text.h"
#include "com/module.h"
#include "com/registry_entry.h"
#include "com/type_library.h"

namespace tavrix::com {
namespace {

constexpr bool is_64_bit = sizeof(void*) == 8;

// Entries with parents before children, so that walking backwards empties a key before it is
// removed.
class Entries {
  public:
    void add(const base::Text& key, base::Text name, std::optional<base::Text> value) {
        list_.push_back({under_classes(key), std::move(name), std::move(value)});
    }
    static base::Text under_classes(const base::Text& key) { return u"Software\\Classes\\" + key; }

    void write_to(HKEY root) const {
        for (const RegistryEntry& entry : list_) write(root, entry);
    }
    void remove_from(HKEY root) const {
        for (const RegistryEntry& entry : list_ | std::views::reverse) remove(root, entry);
    }

  private:
    std::vector<RegistryEntry> list_;
};

/// What stands or goes together: a class, or the type library with its interfaces.
struct Group {
    /// The value that names the DLL. Where it names another one, the group is that one's.
    RegistryEntry owner;
    /// Entries of this DLL's bits.
    Entries own;
    /// Entries that the DLL of the other bits has too; they go when neither is registered.
    Entries shared;
    /// Where the DLL of the other bits would be named.
    base::Text sibling_key;
    REGSAM sibling_view = 0;
};

// Written in hexadecimal digits, unlike the version in a ProgID.
base::Text type_library_version(const Server& server) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%x.0", static_cast<unsigned>(server.version_major));
    return base::from_utf8(digits);
}

void add_interface(Group& group, const Server& server, const GUID& id, const base::Text& name) {
    const base::Text key = u"Interface\\" + text_of(id);
    group.own.add(key, u"", name);
    // The system's own proxy for dispatch interfaces.
    group.own.add(key + u"\\ProxyStubClsid32", u"", u"{00020420-0000-0000-C000-000000000046}");
    group.own.add(key + u"\\TypeLib", u"", text_of(server.type_library_id));
    group.own.add(key + u"\\TypeLib", u"Version", type_library_version(server));
}

// The library under the neutral locale, where every system looks last, and the interfaces it
// describes.
Group type_library_group(const Server& server, const base::Text& path) {
    Group group;
    const base::Text id_key = u"TypeLib\\" + text_of(server.type_library_id);
    const base::Text key = id_key + u"\\" + type_library_version(server);
    group.shared.add(id_key, u"", std::nullopt);
    group.shared.add(key, u"", base::Text(server.library));
    group.shared.add(key + u"\\FLAGS", u"", u"0");
    group.shared.add(key + u"\\0", u"", std::nullopt);
    const base::Text own_key = key + (is_64_bit ? u"\\0\\win64" : u"\\0\\win32");
    group.owner = {Entries::under_classes(own_key), u"", path};
    group.sibling_key = Entries::under_classes(key + (is_64_bit ? u"\\0\\win32" : u"\\0\\win64"));
    group.own.add(own_key, u"", path);
    for (const CreatableClass& creatable : server.classes) {
        const ClassTable& table = creatable.table;
        add_interface(group, server, table.interface_id, interface_name(table));
        if (table.events == nullptr) continue;
        add_interface(group, server, table.events->interface_id, event_interface_name(table));
    }
    return group;
}

Group class_group(const Server& server, const ClassTable& table, const base::Text& path) {
    Group group;
    const base::Text id = text_of(table.class_id);
    const base::Text help(table.help);
    const base::Text prog_id = base::Text(server.library) + u"." + base::Text(table.name);
    const base::Text versioned = prog_id + u"." + base::to_decimal(server.version_major);
    for (const base::Text& name : {prog_id, versioned}) {
        group.shared.add(name, u"", help);
        group.shared.add(name + u"\\CLSID", u"", id);
    }
    group.shared.add(prog_id + u"\\CurVer", u"", versioned);

    const base::Text key = u"CLSID\\" + id;
    const base::Text server_key = key + u"\\InprocServer32";
    group.owner = {Entries::under_classes(server_key), u"", path};
    group.sibling_key = Entries::under_classes(server_key);
    group.sibling_view = is_64_bit ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;
    group.own.add(key, u"", help);
    group.own.add(server_key, u"", path);
    // The classes live on the host's user-interface thread.
    group.own.add(server_key, u"ThreadingModel", u"Apartment");
    group.own.add(key + u"\\ProgID", u"", versioned);
    group.own.add(key + u"\\VersionIndependentProgID", u"", prog_id);
    group.own.add(key + u"\\Programmable", u"", std::nullopt);
    if (has_type_library()) {
        group.own.add(key + u"\\TypeLib", u"", text_of(server.type_library_id));
        group.own.add(key + u"\\Version", u"", type_library_version(server));
    }
    return group;
}

std::vector<Group> groups_of(const Server& server) {
    const base::Text path = module_path();
    std::vector<Group> groups;
    if (has_type_library()) groups.push_back(type_library_group(server, path));
    for (const CreatableClass& creatable : server.classes) {
        groups.push_back(class_group(server, creatable.table, path));
    }
    return groups;
}

// Where a user has none yet.
Entries common_keys() {
    Entries keys;
    for (const char16_t* key : {u"CLSID", u"Interface", u"TypeLib"}) {
        keys.add(key, u"", std::nullopt);
    }
    return keys;
}

void remove_group(HKEY root, const Group& group) {
    group.own.remove_from(root);
    // Asked afterwards: a system of 32 bits has one view only, where our own entry stood.
    if (!key_exists(root, group.sibling_key, group.sibling_view)) group.shared.remove_from(root);
}

HKEY root_of(Scope scope) noexcept {
    return scope == Scope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void take_back(HKEY root, const std::vector<Group>& groups) noexcept {
    try {
        for (const Group& group : groups) remove_group(root, group);
        common_keys().remove_from(root);
    } catch (...) {
        // What could not be written cannot be removed; the first failure is the one to report.
    }
}

}  // namespace

void register_classes(const Server& server, Scope scope) {
    const HKEY root = root_of(scope);
    const std::vector<Group> groups = groups_of(server);
    const bool was_registered = std::ranges::any_of(
        groups, [&](const Group& group) { return key_exists(root, group.owner.key, 0); });
    try {
        common_keys().write_to(root);
        for (const Group& group : groups) {
            group.shared.write_to(root);
            group.own.write_to(root);
        }
    } catch (...) {
        if (!was_registered) take_back(root, groups);
        throw;
    }
}

void unregister_classes(const Server& server, Scope scope) {
    const HKEY root = root_of(scope);
    for (const Group& group : groups_of(server)) {
        if (is_stored(root, group.owner)) remove_group(root, group);
    }
    common_keys().remove_from(root);
}

}  // namespace tavrix::com
