#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "ports/native/adapters.h"
#include "ports/native/failure.h"
#include "ports/native/path.h"

namespace tavrix::ports {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const noexcept { return number_; }
    int release() noexcept { return std::exchange(number_, -1); }

  private:
    int number_;
};

// The system may take less than it is given, and interrupts.
void write_all(const Descriptor& file, base::ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file.number(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) fail(u"write", written < 0 ? errno : ENOSPC);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

std::uint64_t size_of(const Descriptor& file) {
    struct stat status {};
    if (fstat(file.number(), &status) != 0) fail(u"fstat", errno);
    if (S_ISDIR(status.st_mode)) fail(u"open", EISDIR);
    return static_cast<std::uint64_t>(status.st_size);
}

class NativeReader final : public FileReader {
  public:
    explicit NativeReader(const std::string& name)
        : file_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (file_.number() < 0) fail(u"open", errno);
        size_of(file_);
    }

    std::uint64_t size() override { return size_of(file_); }
    void seek(std::uint64_t position) override {
        if (lseek(file_.number(), static_cast<off_t>(position), SEEK_SET) < 0) fail(u"seek", errno);
    }
    std::size_t read(std::span<std::uint8_t> buffer) override {
        std::size_t filled = 0;
        while (filled < buffer.size()) {
            const ssize_t got =
                ::read(file_.number(), buffer.data() + filled, buffer.size() - filled);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) fail(u"read", errno);
            if (got == 0) break;
            filled += static_cast<std::size_t>(got);
        }
        return filled;
    }

  private:
    Descriptor file_;
};

// Makes a file beside `name` that nobody else writes to, and puts its own name in the place of
// `name`. A process that had the same number may have left one behind.
int make_unfinished(std::string& name, mode_t mode) {
    static std::atomic<unsigned> count = 0;
    for (;;) {
        const std::string unfinished =
            name + "." + std::to_string(getpid()) + "-" + std::to_string(++count) + ".tmp";
        const int file = open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (file < 0 && errno == EEXIST) continue;
        if (file < 0) fail(u"open", errno);
        name = unfinished;
        return file;
    }
}

// What a new file takes the place of. A link stays where it is and what it names is replaced; a
// device or a pipe would be lost to the whole system.
std::string replaced_by_name(std::string name) {
    std::error_code error;
    const auto status = std::filesystem::status(name, error);
    if (error || !std::filesystem::exists(status)) return name;
    if (std::filesystem::is_directory(status)) fail(u"open", EISDIR);
    if (!std::filesystem::is_regular_file(status)) fail(u"open", EEXIST);
    const bool link = std::filesystem::is_symlink(std::filesystem::symlink_status(name, error));
    return link ? std::filesystem::canonical(name).string() : name;
}

class NativeWriter final : public FileWriter {
  public:
    NativeWriter(std::string name, mode_t mode)
        : name_(replaced_by_name(std::move(name))),
          unfinished_(name_),
          file_(make_unfinished(unfinished_, mode)) {}
    ~NativeWriter() override {
        if (!unfinished_.empty()) unlink(unfinished_.c_str());
    }

    /// Gives the file the group and the rights of the one that it replaces.
    void take_over(const struct stat& replaced) {
        // A user outside that group cannot, and whom his own has in it nobody asked.
        const bool same_group = fchown(file_.number(), gid_t(-1), replaced.st_gid) == 0;
        const mode_t mode = replaced.st_mode & (same_group ? 0777 : 0707);
        // Some disks know no rights.
        if (fchmod(file_.number(), mode) != 0 && errno != EPERM) fail(u"fchmod", errno);
    }
    void write(base::ByteView bytes) override { write_all(file_, bytes); }
    void keep() override {
        // A network disk may refuse only now what it took before.
        if (close(file_.release()) != 0) fail(u"close", errno);
        if (std::rename(unfinished_.c_str(), name_.c_str()) != 0) fail(u"rename", errno);
        unfinished_.clear();
    }

  private:
    std::string name_;
    std::string unfinished_;
    Descriptor file_;
};

class NativeFiles final : public DataFiles {
  public:
    explicit NativeFiles(std::string drive_c) : drive_c_(std::move(drive_c)) {}

    bool is_file(base::TextView path) override {
        std::error_code error;
        const auto status = std::filesystem::status(native(path), error);
        return !error && std::filesystem::exists(status) && !std::filesystem::is_directory(status);
    }

    void copy(base::TextView from, base::TextView to) override {
        std::error_code error;
        std::filesystem::copy_file(native(from), native(to),
                                   std::filesystem::copy_options::overwrite_existing, error);
        if (error) fail(u"copy", error.value());
    }

    void append(base::TextView path, base::ByteView bytes) override {
        const Descriptor file(
            ::open(native(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
        if (file.number() < 0) fail(u"open", errno);
        ssize_t written;
        do {
            written = write(file.number(), bytes.data(), bytes.size());
        } while (written < 0 && errno == EINTR);
        if (written < 0) fail(u"write", errno);
        if (static_cast<std::size_t>(written) < bytes.size()) fail(u"write", ENOSPC);
    }

    std::unique_ptr<FileReader> open(base::TextView path) override {
        return std::make_unique<NativeReader>(native(path));
    }
    std::unique_ptr<FileReader> open_growing(base::TextView path) override { return open(path); }
    std::unique_ptr<FileWriter> create(base::TextView path, Readers readers) override {
        return std::make_unique<NativeWriter>(native(path),
                                              readers == Readers::owner ? 0600 : 0666);
    }
    std::unique_ptr<FileWriter> create_like(base::TextView path, base::TextView origin) override {
        struct stat status {};
        if (stat(native(path).c_str(), &status) == 0) {
            auto writer = std::make_unique<NativeWriter>(native(path), 0600);
            writer->take_over(status);
            return writer;
        }
        if (stat(native(origin).c_str(), &status) != 0) fail(u"stat", errno);
        return std::make_unique<NativeWriter>(native(path), 0600 | (status.st_mode & 0666));
    }
    void remove(base::TextView path) override {
        if (unlink(native(path).c_str()) != 0) fail(u"unlink", errno);
    }
    void wipe(base::TextView path) override {
        {
            const Descriptor file(::open(native(path).c_str(), O_WRONLY | O_CLOEXEC));
            if (file.number() < 0) fail(u"open", errno);
            const base::Bytes zeros(64 * 1024);
            for (std::uint64_t left = size_of(file); left > 0;) {
                const std::size_t piece = std::min<std::uint64_t>(left, zeros.size());
                write_all(file, base::ByteView(zeros).first(piece));
                left -= piece;
            }
            if (fsync(file.number()) != 0) fail(u"fsync", errno);
        }
        remove(path);
    }

  private:
    std::string native(base::TextView path) const { return native_path(path, drive_c_); }

    std::string drive_c_;
};

}  // namespace

std::unique_ptr<DataFiles> make_native_files(std::string drive_c) {
    return std::make_unique<NativeFiles>(std::move(drive_c));
}

}  // namespace tavrix::ports
