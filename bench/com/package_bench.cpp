// A package beside its native figures: package_bench FILE
#include "windows/automation.h"
// After the system's header, which these need.
#include <psapi.h>

#include "bench/package_work.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/windows/adapters.h"

int main(int argc, char** argv) {
    using namespace tavrix;
    if (argc != 2) return 2;
    const auto files = ports::make_windows_files();
    const auto crypto = ports::make_openssl_crypto();
    bench::work_on_package("Windows", *files, *crypto, base::from_utf8(argv[1]));
    PROCESS_MEMORY_COUNTERS memory{};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    std::printf("package, Windows: %.1f MB of memory at most\n",
                static_cast<double>(memory.PeakWorkingSetSize) / 1e6);
}
