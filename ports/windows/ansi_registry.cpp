#include "ports/windows/ansi_registry.h"

#include <string>

#include "windows/key_handle.h"

namespace tavrix::windows {
namespace {

HKEY handle_of(ports::RegistryRoot root) noexcept {
    switch (root) {
        case ports::RegistryRoot::classes_root:
            return HKEY_CLASSES_ROOT;
        case ports::RegistryRoot::current_user:
            return HKEY_CURRENT_USER;
        case ports::RegistryRoot::local_machine:
            return HKEY_LOCAL_MACHINE;
        case ports::RegistryRoot::users:
            return HKEY_USERS;
    }
    return nullptr;
}

std::string terminated(base::ByteView name) {
    return std::string(base::chars_of(name));
}

class OpenKey final : public ports::RegistryKey {
  public:
    explicit OpenKey(KeyHandle key) noexcept : key_(std::move(key)) {}

    std::optional<ports::RegistryValue> query(base::ByteView name,
                                              std::size_t capacity_bytes) override {
        ports::RegistryValue value;
        value.data.resize(capacity_bytes);
        DWORD type = 0;
        auto size = static_cast<DWORD>(capacity_bytes);
        if (RegQueryValueExA(key_.get(), terminated(name).c_str(), nullptr, &type,
                             value.data.data(), &size) != ERROR_SUCCESS) {
            return std::nullopt;
        }
        value.type = type;
        value.data.resize(size);
        return value;
    }

  private:
    KeyHandle key_;
};

}  // namespace

std::unique_ptr<ports::RegistryKey> AnsiRegistry::open(ports::RegistryRoot root,
                                                       base::ByteView sub_key) {
    KeyHandle key;
    if (RegOpenKeyExA(handle_of(root), terminated(sub_key).c_str(), 0, KEY_READ, key.out()) !=
        ERROR_SUCCESS) {
        return nullptr;
    }
    return std::make_unique<OpenKey>(std::move(key));
}

}  // namespace tavrix::windows
