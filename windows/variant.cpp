#include "windows/variant.h"

#include <cstring>
#include <new>

namespace tavrix::windows {

Bstr make_bstr(base::TextView text) {
    Bstr bstr(SysAllocStringLen(wide(text.data()), static_cast<UINT>(text.size())));
    if (!bstr) throw std::bad_alloc();
    return bstr;
}

SafeArray make_byte_array(base::ByteView bytes) {
    SafeArray array(SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size())));
    if (!array) throw std::bad_alloc();
    if (!bytes.empty()) {
        const SafeArrayAccess access(array.get());
        std::memcpy(access.data(), bytes.data(), bytes.size());
    }
    return array;
}

std::size_t element_count(SAFEARRAY* array) noexcept {
    return array == nullptr ? 0 : array->rgsabound[0].cElements;
}

bool is_byte_array(SAFEARRAY* array) noexcept {
    return array != nullptr && SafeArrayGetDim(array) == 1 && SafeArrayGetElemsize(array) == 1 &&
           (array->pvData != nullptr || element_count(array) == 0);
}

base::Bytes bytes_of(SAFEARRAY* array) {
    base::Bytes copy(element_count(array));
    const SafeArrayAccess access(array);
    if (!copy.empty()) {
        if (access.data() == nullptr) throw std::bad_alloc();
        std::memcpy(copy.data(), access.data(), copy.size());
    }
    return copy;
}

Variant Variant::copy_of(const VARIANT& source) {
    Variant copy;
    // Arrays, texts and objects are copied or counted; only memory can run out.
    if (FAILED(VariantCopyInd(&copy.value_, const_cast<VARIANT*>(&source)))) throw std::bad_alloc();
    return copy;
}

Variant Variant::null() noexcept {
    Variant variant;
    variant.value_.vt = VT_NULL;
    return variant;
}

Variant Variant::missing() noexcept {
    Variant variant;
    variant.value_.vt = VT_ERROR;
    variant.value_.scode = DISP_E_PARAMNOTFOUND;
    return variant;
}

Variant Variant::date(double days) noexcept {
    Variant variant;
    variant.value_.vt = VT_DATE;
    variant.value_.date = days;
    return variant;
}

Variant Variant::currency(std::int64_t ten_thousandths) noexcept {
    Variant variant;
    variant.value_.vt = VT_CY;
    variant.value_.cyVal.int64 = ten_thousandths;
    return variant;
}

VARIANT look_through(const VARIANT& source) noexcept {
    VARIANT value = source;
    // Some hosts pass a reference to a variable that is itself a reference.
    for (int depth = 0; value.vt == (VT_BYREF | VT_VARIANT) && depth < 4; ++depth) {
        value = *value.pvarVal;
    }
    if ((value.vt & VT_BYREF) == 0) return value;

    const VARIANT reference = value;
    value.vt = static_cast<VARTYPE>(reference.vt & ~VT_BYREF);
    if (value.vt == VT_DECIMAL) {
        value.decVal = *reference.pdecVal;
        value.vt = VT_DECIMAL;  // the type shares its place with the decimal's reserved field
        return value;
    }
    if ((value.vt & VT_ARRAY) != 0) {
        value.parray = *reference.pparray;
        return value;
    }
    switch (value.vt) {
        case VT_I1:
        case VT_UI1:
            value.bVal = *reference.pbVal;
            break;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            value.iVal = *reference.piVal;
            break;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            value.llVal = *reference.pllVal;
            break;
        case VT_BSTR:
            value.bstrVal = *reference.pbstrVal;
            break;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            value.punkVal = *reference.ppunkVal;
            break;
        case VT_RECORD:
            break;  // held in the same way by value and by reference
        default:
            value.lVal = *reference.plVal;
            break;
    }
    return value;
}

ComPointer<IDispatch> object_of(const VARIANT& value) noexcept {
    const VARIANT seen = look_through(value);
    if (seen.vt == VT_DISPATCH) return ComPointer<IDispatch>(seen.pdispVal);
    if (seen.vt == VT_UNKNOWN) return ComPointer<IUnknown>(seen.punkVal).query<IDispatch>();
    return {};
}

}  // namespace tavrix::windows
