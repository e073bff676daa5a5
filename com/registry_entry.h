#pragma once

#include <optional>

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// One value of the registry; an empty name is the key's default value, and an entry without a
/// value is just the key.
struct RegistryEntry {
    base::Text key;
    base::Text name;
    std::optional<base::Text> value;
};

/// Makes the key and stores the value. Throws base::AutomationError.
void write(HKEY root, const RegistryEntry& entry);

/// True when the value is stored as the entry has it; paths are compared as the file system does.
bool is_stored(HKEY root, const RegistryEntry& entry);

/// Removes the value where it still is what the entry says, and the key when it is empty then.
/// Nothing happens when there is no such key. Throws base::AutomationError when the key must not
/// be changed.
void remove(HKEY root, const RegistryEntry& entry);

/// `view` is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
bool key_exists(HKEY root, const base::Text& key, REGSAM view);

}  // namespace tavrix::com
