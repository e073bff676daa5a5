// A host in a process of its own, for what a process shows only as long as nothing else happened in
// it. `lone_host rounds` and `lone_host unwinder DLL`, whose path starts from this program's
// folder; "whole" is the last line of one that came through.

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>
// Behind <windows.h>, on which it stands.
#include <psapi.h>

#include "base/error.h"
#include "windows/late_bound.h"

namespace tavrix::test {
namespace {

std::size_t free_tls_indexes() {
    std::vector<DWORD> taken;
    for (DWORD index; (index = TlsAlloc()) != TLS_OUT_OF_INDEXES;) taken.push_back(index);
    for (const DWORD index : taken) TlsFree(index);
    return taken.size();
}

std::size_t private_bytes() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                         sizeof counters);
    return counters.PrivateUsage;
}

bool rounds() {
    constexpr int warm_up = 200;
    constexpr int count = 3000;
    constexpr std::size_t noise_bytes = 1024 * 1024;
    std::size_t indexes = 0;
    std::size_t bytes = 0;
    for (int round = 0; round < count + warm_up; ++round) {
        if (round == warm_up) {
            indexes = free_tls_indexes();
            bytes = private_bytes();
        }
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        windows::LateBound::create(u"Tavrix.KseF_comm").call(u"Sha256XmlSimpleb", base::Bytes{1});
        CoFreeUnusedLibrariesEx(0, 0);
        CoUninitialize();
    }
    const std::size_t lost_indexes = indexes - free_tls_indexes();
    const std::size_t bytes_now = private_bytes();
    const bool stayed = GetModuleHandleW(L"Tavrix.dll") != nullptr;
    if (lost_indexes == 0 && bytes_now < bytes + noise_bytes && stayed) return true;
    std::printf("TLS indexes lost: %d; bytes: %d, then %d; loaded: %d\n",
                static_cast<int>(lost_indexes), static_cast<int>(bytes),
                static_cast<int>(bytes_now), stayed);
    return false;
}

bool unwinder(const wchar_t* dll) {
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring_view folder(program, std::wstring_view(program).rfind(L'\\') + 1);
    const std::wstring path = std::wstring(folder) + dll;
    if (LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) == nullptr) {
        std::printf("cannot be loaded: %lu\n", GetLastError());
        return false;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const auto ksef = windows::LateBound::create(u"Tavrix.KseF_comm");
    try {
        ksef.call(u"Base64DecodeToBytes", u"*");
    } catch (const base::AutomationError&) {
        return true;  // thrown inside, and reported
    }
    std::puts("not refused");
    return false;
}

}  // namespace
}  // namespace tavrix::test

int wmain(int argument_count, wchar_t** arguments) {
    using namespace tavrix::test;
    const std::wstring_view story = argument_count > 1 ? arguments[1] : L"";
    try {
        if (story == L"rounds" ? rounds() : argument_count > 2 && unwinder(arguments[2])) {
            std::puts("whole");
        }
    } catch (const std::exception& error) {
        std::puts(error.what());
    }
    return 0;
}
