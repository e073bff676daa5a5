#pragma once

#include "windows/automation.h"

// The system's interfaces have no virtual destructor: objects end in Release and nowhere else.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What the statement Print speaks to in VB6: its forms, picture boxes and printers have no member
/// of that name. The statement writes its text, then a line break as a text of its own. Further
/// members, for the print column, follow and are not called here.
struct IVBPrint : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE WriteText(BSTR text) = 0;
};
__CRT_UUID_DECL(IVBPrint, 0x000204F0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46)

#pragma GCC diagnostic pop
