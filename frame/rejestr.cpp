#include "frame/rejestr.h"

#include <bit>

namespace tavrix::frame {
namespace {

using base::Text;
using ports::RegistryRoot;

constexpr RegistryRoot roots[] = {RegistryRoot::classes_root, RegistryRoot::current_user,
                                  RegistryRoot::local_machine, RegistryRoot::users};

// Hosts have always been given at most this much; a longer value has always been an empty text.
constexpr std::size_t capacity_bytes = 255;

// The system's numbers are little-endian; a value shorter than four bytes leaves the rest zero.
std::int32_t dword_of(base::ByteView data) noexcept {
    std::uint32_t number = 0;
    for (std::size_t i = data.size(); i > 0; --i) number = number << 8 | data[i - 1];
    return std::bit_cast<std::int32_t>(number);
}

}  // namespace

Text Rejestr::RegGetValue(std::uint8_t MainKey_def, const Text& SubKey,
                          const Text& Value) const noexcept {
    try {
        if (MainKey_def < std::size(roots)) return read(MainKey_def, SubKey, Value);
    } catch (...) {
        // The host sees no error.
    }
    return {};
}

Text Rejestr::read(std::uint8_t root, const Text& sub_key, const Text& name) const {
    const auto key = registry_.open(roots[root], code_page_.to_bytes(sub_key));
    if (!key) return {};
    const base::Bytes ansi_name = code_page_.to_bytes(name);
    const auto value = key->query(ansi_name, capacity_bytes);
    if (!value) return {};
    if (value->type == ports::registry_dword) {
        const auto number = key->query(ansi_name, sizeof(std::int32_t));
        return number ? base::to_decimal(dword_of(number->data)) : Text();
    }
    if (value->data.empty()) return {};
    return code_page_.to_text(base::ByteView(value->data).first(value->data.size() - 1));
}

}  // namespace tavrix::frame
