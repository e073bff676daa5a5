#include "ports/windows/adapters.h"

#include <string>

#include "windows/handles.h"

namespace tavrix::ports {
namespace {

using windows::KeyHandle;

HKEY handle_of(RegistryRoot root) noexcept {
    switch (root) {
        case RegistryRoot::classes_root:
            return HKEY_CLASSES_ROOT;
        case RegistryRoot::current_user:
            return HKEY_CURRENT_USER;
        case RegistryRoot::local_machine:
            return HKEY_LOCAL_MACHINE;
        case RegistryRoot::users:
            return HKEY_USERS;
    }
    return nullptr;
}

std::string terminated(base::ByteView name) {
    return std::string(base::chars_of(name));
}

class OpenKey final : public RegistryKey {
  public:
    explicit OpenKey(KeyHandle key) noexcept : key_(std::move(key)) {}

    std::optional<RegistryValue> query(base::ByteView name, std::size_t capacity_bytes) override {
        RegistryValue value;
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

class AnsiRegistry final : public Registry {
  public:
    std::unique_ptr<RegistryKey> open(RegistryRoot root, base::ByteView sub_key) override;
};

std::unique_ptr<RegistryKey> AnsiRegistry::open(RegistryRoot root, base::ByteView sub_key) {
    KeyHandle key;
    if (RegOpenKeyExA(handle_of(root), terminated(sub_key).c_str(), 0, KEY_READ, key.out()) !=
        ERROR_SUCCESS) {
        return nullptr;
    }
    return std::make_unique<OpenKey>(std::move(key));
}

}  // namespace

std::unique_ptr<Registry> make_windows_registry() {
    return std::make_unique<AnsiRegistry>();
}

}  // namespace tavrix::ports
