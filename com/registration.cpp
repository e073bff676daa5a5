#include "com/registration.h"

#include <algorithm>
#include <cstdio>
#include <ranges>
#include <vector>

#include "base/error.h"
#include "com/guid_text.h"
#include "com/module.h"
#include "com/type_library.h"
#include "windows/same_file.h"

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

    void write_to(RegistryDoor& door, HKEY root) const {
        for (const RegistryEntry& entry : list_) write(door, root, entry);
    }
    void remove_from(RegistryDoor& door, HKEY root) const {
        for (const RegistryEntry& entry : list_ | std::views::reverse) remove(door, root, entry);
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

std::vector<Group> groups_of(const Server& server, const base::Text& path) {
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

void remove_group(RegistryDoor& door, HKEY root, const Group& group) {
    group.own.remove_from(door, root);
    // Asked afterwards: a system of 32 bits has one view only, where our own entry stood.
    if (!door.key_exists(root, group.sibling_key, group.sibling_view)) {
        group.shared.remove_from(door, root);
    }
}

void take_back(RegistryDoor& door, HKEY root, const std::vector<Group>& groups) noexcept {
    try {
        for (const Group& group : groups) remove_group(door, root, group);
        common_keys().remove_from(door, root);
    } catch (...) {
        // What could not be written cannot be removed; the first failure is the one to report.
    }
}

void write_entries(const Server& server, HKEY root, RegistryDoor& door) {
    const std::vector<Group> groups = groups_of(server, module_path());
    const bool was_registered = std::ranges::any_of(
        groups, [&](const Group& group) { return door.key_exists(root, group.owner.key, 0); });
    try {
        common_keys().write_to(door, root);
        for (const Group& group : groups) {
            group.shared.write_to(door, root);
            group.own.write_to(door, root);
        }
    } catch (...) {
        if (!was_registered) take_back(door, root, groups);
        throw;
    }
}

// Each group as the copy wrote it that its owner entry names, where `of_this_copy` says so of the
// copy's path. The stored path may spell this very DLL's in another way, and its entries with it.
template <typename Condition>
void remove_named_groups(const Server& server, HKEY root, RegistryDoor& door,
                         Condition of_this_copy) {
    const std::vector<Group> groups = groups_of(server, module_path());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const RegistryEntry& owner = groups[i].owner;
        const auto path = door.value(root, owner.key, owner.name);
        if (path && of_this_copy(*path)) {
            remove_group(door, root, groups_of(server, *path)[i]);
        }
    }
    common_keys().remove_from(door, root);
}

// With `advice` in place of the system's words where the machine's classes are closed to the user.
template <typename Action>
void with_advice(const Server& server, const base::Text& advice, Action action) {
    try {
        action();
    } catch (const base::AutomationError& error) {
        if (error.number() != static_cast<base::ErrorNumber>(E_ACCESSDENIED)) throw;
        throw base::AutomationError(error.number(), base::Text(server.library), advice);
    }
}

}  // namespace

void register_classes(const Server& server, Scope scope, RegistryDoor& door) {
    if (scope == Scope::user) return write_entries(server, HKEY_CURRENT_USER, door);
    const base::Text file = base::Text(server.library) + u".dll";
    const base::Text advice =
        u"Rejestracja dla całego komputera wymaga uprawnień administratora (regsvr32 " + file +
        u"). Tylko dla bieżącego użytkownika, poza usługami i programami uruchomionymi jako "
        u"administrator: regsvr32 /n /i:user " +
        file;
    with_advice(server, advice, [&] {
        write_entries(server, HKEY_LOCAL_MACHINE, door);
        remove_named_groups(server, HKEY_CURRENT_USER, door,
                            [](const base::Text&) { return true; });
    });
}

void unregister_classes(const Server& server, Scope scope, RegistryDoor& door) {
    const HKEY root = scope == Scope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    const base::Text own_path = module_path();
    with_advice(server, u"Wyrejestrowanie dla całego komputera wymaga uprawnień administratora.",
                [&] {
                    remove_named_groups(server, root, door, [&](const base::Text& path) {
                        return windows::same_file(path, own_path);
                    });
                });
}

void unregister_everywhere(const Server& server, RegistryDoor& door) {
    unregister_classes(server, Scope::user, door);
    unregister_classes(server, Scope::machine, door);
}

}  // namespace tavrix::com
