#include "com/call_arguments.h"

namespace tavrix::com {
namespace {

bool stands_for_nothing(const VARIANT& value) noexcept {
    const VARIANT seen = windows::look_through(value);
    return seen.vt == VT_ERROR && seen.scode == DISP_E_PARAMNOTFOUND;
}

}  // namespace

CallArguments::CallArguments(const Member& member, const DISPPARAMS& parameters, LCID locale,
                             bool let) {
    const std::size_t count = member.argument_count + (let ? 1 : 0);
    const std::size_t required = member.required_count + (let ? 1 : 0);
    if (parameters.cArgs > count || parameters.cArgs < required ||
        parameters.cNamedArgs > parameters.cArgs) {
        throw ArgumentError(DISP_E_BADPARAMCOUNT);
    }
    for (Incoming& slot : slots_) slot.locale = locale;

    const UINT positional = parameters.cArgs - parameters.cNamedArgs;
    for (UINT i = 0; i < positional; ++i) place(i, parameters, parameters.cArgs - 1 - i);
    for (UINT i = 0; i < parameters.cNamedArgs; ++i) {
        const DISPID name = parameters.rgdispidNamedArgs[i];
        if (let && name == DISPID_PROPERTYPUT) {
            place(member.argument_count, parameters, i);
        } else if (name >= 0 && static_cast<std::size_t>(name) < member.argument_count) {
            place(static_cast<std::size_t>(name), parameters, i);
        } else {
            throw ArgumentError(DISP_E_PARAMNOTFOUND, i);
        }
    }

    for (std::size_t i = 0; i < count; ++i) {
        const bool optional = i < member.argument_count && member.arguments[i].optional;
        const bool given = slots_[i].value != nullptr;
        if (given && stands_for_nothing(*slots_[i].value)) {
            if (!optional) throw ArgumentError(DISP_E_PARAMNOTOPTIONAL, slots_[i].index);
            slots_[i].value = nullptr;
        } else if (!given && !optional) {
            throw ArgumentError(DISP_E_PARAMNOTOPTIONAL);
        }
    }
}

void CallArguments::place(std::size_t position, const DISPPARAMS& parameters, UINT index) {
    // Given twice: once by position and once by name.
    if (slots_[position].value != nullptr) throw ArgumentError(DISP_E_PARAMNOTFOUND, index);
    slots_[position].value = &parameters.rgvarg[index];
    slots_[position].index = index;
}

}  // namespace tavrix::com
