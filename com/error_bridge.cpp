#include "com/error_bridge.h"

#include <new>

#include "base/error.h"
#include "com/call_arguments.h"
#include "windows/bstr.h"
#include "windows/com_pointer.h"

namespace tavrix::com {
namespace {

using base::AutomationError;

// What VB6, Delphi and .NET hosts read when they called through an interface that has no EXCEPINFO.
void set_error_object(const AutomationError& error) {
    windows::ComPointer<ICreateErrorInfo> creator;
    if (FAILED(CreateErrorInfo(creator.out()))) return;
    creator->SetGUID(IID_IDispatch);
    creator->SetSource(windows::make_bstr(error.source()).get());
    creator->SetDescription(windows::make_bstr(error.description()).get());
    if (const auto info = creator.query<IErrorInfo>()) SetErrorInfo(0, info.get());
}

HRESULT report(const AutomationError& error, EXCEPINFO* information) {
    set_error_object(error);
    if (information != nullptr) {
        *information = {};
        information->scode = static_cast<SCODE>(error.number());
        information->bstrSource = windows::make_bstr(error.source()).release();
        information->bstrDescription = windows::make_bstr(error.description()).release();
    }
    return DISP_E_EXCEPTION;
}

// An exception that no feature turned into an AutomationError: the component's own words under its
// own number.
AutomationError unexpected(base::TextView source, const char* words) {
    return {base::ErrorNumber::component_failed, base::Text(source), base::from_utf8(words)};
}

// Describing a failure can itself run out of memory.
HRESULT without_throwing(auto&& action) noexcept {
    try {
        return action();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

HRESULT report_current_exception(base::TextView source, EXCEPINFO* information,
                                 UINT* argument_index) noexcept {
    return without_throwing([&]() -> HRESULT {
        try {
            throw;
        } catch (const ArgumentError& error) {
            if (argument_index != nullptr && error.index()) *argument_index = *error.index();
            return error.code();
        } catch (const AutomationError& error) {
            return report(error, information);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const std::exception& error) {
            return report(unexpected(source, error.what()), information);
        } catch (...) {
            return report(unexpected(source, "unknown failure"), information);
        }
    });
}

HRESULT report_current_exception(base::TextView source) noexcept {
    return without_throwing([&]() -> HRESULT {
        try {
            throw;
        } catch (const AutomationError& error) {
            set_error_object(error);
            return static_cast<HRESULT>(error.number());
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const std::exception& error) {
            set_error_object(unexpected(source, error.what()));
            return E_FAIL;
        }
    });
}

}  // namespace tavrix::com
