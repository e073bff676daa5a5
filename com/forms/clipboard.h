#pragma once

#include <initializer_list>
#include <span>

#include "base/text.h"
#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::com {

using GlobalMemory = windows::Owned<HGLOBAL, GlobalFree>;

/// The parts one behind the other, as the clipboard takes them. Throws std::bad_alloc.
GlobalMemory global_copy(std::initializer_list<base::ByteView> parts);
GlobalMemory global_copy(const base::Text& text);

/// The clipboard, emptied, in the name of a form, for as long as the scope lasts; false when
/// another program does not let go of it.
class EmptiedClipboard {
  public:
    explicit EmptiedClipboard(HWND form) noexcept;
    ~EmptiedClipboard();
    EmptiedClipboard(const EmptiedClipboard&) = delete;
    EmptiedClipboard& operator=(const EmptiedClipboard&) = delete;

    explicit operator bool() const noexcept { return is_open_; }
    /// False when it is not taken; what is taken belongs to the clipboard from then on.
    template <typename Handle>
    bool give(UINT format, Handle handle) noexcept {
        if (SetClipboardData(format, handle.get()) == nullptr) return false;
        handle.release();
        return true;
    }

  private:
    bool is_open_ = false;
};

/// Puts the text on the clipboard, in the name of the form. The user hears when that is not to be.
void copy_to_clipboard(HWND form, const base::Text& text) noexcept;

}  // namespace tavrix::com
