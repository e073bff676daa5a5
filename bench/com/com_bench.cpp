// The COM door under Wine, late-bound as a script host calls it: what a call costs, and what 200
// sendings in a row leave behind. Arguments: the database, the invoice. Tavrix.KseF_comm and
// ADODB.Connection are registered, the settings name a sandbox.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "base/windows_1250.h"
#include "bench/com/process_figures.h"
#include "windows/late_bound.h"

namespace {

using namespace tavrix;
using bench::Holdings;
using bench::holdings;
using bench::processor_ms;
using bench::seconds_of;
using windows::LateBound;
using windows::Variant;

// With a look-up of the name for each call, and with the number that a host has remembered.
void measure_hash(const LateBound& ksef, std::size_t bytes, int calls) {
    const base::Bytes data(bytes, 'x');
    const Variant argument(data);
    const double looked_up = seconds_of([&] {
        for (int i = 0; i < calls; ++i) ksef.call(u"Sha256XmlSimpleb", data);
    });
    wchar_t name[] = L"Sha256XmlSimpleb";
    LPOLESTR names = name;
    DISPID id = DISPID_UNKNOWN;
    ksef.dispatch()->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    VARIANT array = argument.get();
    DISPPARAMS parameters{&array, nullptr, 1, 0};
    const double remembered = seconds_of([&] {
        for (int i = 0; i < calls; ++i) {
            Variant result;
            ksef.dispatch()->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                    result.out(), nullptr, nullptr);
        }
    });
    std::printf(
        "Sha256XmlSimpleb of %zu bytes through IDispatch: %.0f calls/s with name look-up, %.0f "
        "with cached DISPID\n",
        bytes, calls / looked_up, calls / remembered);
}

base::Text read_one_per_character(const char* path) {
    std::ifstream file(path, std::ios::binary);
    base::Text text;
    for (std::istreambuf_iterator<char> at(file), end; at != end; ++at) {
        text += base::windows_1250[static_cast<std::uint8_t>(*at)];
    }
    return text;
}

bool measure_send(const char* database, const char* invoice_file) {
    const LateBound connection = LateBound::create(u"ADODB.Connection");
    connection.call(u"Open", u"Data Source=" + base::from_utf8(database));
    const base::Text invoice = read_one_per_character(invoice_file);
    const auto send = [&](int number) {
        const base::Text xml =
            base::replace_all(invoice, u"FV/2026/11/0147", u"FV/COM/" + base::to_decimal(number));
        const LateBound ksef = LateBound::create(u"Tavrix.KseF_comm");
        windows::ComPointer<IDispatch> database_object(connection.dispatch());
        const Variant result = ksef.call(
            u"SendInvoiceToKSeF", std::move(database_object), base::Text(u"5265877635"),
            base::Text(u"R|nip-5265877635|s"), xml, base::Text(u"FA (3)"), base::Text(u"1-0E"),
            base::Text(u"FA"), std::int32_t{2}, base::Text(u"dok_fak"), std::int32_t{1001});
        return SysStringLen(result.get().bstrVal) == 0;
    };
    constexpr int warm_up = 50;
    constexpr int calls = 200;
    for (int i = 0; i < warm_up; ++i) {
        if (!send(i)) return false;
    }
    const Holdings before = holdings();
    const double processor_before = processor_ms();
    bool all = true;
    const double wall = seconds_of([&] {
        for (int i = 0; i < calls && all; ++i) all = send(1000 + i);
    });
    const Holdings after = holdings();
    std::printf("send, COM under Wine: %.2f ms of processor time per call, %.2f ms by the clock\n",
                (processor_ms() - processor_before) / calls, wall * 1e3 / calls);
    std::printf("send, COM under Wine: %d calls left %+ld KiB of memory and %+ld handles\n", calls,
                after.private_kib - before.private_kib, after.handles - before.handles);
    return all;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool done = false;
    try {
        {
            const LateBound ksef = LateBound::create(u"Tavrix.KseF_comm");
            measure_hash(ksef, 0, 200'000);
            measure_hash(ksef, 1'000'000, 200);
        }
        done = measure_send(argv[1], argv[2]);
        if (!done) std::puts("send, COM: a call failed");
    } catch (const std::exception& error) {
        std::printf("com_bench: %s\n", error.what());
    }
    CoUninitialize();
    return done ? 0 : 1;
}
