#include "sandbox/store/private_folder.h"

#include <windows.h>
// Needs what it includes.
#include <sddl.h>

#include <stdexcept>

namespace tavrix::sandbox {
namespace {

// The owner's, the system's and the administrators', for the folder and what is made in it; nothing
// comes down from the folders above.
constexpr const wchar_t* owner_only =
    L"D:P(A;OICI;FA;;;OW)(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)";

}  // namespace

PrivateFolder::PrivateFolder(const std::filesystem::path& named) {
    // What a shell completes ends in a backslash, and the folder above that would be the folder
    // itself.
    const auto folder = named.has_filename() ? named : named.parent_path();
    // What stands there already keeps the rights that its owner gave it.
    if (std::filesystem::is_directory(folder)) return;
    if (folder.has_parent_path()) std::filesystem::create_directories(folder.parent_path());
    SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(
            owner_only, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr))
        throw std::runtime_error("cannot describe who may read the data");
    const bool made = CreateDirectoryW(folder.c_str(), &attributes) != FALSE;
    const DWORD reason = GetLastError();
    LocalFree(attributes.lpSecurityDescriptor);
    if (!made && reason != ERROR_ALREADY_EXISTS)
        throw std::filesystem::filesystem_error(
            "cannot make the folder", folder,
            std::error_code(static_cast<int>(reason), std::system_category()));
}

PrivateFolder::~PrivateFolder() = default;

}  // namespace tavrix::sandbox
