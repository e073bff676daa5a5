#pragma once

#include <functional>
#include <set>

#include "ports/native/canvas.h"

namespace tavrix::ports {

/// A canvas that writes down what is done to it, one line each, and fails on demand: as a surface
/// that lacks a property, or as a printer that stops in the middle.
class RecordingSurface final : public Canvas {
  public:
    using Canvas::Canvas;

    /// "Print text", "FontName name", "FontSize 48", "FontBold False", "PaintPicture x y width
    /// height", "TextOut angle x y text", "SetPixel x y" and so on.
    const std::vector<base::Text>& log() const noexcept { return log_; }
    std::vector<base::Text> logged(base::TextView member) const;
    /// From now on `member` ("FontSize", "Print", ...) is not there.
    void lack(base::TextView member) { lacking_.insert(base::Text(member)); }
    /// Fonts that setting a name does not select, as when they are not installed.
    void lack_font(base::TextView name) { missing_fonts_.insert(base::Text(name)); }
    void set_depth(std::int32_t bits_per_pixel) { depth_ = bits_per_pixel; }

    double current_x() override;
    void set_current_x(double x) override;
    void set_current_y(double y) override;
    base::Text font_name() override;
    void set_font_name(base::TextView name) override;
    void set_font_size(double points) override;
    void set_font_bold(bool bold) override;
    void print(base::TextView text) override;
    double text_width(base::TextView text) override;
    double text_height(base::TextView text) override;
    void paint_picture(const Picture& picture, double x, double y, double width,
                       double height) override;
    void write_turned(const TurnedText& text) override;
    void refresh() override { note(u"Refresh", u""); }
    void keep_image() override { note(u"Picture", u""); }
    Bitmap bitmap() override;
    void match_palette() override { note(u"Palette", u""); }

  private:
    void note(base::TextView member, const base::Text& details);
    void need(base::TextView member) const;

    std::vector<base::Text> log_;
    std::set<base::Text> lacking_;
    std::set<base::Text> missing_fonts_;
    std::int32_t depth_ = 32;
};

}  // namespace tavrix::ports
