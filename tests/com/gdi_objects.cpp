#include "tests/com/gdi_objects.h"

#include <algorithm>
#include <cstdint>

#include "windows/automation.h"

namespace tavrix::test {
namespace {

// Wine answers GetGuiResources with 0, but keeps the table of the process's GDI objects where
// Windows keeps it: in the process environment block, an entry for each possible handle.
struct Entry {
    std::uint64_t object;
    std::uint32_t owner;
    std::uint16_t generation;
    std::uint8_t type;
    std::uint8_t flags;
    std::uint64_t user_pointer;
};
constexpr std::size_t entry_count = 0x10000;
constexpr std::size_t table_offset = sizeof(void*) == 4 ? 0x94 : 0xF8;

const Entry* table() {
    using GetBlock = const std::uint8_t* NTAPI();
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"ntdll"), "RtlGetCurrentPeb");
    const auto get_block = reinterpret_cast<GetBlock*>(reinterpret_cast<void*>(found));
    const std::uint8_t* block = get_block();
    return *reinterpret_cast<const Entry* const*>(block + table_offset);
}

}  // namespace

std::size_t count_gdi_objects() {
    const Entry* first = table();
    return static_cast<std::size_t>(std::count_if(
        first, first + entry_count, [](const Entry& entry) { return entry.type != 0; }));
}

}  // namespace tavrix::test
