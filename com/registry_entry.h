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

/// The registry as registration uses it, in steps so small that each asks for no more rights than
/// it needs. What changes something throws base::AutomationError when that is refused; a key that
/// must not be read is as good as absent.
class RegistryDoor {
  public:
    virtual ~RegistryDoor() = default;
    /// `view` is 0, KEY_WOW64_32KEY or KEY_WOW64_64KEY.
    virtual bool key_exists(HKEY root, const base::Text& key, REGSAM view) const = 0;
    /// True for a key that is there and has neither keys nor values.
    virtual bool is_empty(HKEY root, const base::Text& key) const = 0;
    /// The text under the name; nothing when there is none.
    virtual std::optional<base::Text> value(HKEY root, const base::Text& key,
                                            const base::Text& name) const = 0;
    /// With the keys above it.
    virtual void create_key(HKEY root, const base::Text& key) = 0;
    virtual void set_value(HKEY root, const base::Text& key, const base::Text& name,
                           const base::Text& value) = 0;
    virtual void delete_value(HKEY root, const base::Text& key, const base::Text& name) = 0;
    virtual void delete_key(HKEY root, const base::Text& key) = 0;
};

RegistryDoor& system_registry() noexcept;

/// Makes the key and stores the value.
void write(RegistryDoor& door, HKEY root, const RegistryEntry& entry);

/// Removes the value where it still is what the entry says, and the key when it is empty then.
/// Asks for no right to change anything where there is nothing to remove.
void remove(RegistryDoor& door, HKEY root, const RegistryEntry& entry);

}  // namespace tavrix::com
