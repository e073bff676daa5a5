#pragma once

#include <utility>

namespace tavrix::windows {

/// Owns one handle of the system, whose value-initialised value means "none"; `give_back` is the
/// function that ends it, of whatever calling convention, and what it returns is nobody's business.
template <typename Handle, auto give_back>
class Owned {
  public:
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
        if (old != Handle{}) give_back(old);
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
