#include "dialogs/resize.h"

#include <algorithm>
#include <new>

namespace tavrix::dialogs {

Resize::Resize(FormSize first, FormSize smallest,
               std::vector<std::unique_ptr<ResizedControl>> controls)
    : first_(first), smallest_(smallest) {
    for (std::unique_ptr<ResizedControl>& control : controls) {
        try {
            const ControlPlace place = control->place();
            const std::optional<double> font_size = control->font_size();
            controls_.push_back({std::move(control), place, font_size});
        } catch (const std::bad_alloc&) {
            throw;
        } catch (...) {
            // A timer or a menu, which has no place.
        }
    }
}

void Resize::fit(FormSize form) noexcept {
    if (form.width <= 0 || form.height <= 0 || first_.width <= 0 || first_.height <= 0) return;
    const double across = std::max(form.width, smallest_.width) / first_.width;
    const double down = std::max(form.height, smallest_.height) / first_.height;
    std::erase_if(controls_, [&](Remembered& remembered) {
        const ControlPlace& place = remembered.place;
        try {
            // Letters first: some controls make themselves as high as theirs.
            if (remembered.font_size) {
                remembered.control->set_font_size(*remembered.font_size * std::min(across, down));
            }
            remembered.control->move(
                {place.left * across, place.top * down, place.width * across, place.height * down});
            return false;
        } catch (...) {
            return true;
        }
    });
}

}  // namespace tavrix::dialogs
