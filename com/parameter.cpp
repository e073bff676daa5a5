#include "com/parameter.h"

namespace tavrix::com {
namespace {

// Stores into memory that the host owns, behind a typed reference such as VT_BYREF|VT_BSTR.
void store_typed(VARIANT& reference, const VARIANT& value, LCID locale) {
    const auto type = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    windows::Variant converted =
        type == value.vt ? windows::Variant::copy_of(value) : coerce(value, type, locale);
    VARIANT given = converted.release();
    if ((type & VT_ARRAY) != 0) {
        SafeArrayDestroy(*reference.pparray);
        *reference.pparray = given.parray;
        return;
    }
    switch (type) {
        case VT_I1:
        case VT_UI1:
            *reference.pbVal = given.bVal;
            return;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            *reference.piVal = given.iVal;
            return;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            *reference.pllVal = given.llVal;
            return;
        case VT_BSTR:
            SysFreeString(std::exchange(*reference.pbstrVal, given.bstrVal));
            return;
        case VT_DECIMAL:
            *reference.pdecVal = given.decVal;
            return;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            if (IUnknown* old = std::exchange(*reference.ppunkVal, given.punkVal)) old->Release();
            return;
        default:
            *reference.plVal = given.lVal;
            return;
    }
}

}  // namespace

void store(VARIANT& destination, windows::Variant value, LCID locale) {
    if ((destination.vt & VT_BYREF) == 0) return;
    if (destination.vt != (VT_BYREF | VT_VARIANT)) {
        store_typed(destination, value.get(), locale);
        return;
    }
    VARIANT& variable = *destination.pvarVal;
    if ((variable.vt & VT_BYREF) != 0) {
        store(variable, std::move(value), locale);
        return;
    }
    VariantClear(&variable);
    variable = value.release();
}

}  // namespace tavrix::com
