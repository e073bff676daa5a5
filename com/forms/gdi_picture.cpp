#include "com/forms/gdi_picture.h"

#include <cmath>
#include <cstring>
#include <new>

#include "drawing/pixels.h"
#include "windows/bstr.h"

namespace tavrix::com {
TwipsDevice::TwipsDevice(HDC device, double x_dots_per_inch, double y_dots_per_inch) noexcept
    : device_(device), state_(SaveDC(device)) {
    // Finer than whole dots: a metafile's device has an inch of its own.
    constexpr int parts = 10;
    SetMapMode(device, MM_ANISOTROPIC);
    SetWindowExtEx(device, twips_per_inch * parts, twips_per_inch * parts, nullptr);
    SetViewportExtEx(device, static_cast<int>(std::lround(x_dots_per_inch * parts)),
                     static_cast<int>(std::lround(y_dots_per_inch * parts)), nullptr);
    SetBkMode(device, TRANSPARENT);
    SetTextAlign(device, TA_LEFT | TA_TOP);
}

TwipsDevice::~TwipsDevice() {
    RestoreDC(device_, state_);
}

HFONT GdiText::font(double em_twips, bool bold, int angle_degrees) {
    const LONG em = std::lround(em_twips);
    for (const Font& known : fonts_) {
        if (known.em_twips == em && known.bold == bold && known.angle_degrees == angle_degrees) {
            return known.handle.get();
        }
    }
    LOGFONTW wanted = face_;
    wanted.lfHeight = -em;
    wanted.lfWidth = 0;
    wanted.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    wanted.lfEscapement = wanted.lfOrientation = angle_degrees * 10;
    wanted.lfOutPrecision = OUT_TT_PRECIS;
    fonts_.push_back({em, bold, angle_degrees, windows::GdiFont(CreateFontIndirectW(&wanted))});
    return fonts_.back().handle.get();
}

double GdiText::width_of(base::TextView text, double em_twips, bool bold) {
    const windows::Selected selected(device_, font(em_twips, bold, 0));
    SIZE size{};
    GetTextExtentPoint32W(device_, windows::wide(text.data()), static_cast<int>(text.size()),
                          &size);
    return size.cx;
}

void GdiText::draw(const drawing::Label& label) {
    const windows::Selected selected(device_,
                                     font(label.em_twips, label.bold, label.angle_degrees));
    TEXTMETRICW metrics{};
    GetTextMetricsW(device_, &metrics);
    const double width = width_of(label.text, label.em_twips, label.bold);
    const double before = width * (static_cast<double>(label.alignment) / 2);
    const double above = metrics.tmHeight / 2.0;
    const double angle = label.angle_degrees * std::acos(-1) / 180;
    const double x = label.x_twips - before * std::cos(angle) - above * std::sin(angle);
    const double y = label.y_twips + before * std::sin(angle) - above * std::cos(angle);
    SetTextColor(device_, label.colour);
    TextOutW(device_, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)),
             windows::wide(label.text), static_cast<int>(label.text.size()));
}

void draw_layers(HDC device, const drawing::Picture& picture) {
    const windows::Selected pen(device, GetStockObject(NULL_PEN));
    const RECT whole = {0, 0, picture.width_twips, picture.height_twips};
    const windows::GdiBrush paper(CreateSolidBrush(picture.paper));
    FillRect(device, &whole, paper.get());
    std::vector<POINT> points;
    for (const drawing::Drawing& layer : picture.layers) {
        // A metafile does not record the colour of the device's own brush.
        const windows::GdiBrush ink(CreateSolidBrush(layer.colour()));
        const windows::Selected brush(device, ink.get());
        layer.for_each_polygon([&](std::span<const drawing::PointTwips> polygon) {
            points.clear();
            for (const drawing::PointTwips point : polygon) {
                points.push_back({point.x_twips, point.y_twips});
            }
            Polygon(device, points.data(), static_cast<int>(points.size()));
        });
    }
}

PictureBitmap::PictureBitmap(const drawing::Picture& picture, const LOGFONTW& face,
                             int dots_per_inch) {
    const drawing::Pixels pixels =
        drawing::to_pixels(picture, static_cast<double>(dots_per_inch) / twips_per_inch);
    width_px_ = pixels.width_px;
    height_px_ = pixels.height_px;
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width_px_;
    // Rows from the top.
    info.bmiHeader.biHeight = -height_px_;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits_, nullptr, 0));
    memory_.reset(CreateCompatibleDC(nullptr));
    if (!bitmap_ || !memory_) throw std::bad_alloc();
    std::memcpy(bits_, pixels.bytes.data(), pixels.bytes.size());
    selected_.emplace(memory_.get(), bitmap_.get());
    {
        const TwipsDevice in_twips(memory_.get(), dots_per_inch, dots_per_inch);
        GdiText text(memory_.get(), face);
        for (const drawing::Label& label : picture.labels) text.draw(label);
    }
    GdiFlush();
}

std::span<const std::uint8_t> PictureBitmap::bytes() const noexcept {
    return {static_cast<const std::uint8_t*>(bits_),
            static_cast<std::size_t>(width_px_) * static_cast<std::size_t>(height_px_) * 4};
}

}  // namespace tavrix::com
