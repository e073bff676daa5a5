#pragma once

#include <memory>

#include "base/text.h"
#include "drawing/drawing.h"

namespace tavrix::ports {

/// A picture that a surface can paint; what it is made of is the adapter's affair.
class Picture {
  public:
    virtual ~Picture() = default;
};

/// A surface's pixels as the system keeps them: rows from the top, each `stride_bytes` long.
struct Bitmap {
    std::int32_t width_px = 0;
    std::int32_t height_px = 0;
    std::int32_t stride_bytes = 0;
    std::int32_t bits_per_pixel = 0;
    base::Bytes bits;
};

// The hosts' numbers of the units in which a surface measures.
inline constexpr std::int32_t scale_twips = 1;
inline constexpr std::int32_t scale_pixels = 3;

/// A line of text turned by `angle_degrees` counter-clockwise around the left end of its top.
struct TurnedText {
    base::TextView text;
    std::int32_t angle_degrees;
    double x_px;
    double y_px;
};

/// A host's picture box or printer. Lengths are in the surface's own scale units, which the host
/// chose, unless a name says otherwise; the y axis points down. Every function throws
/// base::AutomationError with the host's own description where the surface lacks the property or
/// refuses. Belongs to the host and to one thread.
class Surface {
  public:
    virtual ~Surface() = default;

    virtual double current_x() = 0;
    virtual void set_current_x(double x) = 0;
    virtual double current_y() = 0;
    virtual void set_current_y(double y) = 0;

    /// The font that the surface really has; it may differ from the one last set.
    virtual base::Text font_name() = 0;
    virtual void set_font_name(base::TextView name) = 0;
    virtual double font_size() = 0;
    virtual void set_font_size(double points) = 0;
    virtual bool font_bold() = 0;
    virtual void set_font_bold(bool bold) = 0;

    virtual std::int32_t scale_mode() = 0;
    /// Any mode but 0 also moves the origin to the top left.
    virtual void set_scale_mode(std::int32_t mode) = 0;
    virtual double scale_width() = 0;
    virtual void set_scale_width(double width) = 0;
    virtual double scale_height() = 0;
    virtual void set_scale_height(double height) = 0;
    virtual double scale_left() = 0;
    virtual void set_scale_left(double left) = 0;
    virtual double scale_top() = 0;
    virtual void set_scale_top(double top) = 0;

    /// The outer size, in the units of what the surface stands on.
    virtual double width() = 0;
    virtual void set_width(double width) = 0;
    virtual double height() = 0;
    virtual void set_height(double height) = 0;
    /// A length on the surface in the units of what it stands on.
    virtual double width_on_parent(double width) = 0;
    virtual double height_on_parent(double height) = 0;

    /// One print statement: the text from the current position, then a new line.
    virtual void print(base::TextView text) = 0;
    virtual double text_width(base::TextView text) = 0;
    virtual double text_height(base::TextView text) = 0;
    virtual void paint_picture(const Picture& picture, double x, double y, double width,
                               double height) = 0;
    virtual void refresh() = 0;
    /// Makes what was drawn last: the surface's picture becomes its image.
    virtual void keep_image() = 0;

    // What goes around the host, straight to the device.

    /// The colour of a pixel; negative where there is none.
    virtual std::int32_t pixel(std::int32_t x_px, std::int32_t y_px) = 0;
    virtual void set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) = 0;
    /// In the surface's font and size.
    virtual void write_turned(const TurnedText& text) = 0;
    virtual Bitmap bitmap() = 0;
    /// `bitmap` has the surface's size and depth.
    virtual void set_bitmap(const Bitmap& bitmap) = 0;
    /// Makes the palette of a surface of 256 colours agree with the system's.
    virtual void match_palette() = 0;
};

/// Two picture boxes out of sight, for pictures that are turned before they are painted. They have
/// 96 pixels to the inch and draw a bar code font as large as makes its module the nearest whole
/// number of them.
class PictureForm {
  public:
    virtual ~PictureForm() = default;
    virtual Surface& upright() = 0;
    virtual Surface& turned() = 0;
    virtual std::unique_ptr<Picture> turned_picture() = 0;
    /// The version of the QR symbol last made, as a text.
    virtual void set_version(base::TextView version) = 0;
};

/// Makes pictures. Failures throw base::AutomationError.
class Pictures {
  public:
    virtual ~Pictures() = default;
    virtual std::unique_ptr<Picture> from_drawing(const drawing::Drawing& drawing) = 0;
    virtual std::unique_ptr<Picture> load(base::TextView path) = 0;
    virtual std::unique_ptr<PictureForm> open_form() = 0;
};

}  // namespace tavrix::ports
