#include "ports/windows/host_surface.h"

#include "ports/windows/com_pictures.h"
#include "ports/windows/gdi_drawing.h"
#include "ports/windows/vb_print.h"
#include "windows/failure.h"

namespace tavrix::windows {
namespace {

Variant converted(const Variant& value, VARTYPE type, base::TextView source) {
    Variant result;
    check(VariantChangeType(result.address(), const_cast<VARIANT*>(&value.get()), 0, type), source);
    return result;
}

double number_of(const Variant& value, base::TextView source) {
    return converted(value, VT_R8, source).get().dblVal;
}

// Handles are 32 bits wide even where pointers are not.
template <typename Handle>
Handle handle_of(const Variant& value, base::TextView source) {
    const auto number = static_cast<INT_PTR>(converted(value, VT_I8, source).get().llVal);
    return reinterpret_cast<Handle>(number);
}

}  // namespace

double HostSurface::number(const char16_t* property) const {
    return number_of(host_.get(property), property);
}

std::int32_t HostSurface::whole(const char16_t* property) const {
    return converted(host_.get(property), VT_I4, property).get().lVal;
}

base::Text HostSurface::font_name() {
    return base::Text(
        view_of(converted(host_.get(u"FontName"), VT_BSTR, u"FontName").get().bstrVal));
}

bool HostSurface::font_bold() {
    return converted(host_.get(u"FontBold"), VT_BOOL, u"FontBold").get().boolVal != VARIANT_FALSE;
}

double HostSurface::on_parent(const char16_t* method, double length) const {
    const LateBound parent = host_.object(u"Parent");
    const std::int32_t own_mode = whole(u"ScaleMode");
    const std::int32_t parent_mode =
        converted(parent.get(u"ScaleMode"), VT_I4, u"ScaleMode").get().lVal;
    return number_of(parent.call(method, length, own_mode, parent_mode), method);
}

void HostSurface::print(base::TextView text) {
    const auto statement = ComPointer<IDispatch>(host_.dispatch()).query<IVBPrint>();
    if (!statement) {
        host_.call(u"Print", text);
        return;
    }
    for (const base::TextView part : {text, base::TextView(u"\r\n")}) {
        check(statement->WriteText(make_bstr(part).get()), u"Print");
    }
}

double HostSurface::text_width(base::TextView text) {
    return number_of(host_.call(u"TextWidth", text), u"TextWidth");
}

double HostSurface::text_height(base::TextView text) {
    return number_of(host_.call(u"TextHeight", text), u"TextHeight");
}

void HostSurface::paint_picture(const ports::Picture& picture, double x, double y, double width,
                                double height) {
    const auto& painted = dynamic_cast<const ComPicture&>(picture);
    host_.call(u"PaintPicture", painted.dispatch(), x, y, width, height);
}

void HostSurface::keep_image() {
    host_.put(u"Picture", ComPointer<IDispatch>(host_.object(u"Image").dispatch()));
}

HDC HostSurface::device() const {
    return handle_of<HDC>(host_.get(u"hDC"), u"hDC");
}

HBITMAP HostSurface::image() const {
    return handle_of<HBITMAP>(host_.object(u"Image").get(u"Handle"), u"Image");
}

std::int32_t HostSurface::pixel(std::int32_t x_px, std::int32_t y_px) {
    return static_cast<std::int32_t>(GetPixel(device(), x_px, y_px));
}

void HostSurface::set_pixel(std::int32_t x_px, std::int32_t y_px, std::int32_t colour) {
    SetPixel(device(), x_px, y_px, static_cast<COLORREF>(colour));
}

void HostSurface::write_turned(const ports::TurnedText& text) {
    const Variant name = converted(host_.object(u"Font").get(u"Name"), VT_BSTR, u"Font.Name");
    write_turned_text(device(), text, view_of(name.get().bstrVal), font_size(), font_bold());
}

ports::Bitmap HostSurface::bitmap() {
    return read_bitmap(image());
}

void HostSurface::set_bitmap(const ports::Bitmap& bitmap) {
    write_bitmap(image(), bitmap);
}

void HostSurface::match_palette() {
    const LateBound picture = host_.object(u"Picture");
    windows::match_palette(device(), handle_of<HPALETTE>(picture.get(u"hPal"), u"hPal"));
}

}  // namespace tavrix::windows
