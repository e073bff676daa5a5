#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/error.h"
#include "ports/native/adapters.h"
#include "ports/native/path.h"

namespace tavrix::ports {
namespace {

// Hosts' run-time errors, with the scripting runtime's words.
struct Refusal {
    base::ErrorNumber number;
    const char16_t* words;
};
constexpr Refusal past_end{base::ErrorNumber{0x800A003E}, u"Input past end of file"};
constexpr Refusal file_not_found{base::ErrorNumber{0x800A0035}, u"File not found"};
constexpr Refusal permission_denied{base::ErrorNumber{0x800A0046}, u"Permission denied"};
constexpr Refusal path_not_found{base::ErrorNumber{0x800A004C}, u"Path not found"};

[[noreturn]] void raise(const Refusal& refusal) {
    throw base::AutomationError(refusal.number, u"TextFiles", refusal.words);
}

class NativeTextFiles final : public TextFiles {
  public:
    explicit NativeTextFiles(std::string drive_c) : drive_c_(std::move(drive_c)) {}

    base::Text read_all(base::TextView path) override {
        const std::filesystem::path name = native_path(path, drive_c_);
        std::error_code ignored;
        if (name.has_parent_path() && !std::filesystem::is_directory(name.parent_path(), ignored))
            raise(path_not_found);
        if (!std::filesystem::exists(name, ignored)) raise(file_not_found);
        std::ifstream file(name, std::ios::binary);
        if (!file || std::filesystem::is_directory(name, ignored)) raise(permission_denied);
        const base::Bytes bytes{std::istreambuf_iterator<char>(file), {}};
        if (file.bad()) raise(permission_denied);
        if (bytes.empty()) raise(past_end);
        return make_native_code_page()->to_text(bytes);
    }

  private:
    std::string drive_c_;
};

}  // namespace

std::unique_ptr<TextFiles> make_native_text_files(std::string drive_c) {
    return std::make_unique<NativeTextFiles>(std::move(drive_c));
}

}  // namespace tavrix::ports
