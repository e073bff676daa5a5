#pragma once

#include <optional>
#include <set>

#include "ports/native/canvas.h"

namespace tavrix::test {

/// A canvas that writes down what is done to it and fails on demand: as a surface that lacks a
/// property, or as a printer that stops in the middle. It measures simply, so that expectations can
/// be worked out by hand: a line is as many units high as its font has points, a character half as
/// many wide.
class RecordingSurface : public ports::Canvas {
  public:
    using Canvas::Canvas;

    /// "Print text; ", "FontName name; ", "PaintPicture x y width height; ", "TextOut angle x y
    /// text; " and so on, one behind the other.
    const base::Text& log() const noexcept { return log_; }
    const std::vector<drawing::Drawing>& painted() const noexcept { return painted_; }
    /// From now on `member` ("FontSize", "Print", ...) is not there.
    void lack(base::TextView member) { lacking_.insert(base::Text(member)); }
    /// A font that setting its name does not select, as when it is not installed.
    void lack_font(base::TextView name) { missing_fonts_.insert(base::Text(name)); }
    /// Bitmaps have the first bytes of each pixel of 32 bits, and `written` is the last one set.
    void set_depth(std::int32_t bits_per_pixel) { depth_ = bits_per_pixel; }
    std::optional<ports::Bitmap> written;

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
    void paint_picture(const ports::Picture& picture, double x, double y, double width,
                       double height) override;
    void write_turned(const ports::TurnedText& text) override;
    void refresh() override { note(u"Refresh"); }
    void keep_image() override { note(u"Picture"); }
    ports::Bitmap bitmap() override;
    void set_bitmap(const ports::Bitmap& bitmap) override;
    void match_palette() override { note(u"Palette"); }

  private:
    void note(base::TextView member, const base::Text& details = {});
    void need(base::TextView member) const;

    base::Text log_;
    std::vector<drawing::Drawing> painted_;
    std::set<base::Text> lacking_;
    std::set<base::Text> missing_fonts_;
    std::int32_t depth_ = 32;
};

}  // namespace tavrix::test
