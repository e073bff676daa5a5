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

using Clock = std::chrono::steady_clock;

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

    void hurt(std::string& text) {
        const std::size_t at = below(text.size());
        const std::size_t count = 1 + below(16);
        switch (below(6)) {
            case 0:
                text.resize(at);
                break;
            case 1:
                text.erase(at, count);
                break;
            case 2:
                text.insert(at, text.substr(at, count));
                break;
            case 3:
                text.insert(at, count, static_cast<char>(random_()));
                break;
            case 4:
                text.insert(at, any_seed().substr(0, below(200)));
                break;
            default:
                if (!text.empty()) text[at] = static_cast<char>(random_());
        }
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
        for (const auto end = Clock::now() + std::chrono::seconds(std::atoi(arguments[1]));
             Clock::now() < end; ++count) {
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
