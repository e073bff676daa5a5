// A folder for what nobody but this user may read.
#pragma once

#include <filesystem>

namespace tavrix::sandbox {

/// Makes the folder where it is not there; what this process makes while one of these stands is
/// the user's alone. Throws std::filesystem::filesystem_error or std::runtime_error.
class PrivateFolder {
  public:
    explicit PrivateFolder(const std::filesystem::path& folder);
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

  private:
    unsigned usual_ = 0;
};

}  // namespace tavrix::sandbox
