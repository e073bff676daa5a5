#include "ports/windows/gdi_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "windows/failure.h"

namespace tavrix::windows {
namespace {

// The system's code page, as the byte version of a function expects it.
std::string ansi_of(base::TextView text) {
    const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
    const int length = static_cast<int>(text.size());
    std::string bytes(static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, 0, wide, length, nullptr,
                                                                   0, nullptr, nullptr)),
                      '\0');
    WideCharToMultiByte(CP_ACP, 0, wide, length, bytes.data(), static_cast<int>(bytes.size()),
                        nullptr, nullptr);
    return bytes;
}

[[noreturn]] void fail(base::TextView source) {
    const DWORD code = GetLastError();
    throw_failure(code == 0 ? E_FAIL : HRESULT_FROM_WIN32(code), source);
}

}  // namespace

double em_pixels(HDC device, double points) {
    constexpr double points_per_inch = 72;
    return points * GetDeviceCaps(device, LOGPIXELSY) / points_per_inch;
}

GdiFont make_font(base::TextView name, double em_px, bool bold, std::int32_t angle_degrees) {
    // What a device's coordinates hold.
    constexpr double largest_em_px = 32767;
    if (!(std::abs(em_px) <= largest_em_px)) drawing::throw_too_large();
    LOGFONTA description{};
    description.lfHeight = -static_cast<LONG>(std::lround(em_px));
    description.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    description.lfEscapement = description.lfOrientation = angle_degrees * 10;
    description.lfCharSet = DEFAULT_CHARSET;
    description.lfQuality = NONANTIALIASED_QUALITY;
    // The last of the 32 bytes stays zero.
    const std::string face = ansi_of(name);
    face.copy(description.lfFaceName, sizeof description.lfFaceName - 1);
    GdiFont font(CreateFontIndirectA(&description));
    if (!font) fail(u"CreateFontIndirect");
    return font;
}

void write_turned_text(HDC device, const ports::TurnedText& text, base::TextView font_name,
                       double points, bool bold) {
    const GdiFont font = make_font(font_name, em_pixels(device, points), bold, text.angle_degrees);
    const Selected selected(device, font.get());
    const std::string bytes = ansi_of(text.text);
    if (!TextOutA(device, static_cast<int>(std::lround(text.x_px)),
                  static_cast<int>(std::lround(text.y_px)), bytes.data(),
                  static_cast<int>(bytes.size()))) {
        fail(u"TextOut");
    }
}

ports::Bitmap read_bitmap(HBITMAP handle) {
    BITMAP header{};
    if (GetObjectA(handle, sizeof header, &header) == 0) fail(u"GetObject");
    ports::Bitmap bitmap;
    bitmap.width_px = header.bmWidth;
    bitmap.height_px = std::abs(header.bmHeight);
    bitmap.stride_bytes = header.bmWidthBytes;
    bitmap.bits_per_pixel = header.bmBitsPixel;
    bitmap.bits.resize(static_cast<std::size_t>(bitmap.stride_bytes) *
                       static_cast<std::size_t>(bitmap.height_px));
    if (GetBitmapBits(handle, static_cast<LONG>(bitmap.bits.size()), bitmap.bits.data()) == 0) {
        fail(u"GetBitmapBits");
    }
    return bitmap;
}

void write_bitmap(HBITMAP handle, const ports::Bitmap& pixels) {
    if (SetBitmapBits(handle, static_cast<DWORD>(pixels.bits.size()), pixels.bits.data()) == 0) {
        fail(u"SetBitmapBits");
    }
}

void match_palette(HDC device, HPALETTE palette) {
    std::array<PALETTEENTRY, 256> entries{};
    // On a device without a palette of its own the indexes mean what the picture says, if it says.
    if ((GetDeviceCaps(device, RASTERCAPS) & RC_PALETTE) == 0) {
        if (GetPaletteEntries(palette, 0, 256, entries.data()) == 0) fail(u"GetPaletteEntries");
        return;
    }
    // A bitmap's indexes are those of the system's palette: the picture's becomes the same.
    const UINT count = std::min<UINT>(256, static_cast<UINT>(GetDeviceCaps(device, SIZEPALETTE)));
    if (GetSystemPaletteEntries(device, 0, count, entries.data()) == 0 ||
        !ResizePalette(palette, count) ||
        SetPaletteEntries(palette, 0, count, entries.data()) == 0) {
        fail(u"SetPaletteEntries");
    }
    RealizePalette(device);
}

}  // namespace tavrix::windows
