#include "windows/desktop.h"

#include "windows/automation.h"

namespace tavrix::windows {

bool desktop_is_seen() noexcept {
    USEROBJECTFLAGS flags{};
    return !GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                      nullptr) ||
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

}  // namespace tavrix::windows
