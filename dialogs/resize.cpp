#include "dialogs/resize.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace tavrix::dialogs {
namespace {

bool has_room(FormSize size) noexcept {
    return std::isfinite(size.width) && std::isfinite(size.height) && size.width > 0 &&
           size.height > 0;
}

}  // namespace

Resize::Resize(FormSize first, FormSize smallest,
               std::vector<std::unique_ptr<ResizedControl>> controls)
    : first_(first), smallest_(smallest) {
    for (std::unique_ptr<ResizedControl>& control : controls) {
        try {
            const ControlPlace place = control->place();
            const std::optional<double> font_size = control->font_size();
            controls_.push_back({std::move(control), place, font_size, false});
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            // A timer or a menu, which has no place.
        }
    }
}

void Resize::fit(FormSize form) noexcept {
    // Controls that fit themselves again each time would go on for ever.
    constexpr int most_rounds = 4;
    if (!has_room(form) || !has_room(first_)) return;
    newest_ = form;
    if (std::exchange(is_fitting_, true)) return;
    FormSize fitted;
    for (int round = 0; round < most_rounds && newest_ != fitted; ++round) {
        fitted = newest_;
        fit_controls(fitted);
    }
    std::erase_if(controls_, [](const Remembered& remembered) { return remembered.refuses; });
    is_fitting_ = false;
}

void Resize::fit_controls(FormSize form) noexcept {
    constexpr double smallest_letters = 1;
    constexpr double largest_letters = 2160;
    const double across = std::max(form.width, smallest_.width) / first_.width;
    const double down = std::max(form.height, smallest_.height) / first_.height;
    for (Remembered& remembered : controls_) {
        if (remembered.refuses) continue;
        const ControlPlace& place = remembered.place;
        try {
            // Letters first: some controls make themselves as high as theirs.
            if (remembered.font_size) {
                remembered.control->set_font_size(
                    std::clamp(*remembered.font_size * std::min(across, down), smallest_letters,
                               largest_letters));
            }
            remembered.control->move(
                {place.left * across, place.top * down, place.width * across, place.height * down});
        } catch (...) {
            remembered.refuses = true;
        }
    }
}

}  // namespace tavrix::dialogs
