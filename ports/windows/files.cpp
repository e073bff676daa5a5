#include "ports/windows/adapters.h"

#include "windows/bstr.h"
#include "windows/failure.h"
#include "windows/handles.h"

namespace tavrix::ports {
namespace {

using windows::wide;

[[noreturn]] void throw_last_error(base::TextView source) {
    windows::throw_failure(HRESULT_FROM_WIN32(GetLastError()), source);
}

class WindowsFiles final : public Files {
  public:
    bool is_file(base::TextView path) override;
    void copy(base::TextView from, base::TextView to) override;
    void append(base::TextView path, base::ByteView bytes) override;
};

bool WindowsFiles::is_file(base::TextView path) {
    const DWORD attributes = GetFileAttributesW(wide(base::Text(path)));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

void WindowsFiles::copy(base::TextView from, base::TextView to) {
    if (!CopyFileW(wide(base::Text(from)), wide(base::Text(to)), FALSE)) {
        throw_last_error(u"CopyFile");
    }
}

void WindowsFiles::append(base::TextView path, base::ByteView bytes) {
    // With the right to append and no other, Windows itself finds the end for each write.
    HANDLE opened = CreateFileW(wide(base::Text(path)), FILE_APPEND_DATA,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) throw_last_error(u"CreateFile");
    const windows::KernelHandle file(opened);
    DWORD written = 0;
    if (!WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        throw_last_error(u"WriteFile");
    }
}

}  // namespace

std::unique_ptr<Files> make_windows_files() {
    return std::make_unique<WindowsFiles>();
}

}  // namespace tavrix::ports
