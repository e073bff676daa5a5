#include "tests/com/picture_box.h"

#include <ocidl.h>
#include <olectl.h>

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "ports/windows/gdi_drawing.h"

namespace tavrix::test {
namespace {

using Box = PictureBox;
using com::by_value;

template <auto Property>
consteval auto plain_property(DISPID id, base::TextView name) {
    return com::property<&Box::get<Property>, &Box::set<Property>>(id, name, u"");
}

// Image, Font and Parent lead back to the box: one object answers for all of them.
constexpr auto box_members = com::members(
    plain_property<&Box::x>(1, u"CurrentX"), plain_property<&Box::y>(2, u"CurrentY"),
    plain_property<&Box::font_name>(3, u"FontName"),
    plain_property<&Box::font_size>(4, u"FontSize"),
    plain_property<&Box::font_bold>(5, u"FontBold"),
    plain_property<&Box::scale_mode>(6, u"ScaleMode"),
    com::read_only<&Box::scale_width>(7, u"ScaleWidth", u""),
    com::read_only<&Box::scale_height>(8, u"ScaleHeight", u""),
    plain_property<&Box::scale_left>(9, u"ScaleLeft"),
    plain_property<&Box::scale_top>(10, u"ScaleTop"),
    com::property<&Box::width, &Box::set_width>(11, u"Width", u""),
    com::property<&Box::height, &Box::set_height>(12, u"Height", u""),
    com::read_only<&Box::device>(13, u"hDC", u""), com::read_only<&Box::self>(14, u"Image", u""),
    com::property<&Box::self, &Box::keep_picture>(15, u"Picture", u""),
    com::method<&Box::refresh>(16, u"Refresh", u""),
    com::method<&Box::print>(17, u"Print", u"", by_value(u"text")),
    com::method<&Box::text_width>(18, u"TextWidth", u"", by_value(u"text")),
    com::method<&Box::text_height>(19, u"TextHeight", u"", by_value(u"text")),
    com::method<&Box::paint_picture>(20, u"PaintPicture", u"", by_value(u"picture"), by_value(u"x"),
                                     by_value(u"y"), by_value(u"width"), by_value(u"height")),
    com::method<&Box::scale>(21, u"Scale", u""), com::read_only<&Box::self>(22, u"Font", u""),
    com::read_only<&Box::get<&Box::font_name>>(23, u"Name", u""),
    com::read_only<&Box::self>(24, u"Parent", u""),
    com::method<&Box::scale_on_parent>(25, u"ScaleX", u"", by_value(u"length"), by_value(u"from"),
                                       by_value(u"to")),
    com::method<&Box::scale_on_parent>(26, u"ScaleY", u"", by_value(u"length"), by_value(u"from"),
                                       by_value(u"to")),
    com::read_only<&Box::image_handle>(27, u"Handle", u""));

constexpr com::ClassTable box_class = {
    .class_id = com::guid("7C3F7B6C-3C0B-4C7B-93B6-0D8A4B6F1B11"),
    .interface_id = com::guid("7C3F7B6C-3C0B-4C7B-93B6-0D8A4B6F1B12"),
    .name = u"PictureBox",
    .help = u"",
    .members = box_members,
};

}  // namespace

PictureBox::PictureBox(std::int32_t width, std::int32_t height)
    : memory(CreateCompatibleDC(nullptr)) {
    resize(width, height);
}

void PictureBox::resize(std::int32_t new_width_px, std::int32_t new_height_px) {
    width_px = new_width_px;
    height_px = new_height_px;
    windows::GdiBitmap fresh(CreateBitmap(width_px, height_px, 1, 32, nullptr));
    SelectObject(memory.get(), fresh.get());
    bitmap = std::move(fresh);
    const RECT whole = {0, 0, width_px, height_px};
    FillRect(memory.get(), &whole, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
}

SIZE PictureBox::extent(const base::Text& text) {
    const auto font = windows::make_font(memory.get(), font_name, font_size, font_bold, 0);
    const windows::Selected selected(memory.get(), font.get());
    SIZE size{};
    GetTextExtentPoint32W(memory.get(), windows::wide(text), static_cast<int>(text.size()), &size);
    return size;
}

void PictureBox::print(const base::Text& text) {
    const auto font = windows::make_font(memory.get(), font_name, font_size, font_bold, 0);
    const windows::Selected selected(memory.get(), font.get());
    TextOutW(memory.get(), pixels(x, unit()), pixels(y, unit()), windows::wide(text),
             static_cast<int>(text.size()));
    y += text_height(text);
    x = 0;
}

void PictureBox::paint_picture(const ComPointer<IDispatch>& picture, double left, double top,
                               double width, double height) {
    const auto painted = picture.query<IPicture>();
    OLE_HANDLE handle = 0;
    painted->get_Handle(&handle);
    const RECT place = {pixels(left, unit()), pixels(top, unit()), pixels(left + width, unit()),
                        pixels(top + height, unit())};
    SHORT type = 0;
    painted->get_Type(&type);
    const auto number = static_cast<INT_PTR>(static_cast<INT>(handle));
    if (type == PICTYPE_ENHMETAFILE) {
        PlayEnhMetaFile(memory.get(), reinterpret_cast<HENHMETAFILE>(number), &place);
        return;
    }
    const windows::MemoryDevice source(CreateCompatibleDC(memory.get()));
    const windows::Selected selected(source.get(), reinterpret_cast<HBITMAP>(number));
    const ports::Bitmap size = windows::read_bitmap(reinterpret_cast<HBITMAP>(number));
    StretchBlt(memory.get(), place.left, place.top, place.right - place.left,
               place.bottom - place.top, source.get(), 0, 0, size.width_px, size.height_px,
               SRCCOPY);
}

HostedBox::HostedBox(std::int32_t width_px, std::int32_t height_px)
    : box(std::make_shared<PictureBox>(width_px, height_px)),
      object(com::make_object(box_class, box)) {
    box->object = object.get();
}

}  // namespace tavrix::test
