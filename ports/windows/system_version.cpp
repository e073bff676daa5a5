#include "ports/windows/adapters.h"

#include "windows/automation.h"

namespace tavrix::ports {

SystemVersion windows_version() noexcept {
    OSVERSIONINFOEXA information{};
    information.dwOSVersionInfoSize = sizeof information;
    static_assert(sizeof information == 156);
    if (!GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&information))) {
        return {GetLastError(), 0, 0, 0};
    }
    return {0, information.dwPlatformId, static_cast<std::int32_t>(information.dwMajorVersion),
            static_cast<std::int32_t>(information.dwMinorVersion)};
}

}  // namespace tavrix::ports
