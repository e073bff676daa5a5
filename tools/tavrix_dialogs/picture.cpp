#include "tools/tavrix_dialogs/picture.h"

#include <fstream>

#include "windows/gdi.h"

namespace tavrix::dialogs_program {

void save_picture(HWND window, const std::filesystem::path& path) {
    RECT place{};
    GetWindowRect(window, &place);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = place.right - place.left;
    info.bmiHeader.biHeight = place.top - place.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const windows::GdiBitmap bitmap(
        CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    const windows::MemoryDevice memory(CreateCompatibleDC(nullptr));
    const windows::Selected selected(memory.get(), bitmap.get());
    // With the frame and the title.
    const HDC device = GetWindowDC(window);
    BitBlt(memory.get(), 0, 0, info.bmiHeader.biWidth, -info.bmiHeader.biHeight, device, 0, 0,
           SRCCOPY);
    ReleaseDC(window, device);
    GdiFlush();

    const auto size = static_cast<DWORD>(4 * info.bmiHeader.biWidth * -info.bmiHeader.biHeight);
    BITMAPFILEHEADER header{};
    header.bfType = 0x4D42;  // "BM"
    header.bfOffBits = sizeof header + sizeof info.bmiHeader;
    header.bfSize = header.bfOffBits + size;
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&header), sizeof header);
    file.write(reinterpret_cast<const char*>(&info.bmiHeader), sizeof info.bmiHeader);
    file.write(static_cast<const char*>(bits), size);
}

}  // namespace tavrix::dialogs_program
