#pragma once

#include <cstring>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/text.h"

namespace tavrix::base {

/// Overwrites memory in a way that the compiler must not leave out: it cannot know what is called.
inline void wipe(void* memory, std::size_t size) noexcept {
    static void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
    if (size > 0) fill(memory, 0, size);
}

/// Wipes every piece of memory before it gives it back, so that a container that grows leaves
/// nothing behind.
template <typename T>
struct WipingAllocator {
    using value_type = T;
    WipingAllocator() = default;
    template <typename U>
    explicit WipingAllocator(const WipingAllocator<U>&) noexcept {}
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) noexcept {
        wipe(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const WipingAllocator&) const = default;
};

/// A token, password, pin or key, or what holds one. Wiped when it is destroyed, replaced, cleared
/// and moved from, and where it stood before it grew. Nothing turns it into an ordinary text,
/// copies it or writes it out unasked: whoever wants to see it says so.
template <typename Unit>
class Secret {
  public:
    using View = std::conditional_t<std::is_same_v<Unit, std::uint8_t>, ByteView,
                                    std::basic_string_view<Unit>>;

    Secret() = default;
    /// `count` zeros, to be filled in.
    explicit Secret(std::size_t count) : units_(count) {}
    explicit Secret(View value) : units_(value.begin(), value.end()) {}
    Secret(Secret&& other) noexcept = default;
    Secret& operator=(Secret&& other) noexcept {
        units_.swap(other.units_);
        other.clear();
        return *this;
    }

    Secret copy() const { return Secret(view()); }
    View view() const noexcept { return {units_.data(), units_.size()}; }
    bool empty() const noexcept { return units_.empty(); }
    std::size_t size() const noexcept { return units_.size(); }

    void reserve(std::size_t count) { units_.reserve(count); }
    Secret& operator+=(Unit unit) {
        units_.push_back(unit);
        return *this;
    }
    Secret& operator+=(View more) {
        units_.insert(units_.end(), more.begin(), more.end());
        return *this;
    }
    /// To be filled in or overwritten in place.
    std::span<Unit> units() noexcept { return units_; }
    void clear() noexcept { std::vector<Unit, WipingAllocator<Unit>>().swap(units_); }

  private:
    std::vector<Unit, WipingAllocator<Unit>> units_;
};

/// As the host passes it, like Text.
using SecretText = Secret<char16_t>;
/// UTF-8, or what a connection carried.
using SecretUtf8 = Secret<char>;
using SecretBytes = Secret<std::uint8_t>;

/// A copy of what was made without knowing that it is a secret; wipes the original.
inline SecretBytes take_secret(Bytes&& bytes) {
    struct Wiping {
        ~Wiping() { wipe(bytes.data(), bytes.size()); }
        Bytes& bytes;
    };
    const Wiping also_when_memory_runs_out{bytes};
    return SecretBytes{ByteView(bytes)};
}

/// As the functions of the same name do for texts that everybody may see.
SecretUtf8 to_secret_utf8(TextView text);
SecretText from_secret_utf8(std::string_view bytes);

}  // namespace tavrix::base
