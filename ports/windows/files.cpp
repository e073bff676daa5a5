#include "ports/windows/adapters.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <string>

#include "windows/bstr.h"
#include "windows/failure.h"
#include "windows/handles.h"
// Needs what they include.
#include <sddl.h>

namespace tavrix::ports {
namespace {

using windows::KernelHandle;
using windows::throw_last_error;
using windows::wide;

void check(BOOL succeeded, base::TextView source) {
    if (!succeeded) throw_last_error(source);
}

// The form of a path that Windows takes at any length; it must be a full one without "." and "..".
base::Text long_path(base::TextView path) {
    // A folder's path must leave room for a name of 12 characters.
    constexpr std::size_t longest_plain = MAX_PATH - 13;
    const base::Text given(path);
    if (given.size() < longest_plain || given.starts_with(u"\\\\?\\")) return given;
    const DWORD size = GetFullPathNameW(wide(given), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(GetFullPathNameW(wide(given), size, full.data(), nullptr));
    if (full.empty()) throw_last_error(u"GetFullPathName");
    const base::Text name = windows::text_from_wide(full.c_str());
    if (name.starts_with(u"\\\\")) return u"\\\\?\\UNC" + name.substr(1);
    return u"\\\\?\\" + name;
}

KernelHandle open_file(const base::Text& path, DWORD access, DWORD share, DWORD disposition,
                       SECURITY_ATTRIBUTES* security = nullptr) {
    HANDLE opened = CreateFileW(wide(path), access, share, security, disposition,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) throw_last_error(u"CreateFile");
    return KernelHandle(opened);
}

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A backup or a virus scanner may have the file to itself for a moment.
KernelHandle open_to_append(const base::Text& path) {
    constexpr DWORD pause_ms = 50;
    for (int attempts = 10;; --attempts) {
        HANDLE opened = CreateFileW(wide(path), FILE_APPEND_DATA, share_all, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
        if (opened != INVALID_HANDLE_VALUE) return KernelHandle(opened);
        if (GetLastError() != ERROR_SHARING_VIOLATION || attempts == 1) {
            throw_last_error(u"CreateFile");
        }
        Sleep(pause_ms);
    }
}

// In pieces that every file system takes at once.
void write_all(HANDLE file, base::ByteView bytes) {
    while (!bytes.empty()) {
        const auto piece = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), 1 << 20));
        DWORD written = 0;
        check(WriteFile(file, bytes.data(), piece, &written, nullptr), u"WriteFile");
        if (written == 0) windows::throw_failure(HRESULT_FROM_WIN32(ERROR_DISK_FULL), u"WriteFile");
        bytes = bytes.subspan(written);
    }
}

std::uint64_t size_of(HANDLE file) {
    LARGE_INTEGER size{};
    check(GetFileSizeEx(file, &size), u"GetFileSizeEx");
    return static_cast<std::uint64_t>(size.QuadPart);
}

class WindowsReader final : public FileReader {
  public:
    WindowsReader(const base::Text& path, DWORD share)
        : file_(open_file(path, GENERIC_READ, share, OPEN_EXISTING)) {}

    std::uint64_t size() override { return size_of(file_.get()); }
    void seek(std::uint64_t position) override {
        LARGE_INTEGER to{};
        to.QuadPart = static_cast<LONGLONG>(position);
        check(SetFilePointerEx(file_.get(), to, nullptr, FILE_BEGIN), u"SetFilePointerEx");
    }
    std::size_t read(std::span<std::uint8_t> buffer) override {
        std::size_t filled = 0;
        while (filled < buffer.size()) {
            const auto wanted =
                static_cast<DWORD>(std::min<std::size_t>(buffer.size() - filled, 1 << 20));
            DWORD got = 0;
            check(ReadFile(file_.get(), buffer.data() + filled, wanted, &got, nullptr),
                  u"ReadFile");
            if (got == 0) break;
            filled += got;
        }
        return filled;
    }

  private:
    KernelHandle file_;
};

// A name beside `path` that nobody else writes to.
base::Text unfinished_name(const base::Text& path) {
    static std::atomic<unsigned> count = 0;
    return path + u"." + base::to_decimal(GetCurrentProcessId()) + u"-" +
           base::to_decimal(++count) + u".tmp";
}

struct LocalMemory {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};

// Whose process this is, as security descriptors write it.
std::wstring this_user() {
    HANDLE opened = nullptr;
    check(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened), u"OpenProcessToken");
    const KernelHandle token(opened);
    alignas(TOKEN_USER) std::array<std::byte, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user{};
    DWORD size = 0;
    check(GetTokenInformation(token.get(), TokenUser, user.data(), user.size(), &size),
          u"GetTokenInformation");
    wchar_t* text = nullptr;
    check(ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, &text),
          u"ConvertSidToStringSid");
    const std::unique_ptr<wchar_t, LocalMemory> owned(text);
    return text;
}

// The user's alone, and nothing from the folder: a protected list with one entry.
class OwnerOnly {
  public:
    OwnerOnly() {
        const std::wstring list = L"D:P(A;;FA;;;" + this_user() + L")";
        check(ConvertStringSecurityDescriptorToSecurityDescriptorW(
                  list.c_str(), SDDL_REVISION_1, &attributes_.lpSecurityDescriptor, nullptr),
              u"ConvertStringSecurityDescriptorToSecurityDescriptor");
    }
    ~OwnerOnly() { LocalFree(attributes_.lpSecurityDescriptor); }
    OwnerOnly(const OwnerOnly&) = delete;
    OwnerOnly& operator=(const OwnerOnly&) = delete;
    SECURITY_ATTRIBUTES* get() { return &attributes_; }

  private:
    SECURITY_ATTRIBUTES attributes_{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

class WindowsWriter final : public FileWriter {
  public:
    WindowsWriter(base::TextView path, Readers readers)
        : path_(path), unfinished_(long_path(unfinished_name(path_))) {
        if (readers == Readers::owner) {
            OwnerOnly owner;
            file_ = open_file(unfinished_, GENERIC_WRITE, 0, CREATE_NEW, owner.get());
        } else {
            file_ = open_file(unfinished_, GENERIC_WRITE, 0, CREATE_NEW);
        }
    }
    ~WindowsWriter() override {
        file_.reset();
        if (!unfinished_.empty()) DeleteFileW(wide(unfinished_));
    }

    void write(base::ByteView bytes) override { write_all(file_.get(), bytes); }
    void keep() override {
        // A network disk may refuse only now what it took before, and closing tells nobody.
        check(FlushFileBuffers(file_.get()), u"FlushFileBuffers");
        file_.reset();
        check(MoveFileExW(wide(unfinished_), wide(long_path(path_)), MOVEFILE_REPLACE_EXISTING),
              u"MoveFileEx");
        unfinished_.clear();
    }

  private:
    base::Text path_;
    base::Text unfinished_;
    KernelHandle file_;
};

class WindowsFiles final : public DataFiles {
  public:
    bool is_file(base::TextView path) override;
    void copy(base::TextView from, base::TextView to) override;
    void append(base::TextView path, base::ByteView bytes) override;
    std::unique_ptr<FileReader> open(base::TextView path) override {
        return std::make_unique<WindowsReader>(long_path(path), FILE_SHARE_READ);
    }
    std::unique_ptr<FileReader> open_growing(base::TextView path) override {
        return std::make_unique<WindowsReader>(long_path(path), share_all);
    }
    std::unique_ptr<FileWriter> create(base::TextView path, Readers readers) override {
        return std::make_unique<WindowsWriter>(path, readers);
    }
    std::unique_ptr<FileWriter> create_like(base::TextView path,
                                            base::TextView /*origin*/) override {
        return create(path, Readers::everyone);
    }
    void remove(base::TextView path) override {
        check(DeleteFileW(wide(long_path(path))), u"DeleteFile");
    }
    void wipe(base::TextView path) override;
};

bool WindowsFiles::is_file(base::TextView path) {
    const DWORD attributes = GetFileAttributesW(wide(long_path(path)));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

void WindowsFiles::copy(base::TextView from, base::TextView to) {
    check(CopyFileW(wide(long_path(from)), wide(long_path(to)), FALSE), u"CopyFile");
}

void WindowsFiles::append(base::TextView path, base::ByteView bytes) {
    // With the right to append and no other, Windows itself finds the end for each write.
    const KernelHandle file = open_to_append(long_path(path));
    DWORD written = 0;
    check(WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr),
          u"WriteFile");
}

void WindowsFiles::wipe(base::TextView path) {
    {
        const KernelHandle file = open_file(long_path(path), GENERIC_WRITE, 0, OPEN_EXISTING);
        const std::array<std::uint8_t, 4096> zeros{};
        for (std::uint64_t left = size_of(file.get()); left > 0;) {
            const auto piece =
                static_cast<std::size_t>(std::min<std::uint64_t>(left, zeros.size()));
            write_all(file.get(), base::ByteView(zeros).first(piece));
            left -= piece;
        }
        check(FlushFileBuffers(file.get()), u"FlushFileBuffers");
    }
    remove(path);
}

}  // namespace

std::unique_ptr<DataFiles> make_windows_files() {
    return std::make_unique<WindowsFiles>();
}

}  // namespace tavrix::ports
