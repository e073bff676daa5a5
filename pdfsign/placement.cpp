#include "pdfsign/placement.h"

#include <algorithm>
#include <vector>

namespace tavrix::pdfsign {
namespace {

constexpr double margin_points = 10;
constexpr double gap_points = 3;

// The page as it is shown: x to the right, y downwards, from its top left corner.
struct Shown {
    const FirstPage& page;

    bool lies_on_its_side() const { return page.turned % 180 != 0; }
    double width() const {
        return lies_on_its_side() ? page.box[3] - page.box[1] : page.box[2] - page.box[0];
    }
    double height() const {
        return lies_on_its_side() ? page.box[2] - page.box[0] : page.box[3] - page.box[1];
    }
    Rectangle rectangle(double x, double y, double w, double h) const {
        const auto& [left, bottom, right, top] = page.box;
        switch (page.turned) {
            case 90:
                return {left + y, bottom + x, left + y + h, bottom + x + w};
            case 180:
                return {right - x - w, bottom + y, right - x, bottom + y + h};
            case 270:
                return {right - y - h, top - x - w, right - y, top - x};
            default:
                return {left + x, top - y - h, left + x + w, top - y};
        }
    }
};

const char* matrix_for(int turned) {
    switch (turned) {
        case 90:
            return "0 1 -1 0";
        case 180:
            return "-1 0 0 -1";
        case 270:
            return "0 -1 1 0";
        default:
            return "1 0 0 1";
    }
}

bool touches(const Rectangle& left, const Rectangle& right) {
    return left[0] < right[2] && right[0] < left[2] && left[1] < right[3] && right[1] < left[3];
}

std::vector<Rectangle> fields_on(FirstPage& page) {
    constexpr int most = 1000;
    std::vector<Rectangle> fields;
    QPDFObjectHandle annotations = page.page.getKey("/Annots");
    if (!annotations.isArray()) return fields;
    for (int i = 0; i < std::min(annotations.getArrayNItems(), most); ++i) {
        QPDFObjectHandle one = annotations.getArrayItem(i);
        if (one.isDictionary() && one.getKey("/Subtype").isNameAndEquals("/Widget")) {
            fields.push_back(rectangle_of(one.getKey("/Rect")));
        }
    }
    return fields;
}

}  // namespace

Placement place_box(FirstPage& page, double width, double height) {
    const Shown shown{page};
    const double margin = margin_points / page.unit;
    const double room = std::max(shown.width() - 2 * margin, shown.width() / 2);
    const double scale = std::min({1 / page.unit, room / width, shown.height() / height});
    const double w = width * scale;
    const double h = height * scale;
    const std::vector<Rectangle> fields = fields_on(page);
    const Rectangle corner = shown.rectangle(margin, margin, w, h);
    for (double y = margin; y + h <= shown.height(); y += h + gap_points / page.unit) {
        const Rectangle here = shown.rectangle(margin, y, w, h);
        if (std::ranges::none_of(fields, [&](const Rectangle& f) { return touches(f, here); })) {
            return {here, matrix_for(page.turned)};
        }
    }
    return {corner, matrix_for(page.turned)};
}

}  // namespace tavrix::pdfsign
