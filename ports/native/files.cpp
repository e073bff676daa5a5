#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/error.h"
#include "ports/native/adapters.h"
#include "ports/native/path.h"

namespace tavrix::ports {
namespace {

[[noreturn]] void fail(base::TextView source, int code) {
    throw base::AutomationError(base::ErrorNumber::component_failed, base::Text(source),
                                base::from_utf8(std::strerror(code)));
}

class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const noexcept { return number_; }

  private:
    int number_;
};

class NativeFiles final : public Files {
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
            open(native(path).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
        if (file.number() < 0) fail(u"open", errno);
        const ssize_t written = write(file.number(), bytes.data(), bytes.size());
        if (written < 0) fail(u"write", errno);
        if (static_cast<std::size_t>(written) < bytes.size()) fail(u"write", ENOSPC);
    }

  private:
    std::string native(base::TextView path) const { return native_path(path, drive_c_); }

    std::string drive_c_;
};

}  // namespace

std::unique_ptr<Files> make_native_files(std::string drive_c) {
    return std::make_unique<NativeFiles>(std::move(drive_c));
}

}  // namespace tavrix::ports
