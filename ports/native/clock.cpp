#include <ctime>
#include <thread>

#include "ports/native/adapters.h"

namespace tavrix::ports {
namespace {

class NativeClock final : public Clock {
  public:
    base::DateTime now_local() override {
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
                local.tm_hour,        local.tm_min,     local.tm_sec};
    }

    std::chrono::milliseconds steady_now() override {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    }

    void sleep(std::chrono::milliseconds duration) override {
        std::this_thread::sleep_for(duration);
    }
};

}  // namespace

std::unique_ptr<Clock> make_native_clock() {
    return std::make_unique<NativeClock>();
}

}  // namespace tavrix::ports
