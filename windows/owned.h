#pragma once

#include <utility>

namespace tavrix::windows {

/// Owns one handle of the system. `Traits` names the handle's type (`Handle`, whose
/// value-initialised value means "none") and how it is given back (`free`).
template <typename Traits>
class Owned {
  public:
    using Handle = typename Traits::Handle;

    Owned() noexcept = default;
    explicit Owned(Handle handle) noexcept : handle_(handle) {}
    Owned(Owned&& other) noexcept : handle_(other.release()) {}
    Owned& operator=(Owned&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~Owned() { reset(); }

    Handle get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != Handle{}; }
    Handle release() noexcept { return std::exchange(handle_, Handle{}); }
    void reset(Handle handle = Handle{}) noexcept {
        const Handle old = std::exchange(handle_, handle);
        if (old != Handle{}) Traits::free(old);
    }
    /// Where a function of the system stores the handle that it gives away.
    Handle* out() noexcept {
        reset();
        return &handle_;
    }

  private:
    Handle handle_{};
};

}  // namespace tavrix::windows
