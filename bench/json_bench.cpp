// Reading an answer of 1 MB that is one object of many members, and a tenth of it beside the same
// library's document that keeps the members' order, which looks at all others for each.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "ksef/json.h"

namespace {

using namespace tavrix;

std::string answer_of(std::size_t bytes) {
    std::string body = "{\"status\":{\"code\":200}";
    for (int i = 0; body.size() < bytes; ++i) body += ",\"" + std::to_string(i) + "\":1";
    return body + "}";
}

double milliseconds_of(const auto& work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> took =
            std::chrono::steady_clock::now() - begin;
        best = std::min(best, took.count());
    }
    return best;
}

double reading_ms(const std::string& body) {
    return milliseconds_of([&] {
        if (ksef::utf8_at(ksef::parse_json(body), "status.code") != "200") std::abort();
    });
}

}  // namespace

int main() {
    std::printf("answer of 1 MB: %.1f ms\n", reading_ms(answer_of(1'000'000)));
    const std::string tenth = answer_of(100'000);
    const double ours = reading_ms(tenth);
    const double ordered = milliseconds_of([&] {
        if (nlohmann::ordered_json::parse(tenth).empty()) std::abort();
    });
    std::printf("answer of 100 kB: %.1f ms; with its members in order: %.1f ms; ratio %.3f\n", ours,
                ordered, ours / ordered);
}
