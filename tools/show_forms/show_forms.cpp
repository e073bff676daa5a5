// Shows the library's own windows to whoever takes their pictures: show_forms FOLDER writes a
// bitmap of each, in the scale of the screen it finds.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "ports/windows/adapters.h"
#include "tests/com/form_content.h"
#include "tests/com/form_user.h"
#include "tools/show_forms/browser_content.h"
#include "windows/gdi.h"

namespace {

using namespace tavrix;

void save_picture(HWND form, const std::filesystem::path& path) {
    RECT place{};
    GetWindowRect(form, &place);
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
    const HDC window = GetWindowDC(form);
    BitBlt(memory.get(), 0, 0, info.bmiHeader.biWidth, -info.bmiHeader.biHeight, window, 0, 0,
           SRCCOPY);
    ReleaseDC(form, window);
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

void take(test::FormUser& user, const std::filesystem::path& path,
          const std::function<void()>& show) {
    const auto save = [&](HWND form) { save_picture(form, path); };
    user.use(show, {save, test::press(VK_ESCAPE)});
}

// With the rows of a query in it.
void take_browser(test::FormUser& user, const std::filesystem::path& path) {
    const std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    dialogs::BrowserSession session = test::shown_browser(*clock);
    const auto type = [](HWND form) {
        SetDlgItemTextW(form, TAVRIX_BROWSER_QUERY,
                        L"select *\r\nfrom dok_fak\r\nwhere ddout_data_wyst >= '2026-11-01'");
    };
    const auto wait = [&](HWND form) {
        MSG message;
        while (session.is_busy() && GetMessageW(&message, form, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
        RedrawWindow(form, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    };
    const auto save = [&](HWND form) { save_picture(form, path); };
    user.use([&] { com::make_browser_window()->show(session); },
             {type, test::click(TAVRIX_BROWSER_RUN), wait, wait, save, test::press(VK_ESCAPE)});
}

}  // namespace

int main(int argument_count, char** arguments) {
    if (argument_count != 2) {
        std::fputs("show_forms FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = arguments[1];
    test::FormUser user;
    test::FormContent content;
    const std::unique_ptr<frame::AboutWindow> about_window = com::make_about_window();
    const std::unique_ptr<mail::MessageWindow> message_window = com::make_message_window();
    const std::unique_ptr<mail::RetrievalWindow> retrieval = com::make_retrieval_window();
    take(user, folder / "retrieval-form.bmp", [&] { retrieval->show(content.manager); });
    take(user, folder / "socket-form.bmp", [&] { retrieval->show(content.socket); });
    take_browser(user, folder / "browser.bmp");
    take(user, folder / "about.bmp", [&] { about_window->show(content.about); });
    take(user, folder / "message-form.bmp", [&] { message_window->show(content.message); });
    return 0;
}
