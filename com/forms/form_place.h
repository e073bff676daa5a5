#pragma once

#include <atomic>

#include "windows/automation.h"

namespace tavrix::com {

/// The place of the one form of its kind that the process shows at a time.
class FormPlace {
  public:
    /// False when a form is there already.
    bool take() noexcept { return !taken_.exchange(true); }
    void leave() noexcept;
    void show(HWND window) noexcept { window_ = window; }
    /// The form, or what it has opened itself, becomes the user's active window.
    void bring_to_front() const noexcept;

  private:
    std::atomic<bool> taken_ = false;
    std::atomic<HWND> window_ = nullptr;
};

/// Takes the place for as long as the scope lasts, where it is free. Where it is not, the form that
/// is there comes to the front.
class TakenPlace {
  public:
    explicit TakenPlace(FormPlace& place) noexcept;
    ~TakenPlace();
    TakenPlace(const TakenPlace&) = delete;
    TakenPlace& operator=(const TakenPlace&) = delete;

    explicit operator bool() const noexcept { return place_ != nullptr; }
    /// Only of a place that was taken.
    void show(HWND window) const noexcept { place_->show(window); }

  private:
    FormPlace* place_;
};

}  // namespace tavrix::com
