#include "windows/failure.h"

#include <cstdio>
#include <new>

#include "windows/bstr.h"

namespace tavrix::windows {
namespace {

base::Text hexadecimal(HRESULT code) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "0x%08lX", static_cast<unsigned long>(code));
    return base::from_utf8(digits);
}

}  // namespace

base::Text system_message(HRESULT code) {
    Owned<wchar_t*, LocalFree> message;
    FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<LPWSTR>(message.out()), 0, nullptr);
    base::Text text = text_from_wide(message.get());
    while (!text.empty() && text.back() <= u' ') text.pop_back();
    return text.empty() ? hexadecimal(code) : text;
}

void throw_failure(HRESULT code, base::TextView source) {
    if (code == E_OUTOFMEMORY) throw std::bad_alloc();
    throw base::AutomationError(static_cast<base::ErrorNumber>(code), base::Text(source),
                                system_message(code));
}

void throw_reported(EXCEPINFO& information, base::TextView source) {
    // Filling in may be put off until somebody asks.
    if (information.pfnDeferredFillIn != nullptr) information.pfnDeferredFillIn(&information);
    const Bstr reported_source(information.bstrSource);
    const Bstr description(information.bstrDescription);
    const Bstr help_file(information.bstrHelpFile);
    // An object states either a whole HRESULT or a number of its own.
    const HRESULT number = information.scode != 0
                               ? information.scode
                               : MAKE_HRESULT(1, FACILITY_CONTROL, information.wCode);
    const base::Text reported(view_of(description.get()));
    throw base::AutomationError(
        static_cast<base::ErrorNumber>(number),
        base::Text(reported_source ? view_of(reported_source.get()) : source),
        reported.empty() ? system_message(number) : reported);
}

}  // namespace tavrix::windows
