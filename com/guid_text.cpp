#include "com/guid_text.h"

#include "windows/bstr.h"

namespace tavrix::com {

base::Text text_of(const GUID& id) {
    wchar_t buffer[40];
    StringFromGUID2(id, buffer, 40);
    return windows::text_from_wide(buffer);
}

}  // namespace tavrix::com
