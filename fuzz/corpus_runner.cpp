// Runs a target over its seeds and over what becomes of them when they are damaged, without
// libFuzzer: the same inputs in the same order each time, for as many seconds as the argument says.
#include <sanitizer/common_interface_defs.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>

#include "fuzz/fuzz_target.h"

namespace {

std::string input;

void run() {
    // A copy of exactly its size: what is read behind it is found.
    const std::vector<std::uint8_t> bytes(input.begin(), input.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

void keep_input() {
    std::ofstream("fuzz-finding", std::ios::binary) << input;
    std::cerr << "the input is in the file fuzz-finding\n";
}

class Damage {
  public:
    explicit Damage(const std::vector<std::string>& seeds) : seeds_(seeds) {}

    std::string next() {
        std::string text = any_seed();
        for (std::size_t i = 1 + below(4); i > 0; --i) hurt(text);
        return text;
    }

  private:
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }
    const std::string& any_seed() { return seeds_[below(seeds_.size())]; }

    // Another piece in the place of one: nothing, a row of one character, its own, a seed's
    // beginning.
    void hurt(std::string& text) {
        const std::string pieces[] = {"", std::string(1 + below(16), static_cast<char>(random_())),
                                      text.substr(below(text.size()), below(32)),
                                      any_seed().substr(0, below(200))};
        text.replace(below(text.size()), below(16), pieces[below(std::size(pieces))]);
    }

    const std::vector<std::string>& seeds_;
    std::mt19937 random_{1};
};

}  // namespace

int main(int argument_count, char** arguments) {
    const std::vector<std::string> seeds = tavrix::fuzz::seeds();
    if (argument_count != 2 || seeds.empty()) return 2;
    __sanitizer_set_death_callback(keep_input);
    try {
        for (const std::string& seed : seeds) {
            input = seed;
            run();
        }
        Damage damage(seeds);
        long count = 0;
        for (const auto end =
                 std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
             std::chrono::steady_clock::now() < end; ++count) {
            input = damage.next();
            run();
        }
        std::cout << seeds.size() << " seeds and " << count << " damaged inputs\n";
    } catch (const std::exception& error) {
        std::cerr << "thrown: " << error.what() << '\n';
        keep_input();
        return 1;
    }
    return 0;
}
