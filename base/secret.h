#pragma once

#include <string>
#include <vector>

namespace tavrix::base {

/// Overwrites memory in a way that the compiler must not leave out.
inline void wipe(void* memory, std::size_t size) noexcept {
    auto* byte = static_cast<volatile unsigned char*>(memory);
    while (size-- > 0) *byte++ = 0;
}

template <typename Container>
void wipe(Container& container) noexcept {
    wipe(container.data(), container.size() * sizeof(*container.data()));
    container.clear();
}

/// Wipes a text or byte buffer that held a token, key or password when the scope ends, however it
/// ends.
template <typename Container>
class WipeOnExit {
  public:
    explicit WipeOnExit(Container& container) noexcept : container_(container) {}
    ~WipeOnExit() { wipe(container_); }
    WipeOnExit(const WipeOnExit&) = delete;
    WipeOnExit& operator=(const WipeOnExit&) = delete;

  private:
    Container& container_;
};

}  // namespace tavrix::base
