#pragma once

#include "windows/automation.h"
// After the system's header, which these need.
#include <psapi.h>

#include <chrono>
#include <cstdint>

#include "tests/com/gdi_objects.h"

namespace tavrix::bench {

/// What this process keeps from the system.
struct Holdings {
    long private_kib;
    long handles;
    /// Pens, fonts, bitmaps and their like.
    long gdi_objects;
};

inline Holdings holdings() {
    PROCESS_MEMORY_COUNTERS_EX memory{};
    K32GetProcessMemoryInfo(GetCurrentProcess(),
                            reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof memory);
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {static_cast<long>(memory.PrivateUsage / 1024), static_cast<long>(handles),
            static_cast<long>(test::count_gdi_objects())};
}

inline double processor_ms() {
    FILETIME created, exited, kernel, user;
    GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
    const auto ms = [](const FILETIME& time) {
        return static_cast<double>((std::uint64_t{time.dwHighDateTime} << 32) |
                                   time.dwLowDateTime) /
               1e4;
    };
    return ms(kernel) + ms(user);
}

double seconds_of(const auto& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace tavrix::bench
