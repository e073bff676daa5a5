#include "tests/com/picture_box.h"

#include <ocidl.h>
#include <olectl.h>

#include <algorithm>
#include <cmath>

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "ports/windows/gdi_drawing.h"
#include "ports/windows/vb_print.h"
#include "windows/failure.h"

namespace tavrix::test {
namespace {

using Box = PictureBox;

template <auto Property>
consteval auto plain_property(DISPID id, base::TextView name) {
    return com::property<&Box::get<Property>, &Box::set<Property>>(id, name, u"");
}
template <auto Property>
consteval auto scale_property(DISPID id, base::TextView name) {
    return com::property<&Box::get<Property>, &Box::set_scale<Property>>(id, name, u"");
}

// What both hosts' boxes have. Image, Font and Parent lead back to the box: one object answers for
// all of them.
template <typename... More>
consteval auto members_with(const More&... more) {
    return com::members(
        plain_property<&Box::x>(1, u"CurrentX"), plain_property<&Box::y>(2, u"CurrentY"),
        com::property<&Box::get<&Box::font_name>, &Box::set_font_name>(3, u"FontName", u""),
        plain_property<&Box::font_size>(4, u"FontSize"),
        plain_property<&Box::font_bold>(5, u"FontBold"),
        com::property<&Box::scale_mode, &Box::set_scale_mode>(6, u"ScaleMode", u""),
        scale_property<&Box::scale_width>(7, u"ScaleWidth"),
        scale_property<&Box::scale_height>(8, u"ScaleHeight"),
        scale_property<&Box::scale_left>(9, u"ScaleLeft"),
        scale_property<&Box::scale_top>(10, u"ScaleTop"),
        com::property<&Box::width, &Box::set_width>(11, u"Width", u""),
        com::property<&Box::height, &Box::set_height>(12, u"Height", u""),
        com::read_only<&Box::device>(13, u"hDC", u""),
        com::read_only<&Box::self>(14, u"Image", u""),
        com::property<&Box::self, &Box::keep_picture>(15, u"Picture", u""),
        com::method<&Box::refresh>(16, u"Refresh", u""),
        com::method<&Box::text_width>(17, u"TextWidth", u"", com::by_value(u"Str")),
        com::method<&Box::text_height>(18, u"TextHeight", u"", com::by_value(u"Str")),
        com::method<&Box::paint_picture>(19, u"PaintPicture", u"", com::by_value(u"Picture"),
                                         com::by_value(u"X1"), com::by_value(u"Y1"),
                                         com::by_value(u"Width1"), com::by_value(u"Height1")),
        com::read_only<&Box::self>(20, u"Font", u""),
        com::read_only<&Box::get<&Box::font_name>>(21, u"Name", u""),
        com::read_only<&Box::self>(22, u"Parent", u""),
        com::method<&Box::scale_on_parent>(23, u"ScaleX", u"", com::by_value(u"Width"),
                                           com::by_value(u"FromScale"), com::by_value(u"ToScale")),
        com::method<&Box::scale_on_parent>(24, u"ScaleY", u"", com::by_value(u"Height"),
                                           com::by_value(u"FromScale"), com::by_value(u"ToScale")),
        com::read_only<&Box::image_handle>(25, u"Handle", u""),
        com::read_only<&Box::palette_handle>(26, u"hPal", u""), more...);
}

constexpr auto vb6_members = members_with(
    com::method<&Box::scale>(27, u"Scale", u"", com::by_value(u"Flags"), com::by_value(u"X1"),
                             com::by_value(u"Y1"), com::by_value(u"X2"), com::by_value(u"Y2")));
constexpr auto script_members =
    members_with(com::method<&Box::default_scale>(27, u"Scale", u""),
                 com::method<&Box::print>(28, u"Print", u"", com::by_value(u"text")));

constexpr com::ClassTable vb6_class = {
    .class_id = com::guid("7C3F7B6C-3C0B-4C7B-93B6-0D8A4B6F1B11"),
    .interface_id = com::guid("7C3F7B6C-3C0B-4C7B-93B6-0D8A4B6F1B12"),
    .name = u"PictureBox",
    .help = u"",
    .members = vb6_members,
};
constexpr com::ClassTable script_class = [] {
    com::ClassTable table = vb6_class;
    table.members = script_members;
    return table;
}();

/// VB6's members and the interface of its statement Print as one object.
class BoxObject final : public com::Unknown<IDispatch, IVBPrint> {
  public:
    explicit BoxObject(std::shared_ptr<Box> box)
        : box_(std::move(box)), members_(com::make_object(vb6_class, box_)) {}

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count,
                                            LCID locale, DISPID* ids) noexcept override {
        return members_->GetIDsOfNames(reserved, names, count, locale, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* information,
                                     UINT* argument_index) noexcept override {
        return members_->Invoke(id, reserved, locale, flags, parameters, result, information,
                                argument_index);
    }
    HRESULT STDMETHODCALLTYPE WriteText(BSTR text) noexcept override {
        return box_->write_text(base::Text(windows::view_of(text))) ? S_OK : E_FAIL;
    }

  private:
    std::shared_ptr<Box> box_;
    ComPointer<IDispatch> members_;
};

}  // namespace

PictureBox::PictureBox(std::int32_t width, std::int32_t height, std::int32_t dots_per_inch)
    : width_px(width),
      height_px(height),
      memory(CreateCompatibleDC(nullptr)),
      dots_per_inch_(dots_per_inch) {
    make_bitmap();
    set_scale_mode(1);
}

void PictureBox::resize(std::int32_t& side_px, double twips) {
    side_px = static_cast<std::int32_t>(std::lround(twips / twips_per_pixel()));
    make_bitmap();
}

void PictureBox::make_bitmap() {
    windows::GdiBitmap fresh(CreateBitmap(width_px, height_px, 1, 32, nullptr));
    SelectObject(memory.get(), fresh.get());
    bitmap = std::move(fresh);
    const RECT whole = {0, 0, width_px, height_px};
    FillRect(memory.get(), &whole, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
}

// The position stays where it is and gets the new scale's numbers.
void PictureBox::set_scale_mode(std::int32_t mode) {
    const double unit = mode == 3 ? 1 : twips_per_pixel();
    const double new_width = width_px * unit;
    const double new_height = height_px * unit;
    if (scale_width != 0) x = (x - scale_left) * new_width / scale_width;
    if (scale_height != 0) y = (y - scale_top) * new_height / scale_height;
    scale_left = scale_top = 0;
    scale_width = new_width;
    scale_height = new_height;
    mode_ = mode;
}

void PictureBox::scale(std::int32_t flags, const std::optional<double>& x1,
                       const std::optional<double>& y1, const std::optional<double>& x2,
                       const std::optional<double>& y2) {
    constexpr std::int32_t points_given = 4;
    if ((flags & points_given) == 0) return default_scale();
    scale_left = x1.value();
    scale_top = y1.value();
    scale_width = x2.value() - scale_left;
    scale_height = y2.value() - scale_top;
    mode_ = 0;
}

POINT PictureBox::pixel_at(double x_units, double y_units) const {
    return {std::lround((x_units - scale_left) * width_px / scale_width),
            std::lround((y_units - scale_top) * height_px / scale_height)};
}

windows::GdiFont PictureBox::font() const {
    constexpr double points_per_inch = 72;
    return windows::make_font(font_name, font_size * dots_per_inch_ / points_per_inch, font_bold,
                              0);
}

void PictureBox::set_font_name(const base::Text& name) {
    font_name = name;
    const auto own = font();
    const windows::Selected selected(memory.get(), own.get());
    wchar_t face[LF_FACESIZE] = {};
    GetTextFaceW(memory.get(), LF_FACESIZE, face);
    font_name = windows::text_from_wide(face);
}

SIZE PictureBox::extent(const base::Text& text) {
    const auto own = font();
    const windows::Selected selected(memory.get(), own.get());
    SIZE size{};
    GetTextExtentPoint32W(memory.get(), windows::wide(text), static_cast<int>(text.size()), &size);
    return size;
}

bool PictureBox::write_text(const base::Text& text) {
    if (out_of_paper) return false;
    written.push_back(text);
    if (text == u"\r\n") {
        y += text_height(u"A");
        x = scale_left;
        return true;
    }
    const auto own = font();
    const windows::Selected selected(memory.get(), own.get());
    const POINT place = pixel_at(x, y);
    TextOutW(memory.get(), place.x, place.y, windows::wide(text), static_cast<int>(text.size()));
    x += text_width(text);
    return true;
}

void PictureBox::print(const base::Text& text) {
    if (!write_text(text) || !write_text(u"\r\n")) windows::throw_failure(E_FAIL, u"Printer");
}

void PictureBox::paint_picture(const ComPointer<IDispatch>& picture, double left, double top,
                               const std::optional<double>& width,
                               const std::optional<double>& height) {
    const auto painted = picture.query<IPicture>();
    OLE_HANDLE handle = 0;
    painted->get_Handle(&handle);
    const POINT first = pixel_at(left, top);
    const POINT last = pixel_at(left + width.value(), top + height.value());
    SHORT type = 0;
    painted->get_Type(&type);
    const auto number = static_cast<INT_PTR>(static_cast<INT>(handle));
    if (type == PICTYPE_ENHMETAFILE) {
        const RECT place = {first.x, first.y, last.x, last.y};
        PlayEnhMetaFile(memory.get(), reinterpret_cast<HENHMETAFILE>(number), &place);
        return;
    }
    const windows::MemoryDevice source(CreateCompatibleDC(memory.get()));
    const windows::Selected selected(source.get(), reinterpret_cast<HBITMAP>(number));
    const ports::Bitmap size = windows::read_bitmap(reinterpret_cast<HBITMAP>(number));
    StretchBlt(memory.get(), first.x, first.y, last.x - first.x, last.y - first.y, source.get(), 0,
               0, size.width_px, size.height_px, SRCCOPY);
}

bool load_fonts() {
    const base::TextView names[] = {u"ean13", u"code128", u"free3of9", u"fre3of9x"};
    return std::all_of(std::begin(names), std::end(names), [](base::TextView name) {
        const base::Text file = beside_program(u"fonts\\" + base::Text(name) + u".ttf");
        return AddFontResourceExW(windows::wide(file), FR_PRIVATE, nullptr) == 1;
    });
}

HostedBox::HostedBox(HostKind host, std::int32_t width_px, std::int32_t height_px,
                     std::int32_t dots_per_inch)
    : box(std::make_shared<PictureBox>(width_px, height_px, dots_per_inch)),
      object(host == HostKind::vb6 ? ComPointer<IDispatch>::adopt(new BoxObject(box))
                                   : com::make_object(script_class, box)) {
    box->object = object.get();
}

}  // namespace tavrix::test
