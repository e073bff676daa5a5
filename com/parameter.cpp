#include "com/parameter.h"

namespace tavrix::com {
namespace {

// Replaces the array that a host's variable holds. A locked one stays where it is, because somebody
// is at work in its memory; so does one of a fixed size (VB6's `Dim names(3)`), which can only be
// filled anew with as many elements.
void store_array(SAFEARRAY** variable, windows::SafeArray array) {
    SAFEARRAY* const old = *variable;
    if (old != nullptr && old->cLocks != 0) throw ArgumentError(DISP_E_ARRAYISLOCKED);
    if (old != nullptr && (old->fFeatures & (FADF_FIXEDSIZE | FADF_STATIC)) != 0) {
        const bool fits = SafeArrayGetDim(old) == 1 &&
                          SafeArrayGetElemsize(old) == SafeArrayGetElemsize(array.get()) &&
                          windows::element_count(old) == windows::element_count(array.get());
        if (!fits || FAILED(SafeArrayCopyData(array.get(), old))) {
            throw ArgumentError(DISP_E_ARRAYISLOCKED);
        }
        return;
    }
    SafeArrayDestroy(old);
    *variable = array.release();
}

// Stores into memory that the host owns, behind a typed reference such as VT_BYREF|VT_BSTR.
void store_typed(VARIANT& reference, const VARIANT& value, LCID locale) {
    const auto type = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    windows::Variant converted =
        type == value.vt ? windows::Variant::copy_of(value) : coerce(value, type, locale);
    VARIANT given = converted.release();
    if ((type & VT_ARRAY) != 0) {
        store_array(reference.pparray, windows::SafeArray(given.parray));
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
    if ((variable.vt & VT_ARRAY) != 0 && variable.parray != nullptr &&
        variable.parray->cLocks != 0) {
        throw ArgumentError(DISP_E_ARRAYISLOCKED);
    }
    VariantClear(&variable);
    variable = value.release();
}

}  // namespace tavrix::com
