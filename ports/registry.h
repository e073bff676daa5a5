#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "base/text.h"

namespace tavrix::ports {

enum class RegistryRoot { classes_root, current_user, local_machine, users };

/// Types of a value, as the system numbers them (winnt.h).
inline constexpr std::uint32_t registry_expandable_text = 2;
inline constexpr std::uint32_t registry_dword = 4;

struct RegistryValue {
    std::uint32_t type = 0;
    /// As it is stored; a text in the ANSI code page, with its terminating zero when it has one.
    base::Bytes data;
};

/// One key, open for reading until it is destroyed.
class RegistryKey {
  public:
    virtual ~RegistryKey() = default;
    /// The value of that name, read into `capacity_bytes`; nothing on any error, a value that does
    /// not fit included.
    virtual std::optional<RegistryValue> query(base::ByteView name, std::size_t capacity_bytes) = 0;
};

/// The system's registry as programs of the ANSI code page see it: names are bytes of that code
/// page and end at their first zero.
class Registry {
  public:
    virtual ~Registry() = default;
    /// Null when there is no such key or it must not be read.
    virtual std::unique_ptr<RegistryKey> open(RegistryRoot root, base::ByteView sub_key) = 0;
};

}  // namespace tavrix::ports
