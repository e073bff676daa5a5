#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_target.h"

// libFuzzer calls this before it reads its corpus: the seeds go into the folder that
// $TAVRIX_FUZZ_SEEDS names.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const char* const folder = std::getenv("TAVRIX_FUZZ_SEEDS");
    if (folder == nullptr) return 0;
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const std::string& seed : tavrix::fuzz::seeds()) {
        std::ofstream(std::filesystem::path(folder) / ("seed-" + std::to_string(number++)),
                      std::ios::binary)
            << seed;
    }
    return 0;
}
