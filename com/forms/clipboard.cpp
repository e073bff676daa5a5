#include "com/forms/clipboard.h"

#include <cstring>

namespace tavrix::com {
namespace {

/// Other programs hold the clipboard for a moment now and then, a remote desktop above all.
class OpenClipboardOf {
  public:
    explicit OpenClipboardOf(HWND form) noexcept {
        constexpr int attempts = 5;
        constexpr DWORD between_attempts_ms = 20;
        for (int i = 0; i < attempts && !open_; ++i) {
            if (i > 0) Sleep(between_attempts_ms);
            open_ = OpenClipboard(form) != FALSE;
        }
    }
    ~OpenClipboardOf() {
        if (open_) CloseClipboard();
    }
    OpenClipboardOf(const OpenClipboardOf&) = delete;
    OpenClipboardOf& operator=(const OpenClipboardOf&) = delete;
    explicit operator bool() const noexcept { return open_; }

  private:
    bool open_ = false;
};

HGLOBAL in_global_memory(const base::Text& text) noexcept {
    const std::size_t bytes = (text.size() + 1) * sizeof(char16_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (memory == nullptr) return nullptr;
    std::memcpy(GlobalLock(memory), text.c_str(), bytes);
    GlobalUnlock(memory);
    return memory;
}

bool put_on_clipboard(HWND form, const base::Text& text) noexcept {
    const OpenClipboardOf clipboard(form);
    if (!clipboard || !EmptyClipboard()) return false;
    const HGLOBAL memory = in_global_memory(text);
    // The clipboard's from then on.
    if (memory != nullptr && SetClipboardData(CF_UNICODETEXT, memory) != nullptr) return true;
    GlobalFree(memory);
    return false;
}

}  // namespace

void copy_to_clipboard(HWND form, const base::Text& text) noexcept {
    if (!put_on_clipboard(form, text)) MessageBeep(MB_ICONWARNING);
}

}  // namespace tavrix::com
