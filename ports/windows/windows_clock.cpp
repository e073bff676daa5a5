#include "ports/windows/windows_clock.h"

#include "windows/automation.h"

namespace tavrix::windows {

base::DateTime WindowsClock::now_local() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

void WindowsClock::sleep(std::chrono::milliseconds duration) {
    if (duration.count() > 0) Sleep(static_cast<DWORD>(duration.count()));
}

}  // namespace tavrix::windows
