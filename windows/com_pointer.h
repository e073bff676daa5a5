#pragma once

#include <utility>

#include "windows/automation.h"

namespace tavrix::windows {

/// Holds one reference to a COM object.
template <typename Interface>
class ComPointer {
  public:
    ComPointer() noexcept = default;
    /// Adds a reference of its own.
    explicit ComPointer(Interface* object) noexcept : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }
    /// Takes over the reference that the caller holds.
    static ComPointer adopt(Interface* object) noexcept {
        ComPointer pointer;
        pointer.object_ = object;
        return pointer;
    }
    ComPointer(const ComPointer& other) noexcept : ComPointer(other.object_) {}
    ComPointer(ComPointer&& other) noexcept : object_(other.release()) {}
    ComPointer& operator=(ComPointer other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPointer() {
        if (object_ != nullptr) object_->Release();
    }

    Interface* get() const noexcept { return object_; }
    Interface* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    Interface* release() noexcept { return std::exchange(object_, nullptr); }
    /// Where a function stores the reference that it gives away.
    Interface** out() noexcept {
        *this = ComPointer();
        return &object_;
    }
    void** out_void() noexcept { return reinterpret_cast<void**>(out()); }

    /// Another interface of the same object; empty when the object has none such.
    template <typename Other>
    ComPointer<Other> query() const noexcept {
        ComPointer<Other> other;
        if (object_ != nullptr) object_->QueryInterface(__uuidof(Other), other.out_void());
        return other;
    }

  private:
    Interface* object_ = nullptr;
};

}  // namespace tavrix::windows
