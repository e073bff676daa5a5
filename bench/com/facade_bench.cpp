// What it costs a host to have the library at all: loading it, creating an object, one call, and
// what a hundred thousand objects leave behind. Beside each figure stands the same for a component
// of Windows (Wine's, here) that does as little: a script's dictionary. Tavrix.CInfo is registered.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/com/process_figures.h"
#include "windows/late_bound.h"

namespace {

using namespace tavrix;
using bench::holdings;
using bench::Holdings;
using bench::seconds_of;
using windows::LateBound;
using windows::Variant;

struct Candidate {
    const char16_t* prog_id;
    const char16_t* member;
};
constexpr Candidate ours{u"Tavrix.CInfo", u"VersjaLib"};
constexpr Candidate peer{u"Scripting.Dictionary", u"Count"};

// What the DLL imports from the system. Hosts that talk to a network or open files by dialogs have
// these loaded; a console program such as this one has not.
constexpr const wchar_t* system_dlls[] = {L"bcrypt",  L"crypt32", L"normaliz",
                                          L"shell32", L"ws2_32",  L"winhttp"};

// The median of several rounds: the system lets go of the DLL before each.
double load_and_create_ms(const Candidate& candidate) {
    constexpr std::size_t rounds = 41;
    std::vector<double> seconds;
    while (seconds.size() < rounds) {
        CoFreeUnusedLibrariesEx(0, 0);
        seconds.push_back(seconds_of([&] { LateBound::create(candidate.prog_id); }));
    }
    std::nth_element(seconds.begin(), seconds.begin() + rounds / 2, seconds.end());
    return seconds[rounds / 2] * 1e3;
}

constexpr WORD read_flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

DISPID id_of(IDispatch* object, const char16_t* member) {
    LPOLESTR name = const_cast<LPOLESTR>(windows::wide(member));
    DISPID id = DISPID_UNKNOWN;
    object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

bool read(IDispatch* object, DISPID id) {
    DISPPARAMS none{};
    Variant result;
    return SUCCEEDED(object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, read_flags, &none,
                                    result.out(), nullptr, nullptr));
}

struct Rates {
    double looked_up;
    double remembered;
};

Rates calls_per_second(const Candidate& candidate) {
    constexpr int calls = 500'000;
    const LateBound object = LateBound::create(candidate.prog_id);
    IDispatch* dispatch = object.dispatch();
    const double looked_up = seconds_of([&] {
        for (int i = 0; i < calls; ++i) read(dispatch, id_of(dispatch, candidate.member));
    });
    const DISPID id = id_of(dispatch, candidate.member);
    const double remembered = seconds_of([&] {
        for (int i = 0; i < calls; ++i) read(dispatch, id);
    });
    return {calls / looked_up, calls / remembered};
}

// False when a call failed.
bool create_call_release(const Candidate& candidate, int cycles) {
    for (int i = 0; i < cycles; ++i) {
        const LateBound object = LateBound::create(candidate.prog_id);
        if (!read(object.dispatch(), id_of(object.dispatch(), candidate.member))) return false;
    }
    return true;
}

bool measure_cycles() {
    constexpr int warm_up = 1000;
    constexpr int cycles = 100'000;
    constexpr int peer_cycles = 10'000;
    // Keeps the DLL loaded, as a host does that has one object somewhere.
    const LateBound kept = LateBound::create(ours.prog_id);
    if (!create_call_release(ours, warm_up)) return false;
    const Holdings before = holdings();
    bool all = false;
    const double seconds = seconds_of([&] { all = create_call_release(ours, cycles); });
    const Holdings after = holdings();
    const double peer_seconds = seconds_of([&] { create_call_release(peer, peer_cycles); });
    const double cycle_ms = seconds * 1e3 / cycles;
    const double peer_cycle_ms = peer_seconds * 1e3 / peer_cycles;
    std::printf(
        "%d create/call/release cycles: %.2f ms each (dictionary %.2f, ratio %.2f); left %+ld KiB, "
        "%+ld handles, %+ld GDI objects\n",
        cycles, cycle_ms, peer_cycle_ms, cycle_ms / peer_cycle_ms,
        after.private_kib - before.private_kib, after.handles - before.handles,
        after.gdi_objects - before.gdi_objects);
    // A page or two may come and go; what grows with the cycles would be hundreds of them.
    constexpr long noise_kib = 64;
    const bool grew = after.private_kib - before.private_kib > noise_kib ||
                      after.handles > before.handles || after.gdi_objects > before.gdi_objects;
    return all && !grew;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool done = false;
    try {
        const double bare_ms = load_and_create_ms(ours);
        for (const wchar_t* name : system_dlls) LoadLibraryW(name);
        const double load_ms = load_and_create_ms(ours);
        const double peer_load_ms = load_and_create_ms(peer);
        std::printf(
            "DLL loaded and CInfo created: %.1f ms in a process that has the system's DLLs, %.1f "
            "otherwise (dictionary %.1f, ratio %.1f)\n",
            load_ms, bare_ms, peer_load_ms, load_ms / peer_load_ms);
        const Rates rates = calls_per_second(ours);
        const Rates peer_rates = calls_per_second(peer);
        std::printf(
            "VersjaLib through IDispatch: %.0f calls/s with name look-up, %.0f with cached "
            "DISPID (dictionary's Count %.0f and %.0f)\n",
            rates.looked_up, rates.remembered, peer_rates.looked_up, peer_rates.remembered);
        done = measure_cycles();
        if (!done) std::puts("VersjaLib: a call failed, or something is left behind");
    } catch (const std::exception& error) {
        std::printf("facade_bench: %s\n", error.what());
    }
    CoUninitialize();
    return done ? 0 : 1;
}
