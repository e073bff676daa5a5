#include "sandbox/store/private_folder.h"

#include <sys/stat.h>

namespace tavrix::sandbox {

PrivateFolder::PrivateFolder(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    usual_ = umask(077);
}

PrivateFolder::~PrivateFolder() {
    umask(usual_);
}

}  // namespace tavrix::sandbox
