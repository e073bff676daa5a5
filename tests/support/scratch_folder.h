#pragma once

#include <filesystem>
#include <stdexcept>

#include <stdlib.h>

namespace tavrix::test {

/// A new, empty folder that goes away with everything in it.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "tavrix-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no scratch folder");
        path_ = name;
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const noexcept { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace tavrix::test
