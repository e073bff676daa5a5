#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "ports/native/adapters.h"
#include "ports/native/failure.h"
#include "ports/native/path.h"

namespace tavrix::ports {
namespace {

class OpenFile {
  public:
    OpenFile(const std::string& name, int flags) noexcept
        : number_(open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0666)) {}
    ~OpenFile() {
        if (is_open()) close(number_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool is_open() const noexcept { return number_ >= 0; }
    void write_all(base::ByteView bytes) {
        while (!bytes.empty()) {
            const ssize_t written = write(number_, bytes.data(), bytes.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) fail(u"write", errno);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
        // A full disk across a network shows itself only now. A pipe or a device has none.
        if (fsync(number_) != 0 && errno != EINVAL && errno != EROFS) fail(u"fsync", errno);
    }

  private:
    int number_;
};

// A pipe would be waited for, and a device never ends.
bool holds(const std::string& name, base::ByteView bytes) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    std::ifstream file(name, std::ios::binary);
    std::array<char, 65536> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() > 0) {
        const auto count = static_cast<std::size_t>(file.gcount());
        const bool same =
            count <= bytes.size() && std::memcmp(piece.data(), bytes.data(), count) == 0;
        if (!same) return false;
        bytes = bytes.subspan(count);
    }
    return file.eof() && bytes.empty();
}

class NativeFileStore final : public FileStore {
  public:
    explicit NativeFileStore(std::string drive_c) : drive_c_(std::move(drive_c)) {}

    void make_folder(base::TextView path) override {
        const std::string name = native_path(path, drive_c_);
        if (mkdir(name.c_str(), 0777) != 0 && errno != EEXIST) fail(u"mkdir", errno);
    }

    void write(base::TextView path, base::ByteView bytes) override {
        write_into(native_path(path, drive_c_), O_TRUNC, bytes);
    }

    void overwrite(base::TextView path, base::ByteView bytes) override {
        write_into(native_path(path, drive_c_), 0, bytes);
    }

    bool write_new(base::TextView path, base::ByteView bytes) override {
        const std::string name = native_path(path, drive_c_);
        OpenFile file(name, O_EXCL);
        if (!file.is_open() && errno == EEXIST) return holds(name, bytes);
        if (!file.is_open()) fail(u"open", errno);
        try {
            file.write_all(bytes);
        } catch (...) {
            // Half a file under its name would be taken for another one.
            unlink(name.c_str());
            throw;
        }
        return true;
    }

  private:
    static void write_into(const std::string& name, int flags, base::ByteView bytes) {
        OpenFile file(name, flags);
        if (!file.is_open()) fail(u"open", errno);
        file.write_all(bytes);
    }

    std::string drive_c_;
};

}  // namespace

std::unique_ptr<FileStore> make_native_file_store(std::string drive_c) {
    return std::make_unique<NativeFileStore>(std::move(drive_c));
}

}  // namespace tavrix::ports
