#include "com/default_member.h"

namespace tavrix::com {
bool goes_to_default_member(const Member& member, WORD flags,
                            const DISPPARAMS& parameters) noexcept {
    if (member.get == nullptr || member.result != VT_DISPATCH) return false;
    if ((flags & put_flags) != 0) return member.let == nullptr && parameters.cNamedArgs == 1;
    return parameters.cNamedArgs == 0 && parameters.cArgs > member.argument_count;
}

HRESULT invoke_default_member(IDispatch& object, const Member& member, LCID locale, WORD flags,
                              const DISPPARAMS& parameters, VARIANT* result, EXCEPINFO* information,
                              UINT* argument_index) {
    const auto taken = static_cast<UINT>(member.argument_count);
    if (parameters.cArgs < taken + parameters.cNamedArgs) return DISP_E_BADPARAMCOUNT;

    // The last ones of the reversed list are the first ones of the call.
    DISPPARAMS own{};
    own.rgvarg = parameters.rgvarg + (parameters.cArgs - taken);
    own.cArgs = taken;
    windows::Variant inner;
    const HRESULT outcome = object.Invoke(member.id, IID_NULL, locale, DISPATCH_PROPERTYGET, &own,
                                          inner.out(), information, argument_index);
    if (FAILED(outcome)) return outcome;
    const windows::ComPointer<IDispatch> next = windows::object_of(inner.get());
    if (!next) return DISP_E_MEMBERNOTFOUND;

    DISPPARAMS rest = parameters;
    rest.cArgs -= taken;
    return next->Invoke(DISPID_VALUE, IID_NULL, locale, flags, &rest, result, information,
                        argument_index);
}

}  // namespace tavrix::com
