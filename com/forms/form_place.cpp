#include "com/forms/form_place.h"

namespace tavrix::com {

void FormPlace::leave() noexcept {
    window_ = nullptr;
    taken_ = false;
}

void FormPlace::bring_to_front() const noexcept {
    const HWND window = window_;
    if (window != nullptr) SetForegroundWindow(GetLastActivePopup(window));
}

TakenPlace::TakenPlace(FormPlace& place) noexcept : place_(place.take() ? &place : nullptr) {
    if (place_ == nullptr) place.bring_to_front();
}

TakenPlace::~TakenPlace() {
    if (place_ != nullptr) place_->leave();
}

}  // namespace tavrix::com
