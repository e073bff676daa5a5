#include "ports/windows/adapters.h"

#include "windows/automation.h"

namespace tavrix::ports {
namespace {

class WindowsClock final : public Clock {
  public:
    base::DateTime now_local() override {
        SYSTEMTIME now;
        GetLocalTime(&now);
        return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
    }
    std::chrono::milliseconds steady_now() override {
        return std::chrono::milliseconds(GetTickCount64());
    }
    void sleep(std::chrono::milliseconds duration) override {
        if (duration.count() > 0) Sleep(static_cast<DWORD>(duration.count()));
    }
};

}  // namespace

std::unique_ptr<Clock> make_windows_clock() {
    return std::make_unique<WindowsClock>();
}

}  // namespace tavrix::ports
