#pragma once

#include "ports/surface.h"
#include "windows/late_bound.h"

namespace tavrix::windows {

/// A host's picture box or printer, whose members are called by name, but for printing where it is
/// one of VB6's; pixels and turned text go around it to its hDC. In sight because the public
/// classes' arguments become one.
class HostSurface final : public ports::Surface {
  public:
    explicit HostSurface(ComPointer<IDispatch> object) : host_(std::move(object)) {}

    double current_x() override { return number(u"CurrentX"); }
    void set_current_x(double x) override { host_.put(u"CurrentX", x); }
    double current_y() override { return number(u"CurrentY"); }
    void set_current_y(double y) override { host_.put(u"CurrentY", y); }
    base::Text font_name() override;
    void set_font_name(base::TextView name) override { host_.put(u"FontName", name); }
    double font_size() override { return number(u"FontSize"); }
    void set_font_size(double points) override { host_.put(u"FontSize", points); }
    bool font_bold() override;
    void set_font_bold(bool bold) override { host_.put(u"FontBold", bold); }
    std::int32_t scale_mode() override { return whole(u"ScaleMode"); }
    void set_scale_mode(std::int32_t mode) override { host_.put(u"ScaleMode", mode); }
    double scale_width() override { return number(u"ScaleWidth"); }
    void set_scale_width(double width) override { host_.put(u"ScaleWidth", width); }
    double scale_height() override { return number(u"ScaleHeight"); }
    void set_scale_height(double height) override { host_.put(u"ScaleHeight", height); }
    double scale_left() override { return number(u"ScaleLeft"); }
    void set_scale_left(double left) override { host_.put(u"ScaleLeft", left); }
    double scale_top() override { return number(u"ScaleTop"); }
    void set_scale_top(double top) override { host_.put(u"ScaleTop", top); }
    double width() override { return number(u"Width"); }
    void set_width(double width) override { host_.put(u"Width", width); }
    double height() override { return number(u"Height"); }
    void set_height(double height) override { host_.put(u"Height", height); }
    double width_on_parent(double width) override { return on_parent(u"ScaleX", width); }
    double height_on_parent(double height) override { return on_parent(u"ScaleY", height); }
    void print(base::TextView text) override;
    double text_width(base::TextView text) override;
    double text_height(base::TextView text) override;
    void paint_picture(const ports::Picture& picture, double x, double y, double width,
                       double height) override;
    void refresh() override { host_.call(u"Refresh"); }
    void keep_image() override;
    std::int32_t pixel(std::int32_t x_px, std::int32_t y_px) override;
    void set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) override;
    void write_turned(const ports::TurnedText& text) override;
    ports::Bitmap bitmap() override;
    void set_bitmap(const ports::Bitmap& bitmap) override;
    void match_palette() override;

  private:
    double number(const char16_t* property) const;
    std::int32_t whole(const char16_t* property) const;
    double on_parent(const char16_t* method, double length) const;
    HDC device() const;
    HBITMAP image() const;

    LateBound host_;
};

}  // namespace tavrix::windows
