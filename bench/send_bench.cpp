// SendInvoiceToKSeF against the sandbox with zero delays: requests, connections and processor time
// of a call, and what 200 calls in a row leave behind.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>

#include "bench/ksef_host.h"

namespace {

using namespace tavrix;

double processor_ms() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto ms = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

long resident_kib() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) return std::stol(line.substr(6));
    }
    return 0;
}

long open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class Bench {
  public:
    // One host call as hosts make it: a fresh instance, another document number so that nothing is
    // a duplicate.
    bool call(int number) {
        const base::Text invoice =
            base::replace_all(xml_, u"FV/2026/11/0147", u"FV/2026/11/" + base::to_decimal(number));
        ports::SqliteDatabase database(connection_);
        ksef::KseF_comm client(host_.ports([this] { return host_.make_http(); }));
        return client
            .SendInvoiceToKSeF(database, u"5265877635", base::SecretText(u"R|nip-5265877635|s"),
                               invoice, u"FA (3)", u"1-0E", u"FA", 2, u"dok_fak", 1001)
            .empty();
    }

    bool run() {
        constexpr int warm_up = 100;
        constexpr int calls = 200;
        for (int i = 0; i < warm_up; ++i) {
            if (!call(i)) return false;
        }
        host_.sandbox.reset();
        if (!call(warm_up)) return false;
        const test::Json state = host_.sandbox.state();
        std::set<int> connections;
        int requests = 0;
        for (const test::Json& request : state.at("requests")) {
            if (request.at("path").get<std::string>().starts_with("/sandbox/")) continue;
            ++requests;
            connections.insert(request.at("connection").get<int>());
        }
        const long memory_before = resident_kib();
        const long descriptors_before = open_descriptors();
        const double processor_before = processor_ms();
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < calls; ++i) {
            if (!call(1000 + i)) return false;
        }
        const double wall_ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin)
                .count();
        std::printf("send, native: %d requests and %zu TCP connection(s) per call\n", requests,
                    connections.size());
        std::printf(
            "send, native: %.2f ms of processor time per call, %.2f ms by the clock (the sandbox "
            "included)\n",
            (processor_ms() - processor_before) / calls, wall_ms / calls);
        std::printf("send, native: %d calls left %+ld KiB of memory and %+ld descriptors\n", calls,
                    resident_kib() - memory_before, open_descriptors() - descriptors_before);
        return true;
    }

  private:
    bench::KsefHost host_;
    std::shared_ptr<ports::SqliteConnection> connection_ = test::make_host_database("2026-11-21");
    base::Text xml_ = test::demonstration_invoice();
};

}  // namespace

int main() {
    if (Bench().run()) return 0;
    std::puts("send, native: a call failed");
    return 1;
}
