// A package of 1 GB beside `openssl enc -aes-256-cbc` and `sha256sum` run one after the other on
// the same file, and the most memory that our process had.
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/package_work.h"
#include "ports/native/adapters.h"
#include "ports/portable/openssl_crypto.h"

namespace {

using namespace tavrix;

double seconds_of(const std::string& command) {
    const auto begin = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0) std::exit(1);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

// package_bench FILE
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string file = argv[1];
    const auto files = ports::make_native_files({});
    const auto crypto = ports::make_openssl_crypto();
    bench::work_on_package("native", *files, *crypto, base::from_utf8(file));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("package, native: %.1f MB of memory at most\n",
                static_cast<double>(usage.ru_maxrss) / 1e3);
    const std::string zeros(64, '0');
    const double enc = seconds_of("openssl enc -aes-256-cbc -K " + zeros + " -iv " +
                                  zeros.substr(32) + " -in '" + file + "' -out /dev/null");
    const double sum = seconds_of("sha256sum '" + file + "' >/dev/null");
    std::printf("package: openssl enc %.2f s + sha256sum %.2f s = %.2f s\n", enc, sum, enc + sum);
}
