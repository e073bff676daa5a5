#include "com/forms/clipboard.h"

#include <cstring>
#include <new>

namespace tavrix::com {
namespace {

bool put_on_clipboard(HWND form, const base::Text& text) noexcept {
    try {
        GlobalMemory memory = global_copy(text);
        EmptiedClipboard clipboard(form);
        return clipboard && clipboard.give(CF_UNICODETEXT, std::move(memory));
    } catch (...) {
        return false;
    }
}

}  // namespace

GlobalMemory global_copy(std::initializer_list<base::ByteView> parts) {
    std::size_t size = 0;
    for (const base::ByteView part : parts) size += part.size();
    GlobalMemory memory(GlobalAlloc(GMEM_MOVEABLE, size));
    auto* place = memory ? static_cast<std::uint8_t*>(GlobalLock(memory.get())) : nullptr;
    if (place == nullptr) throw std::bad_alloc();
    for (const base::ByteView part : parts) {
        std::memcpy(place, part.data(), part.size());
        place += part.size();
    }
    GlobalUnlock(memory.get());
    return memory;
}

GlobalMemory global_copy(const base::Text& text) {
    return global_copy({{reinterpret_cast<const std::uint8_t*>(text.c_str()),
                         (text.size() + 1) * sizeof(char16_t)}});
}

EmptiedClipboard::EmptiedClipboard(HWND form) noexcept {
    // Other programs hold it for a moment now and then, a remote desktop above all.
    constexpr int attempts = 5;
    constexpr DWORD between_attempts_ms = 20;
    for (int i = 0; i < attempts && !is_open_; ++i) {
        if (i > 0) Sleep(between_attempts_ms);
        is_open_ = OpenClipboard(form) != FALSE;
    }
    if (is_open_ && !EmptyClipboard()) {
        CloseClipboard();
        is_open_ = false;
    }
}

EmptiedClipboard::~EmptiedClipboard() {
    if (is_open_) CloseClipboard();
}

void copy_to_clipboard(HWND form, const base::Text& text) noexcept {
    if (!put_on_clipboard(form, text)) MessageBeep(MB_ICONWARNING);
}

}  // namespace tavrix::com
