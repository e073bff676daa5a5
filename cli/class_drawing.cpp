#include "cli/class_drawing.h"

#include <algorithm>
#include <iostream>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"
#include "barcode/surface/ean_cls813.h"
#include "cli/system_ports.h"
#include "ports/native/canvas.h"

namespace tavrix::cli {
namespace {

/// A desktop without fonts to install.
class BareDesktop final : public ports::Shell {
  public:
    void invoke_verb(base::TextView, base::TextView, base::TextView) override {}
    bool run_and_wait(base::TextView, bool) override { return false; }
    bool start(base::TextView) override { return false; }
    base::Text expand(base::TextView text) override { return base::Text(text); }
    void show_message(base::TextView text, std::int32_t) override {
        std::cerr << base::to_utf8(text) << '\n';
    }
};

/// The fonts' outlines are built in and no picture file is drawn.
class NoFiles final : public ports::Files {
  public:
    bool is_file(base::TextView) override { return false; }
    void copy(base::TextView, base::TextView) override {}
    void append(base::TextView, base::ByteView) override {}
};

constexpr std::int32_t page_twips = 20000;
constexpr std::int32_t margin_twips = 300;
constexpr std::int32_t picture_twips = 3000;

// The page cut to what was drawn on it and a margin.
drawing::Drawing cut(const drawing::Drawing& page) {
    if (page.points().empty()) return {2 * margin_twips, 2 * margin_twips};
    drawing::PointTwips first = page.points().front();
    drawing::PointTwips last = first;
    for (const drawing::PointTwips point : page.points()) {
        first = {std::min(first.x_twips, point.x_twips), std::min(first.y_twips, point.y_twips)};
        last = {std::max(last.x_twips, point.x_twips), std::max(last.y_twips, point.y_twips)};
    }
    drawing::Drawing drawing(
        drawing::whole_twips(0.0 + last.x_twips - first.x_twips + 2 * margin_twips),
        drawing::whole_twips(0.0 + last.y_twips - first.y_twips + 2 * margin_twips));
    drawing.add_placed(page, [&](drawing::PointTwips point) {
        return drawing::PointTwips{point.x_twips + margin_twips - first.x_twips,
                                   point.y_twips + margin_twips - first.y_twips};
    });
    return drawing;
}

}  // namespace

drawing::Drawing draw_as_class(const barcode::Symbology& symbology, const std::string& text,
                               std::int32_t size_step, bool bare, bool rotate) {
    ports::Canvas page(page_twips, page_twips);
    page.set_current_x(margin_twips);
    base::Text given = base::from_utf8(text);
    const auto code_page = make_code_page();
    switch (symbology.kind) {
        case barcode::Kind::ean8:
        case barcode::Kind::ean13:
            page.set_font_name(symbology.font->family);
            barcode::Drk_Wyd_Ean_cls813().RysujEAN(page, given, size_step, rotate);
            break;
        case barcode::Kind::code128:
            page.set_font_name(symbology.font->family);
            barcode::Drk_Wyd_Ean_cls128(*code_page).RysujEAN(page, given, size_step, bare, rotate);
            break;
        default: {
            BareDesktop desktop;
            NoFiles files;
            const auto pictures = ports::make_native_pictures();
            barcode::Drk_Wyd_Ean_cls({desktop, files, *pictures, *code_page})
                .RysujEAN(page, given, margin_twips, margin_twips, picture_twips, picture_twips,
                          size_step, base::Text(symbology.name), bare, rotate, u"", u"");
        }
    }
    return cut(page.drawing());
}

}  // namespace tavrix::cli
