#include "ports/windows/adapters.h"

#include <array>
#include <cstring>

#include "windows/bstr.h"
#include "windows/failure.h"
#include "windows/handles.h"

namespace tavrix::ports {
namespace {

using windows::throw_last_error;
using windows::wide;

HANDLE open_for_writing(const base::Text& path, DWORD disposition) {
    return CreateFileW(wide(path), GENERIC_WRITE, FILE_SHARE_READ, nullptr, disposition,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

void write_and_flush(HANDLE file, base::ByteView bytes) {
    DWORD written = 0;
    if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
        throw_last_error(u"WriteFile");
    }
    if (written != bytes.size()) {
        SetLastError(ERROR_DISK_FULL);
        throw_last_error(u"WriteFile");
    }
    // A full disk across a network shows itself only now.
    if (!FlushFileBuffers(file)) throw_last_error(u"FlushFileBuffers");
}

void write_into(base::TextView path, DWORD disposition, base::ByteView bytes) {
    const HANDLE opened = open_for_writing(base::Text(path), disposition);
    if (opened == INVALID_HANDLE_VALUE) throw_last_error(u"CreateFile");
    const windows::KernelHandle file(opened);
    write_and_flush(file.get(), bytes);
}

bool holds(const base::Text& path, base::ByteView bytes) {
    const HANDLE opened = CreateFileW(wide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return false;
    const windows::KernelHandle file(opened);
    std::array<std::uint8_t, 65536> piece;
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(file.get(), piece.data(), piece.size(), &count, nullptr)) return false;
        if (count == 0) return bytes.empty();
        const bool same =
            count <= bytes.size() && std::memcmp(piece.data(), bytes.data(), count) == 0;
        if (!same) return false;
        bytes = bytes.subspan(count);
    }
}

class WindowsFileStore final : public FileStore {
  public:
    void make_folder(base::TextView path) override {
        if (CreateDirectoryW(wide(base::Text(path)), nullptr)) return;
        if (GetLastError() != ERROR_ALREADY_EXISTS) throw_last_error(u"CreateDirectory");
    }

    void write(base::TextView path, base::ByteView bytes) override {
        write_into(path, CREATE_ALWAYS, bytes);
    }

    void overwrite(base::TextView path, base::ByteView bytes) override {
        write_into(path, OPEN_ALWAYS, bytes);
    }

    bool write_new(base::TextView path, base::ByteView bytes) override {
        const base::Text name(path);
        const HANDLE opened = open_for_writing(name, CREATE_NEW);
        if (opened == INVALID_HANDLE_VALUE) {
            if (GetLastError() != ERROR_FILE_EXISTS) throw_last_error(u"CreateFile");
            return holds(name, bytes);
        }
        try {
            const windows::KernelHandle file(opened);
            write_and_flush(file.get(), bytes);
        } catch (...) {
            // Half a file under its name would be taken for another one.
            DeleteFileW(wide(name));
            throw;
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<FileStore> make_windows_file_store() {
    return std::make_unique<WindowsFileStore>();
}

}  // namespace tavrix::ports
