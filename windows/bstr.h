#pragma once

#include "base/text.h"
#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

static_assert(sizeof(wchar_t) == sizeof(char16_t), "the system's wide text is UTF-16");

using Bstr = Owned<BSTR, SysFreeString>;

/// Throws std::bad_alloc. Embedded zeros are kept; the empty text is an allocated, empty BSTR.
Bstr make_bstr(base::TextView text);

/// What a BSTR holds, for as long as it lives; the null BSTR is the empty text.
inline base::TextView view_of(BSTR text) noexcept {
    return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)};
}

/// The same zero-terminated text as the system's functions take it.
inline const wchar_t* wide(const char16_t* text) noexcept {
    return reinterpret_cast<const wchar_t*>(text);
}
inline const wchar_t* wide(const base::Text& text) noexcept {
    return wide(text.c_str());
}
inline base::Text text_from_wide(const wchar_t* text) {
    return text == nullptr ? base::Text() : base::Text(reinterpret_cast<const char16_t*>(text));
}

}  // namespace tavrix::windows
