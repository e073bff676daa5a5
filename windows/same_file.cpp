#include "windows/same_file.h"

#include "windows/automation.h"
#include "windows/bstr.h"
#include "windows/handles.h"

namespace tavrix::windows {
namespace {

// Asks for no right to the file's content, so that another program's hold on it does not matter.
KernelHandle open_to_identify(const base::Text& path) {
    const HANDLE opened =
        CreateFileW(wide(path), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return KernelHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

}  // namespace

bool same_file(const base::Text& one, const base::Text& other) {
    if (base::equal_case_blind(one, other)) return true;
    // Both stay open until they are compared: a number may be given anew when a file ends.
    const KernelHandle first = open_to_identify(one);
    const KernelHandle second = open_to_identify(other);
    BY_HANDLE_FILE_INFORMATION a{};
    BY_HANDLE_FILE_INFORMATION b{};
    return first && second && GetFileInformationByHandle(first.get(), &a) &&
           GetFileInformationByHandle(second.get(), &b) &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

}  // namespace tavrix::windows
