#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "ksef/batch_package.h"

namespace tavrix::bench {

/// Makes a package ready to be announced, then encrypts it again as its upload does, and says how
/// long both took.
inline void work_on_package(const char* door, ports::DataFiles& files, ports::Crypto& crypto,
                            const base::Text& path) {
    ksef::SessionKey key;
    key.key = base::SecretBytes(32);
    key.iv.resize(16);
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    const ksef::Package package = ksef::measure_package(files, crypto, path, key, UINT64_MAX);
    const auto measured = Clock::now();
    ksef::PartSource source(files, crypto, package, package.parts.front(), key);
    std::vector<std::uint8_t> buffer(64 * 1024);
    while (source.read(buffer) > 0) {
    }
    const auto seconds = [](auto duration) {
        return std::chrono::duration<double>(duration).count();
    };
    std::printf(
        "package, %s: %.2f GB hashed, encrypted and hashed in %.2f s; its upload's part of "
        "the work %.2f s\n",
        door, static_cast<double>(package.bytes) / 1e9, seconds(measured - begin),
        seconds(Clock::now() - measured));
}

}  // namespace tavrix::bench
