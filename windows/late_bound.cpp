#include "windows/late_bound.h"

#include <vector>

#include "windows/automation.h"
#include "windows/failure.h"

namespace tavrix::windows {
namespace {

// The hosts' run-time error 91, "object variable not set".
constexpr auto object_not_set = static_cast<HRESULT>(0x800A005B);

}  // namespace

LateBound LateBound::create(const char16_t* prog_id) {
    CLSID clsid;
    check(CLSIDFromProgID(wide(prog_id), &clsid), prog_id);
    ComPointer<IDispatch> object;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER,
                           IID_IDispatch, object.out_void()),
          prog_id);
    return LateBound(std::move(object));
}

DISPID LateBound::id_of(const char16_t* name) const {
    if (!object_) throw_failure(object_not_set, name);
    auto* mutable_name = const_cast<wchar_t*>(wide(name));
    DISPID id = DISPID_UNKNOWN;
    check(object_->GetIDsOfNames(IID_NULL, &mutable_name, 1, LOCALE_USER_DEFAULT, &id), name);
    return id;
}

Variant LateBound::invoke(DISPID id, const char16_t* name, WORD flags,
                          std::span<Variant> arguments) const {
    // Arguments travel last first.
    std::vector<VARIANT> reversed;
    reversed.reserve(arguments.size());
    for (std::size_t i = arguments.size(); i > 0; --i) reversed.push_back(arguments[i - 1].get());

    const bool puts = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{};
    parameters.rgvarg = reversed.data();
    parameters.cArgs = static_cast<UINT>(reversed.size());
    if (puts) {
        parameters.rgdispidNamedArgs = &named;
        parameters.cNamedArgs = 1;
    }

    Variant result;
    EXCEPINFO information{};
    const HRESULT outcome = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                            puts ? nullptr : result.out(), &information, nullptr);
    if (outcome == DISP_E_EXCEPTION) throw_reported(information, name);
    check(outcome, name);
    return result;
}

}  // namespace tavrix::windows
