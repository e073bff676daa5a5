#include "com/codec.h"

#include <new>

#include "base/error.h"
#include "windows/late_bound.h"
#include "windows/variant_value.h"

namespace tavrix::com {
namespace {

using windows::Variant;

[[noreturn]] void refuse(HRESULT code) {
    if (code == E_OUTOFMEMORY) throw std::bad_alloc();
    throw ArgumentError(code == DISP_E_OVERFLOW ? code : DISP_E_TYPEMISMATCH);
}

// Takes no other way for the object than DISPID 0, which needs no name.
Variant default_property(const VARIANT& source, LCID locale) {
    const windows::ComPointer<IDispatch> object = windows::object_of(source);
    Variant value;
    DISPPARAMS none{};
    if (!object || FAILED(object->Invoke(DISPID_VALUE, IID_NULL, locale,
                                         DISPATCH_PROPERTYGET | DISPATCH_METHOD, &none, value.out(),
                                         nullptr, nullptr))) {
        refuse(DISP_E_TYPEMISMATCH);
    }
    return value;
}

bool is_object(const VARIANT& source) noexcept {
    return source.vt == VT_DISPATCH || source.vt == VT_UNKNOWN;
}

// The size of an element of the type; 0 for types that no VARIANT holds as a value, records among
// them.
std::size_t element_size(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return 8;
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return sizeof(void*);
        case VT_DECIMAL:
            return sizeof(DECIMAL);
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

// Calls `visit` with each element of `source` as a value of its own. The elements are walked by
// their place in memory, because indexes from a high lower bound on do not fit into a LONG.
template <typename Visit>
void for_each_element(const VARIANT& source, Visit visit) {
    SAFEARRAY* const array = source.parray;
    if (array == nullptr) return;
    // An array that a host put together by hand may not know its type.
    VARTYPE type = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &type))) type = source.vt & VT_TYPEMASK;
    const std::size_t size = element_size(type);
    if (SafeArrayGetDim(array) != 1 || size == 0 || size != SafeArrayGetElemsize(array)) {
        refuse(DISP_E_TYPEMISMATCH);
    }
    const windows::SafeArrayAccess access(array);
    const std::size_t count = windows::element_count(array);
    if (access.data() == nullptr && count != 0) refuse(DISP_E_TYPEMISMATCH);
    for (std::size_t i = 0; i < count; ++i) {
        VARIANT place{};
        place.vt = static_cast<VARTYPE>(VT_BYREF | type);
        place.byref = static_cast<std::uint8_t*>(access.data()) + i * size;
        // A copy: an object among the elements may change the array when it is asked.
        Variant element;
        const HRESULT code = type == VT_VARIANT ? VariantCopy(element.out(), place.pvarVal)
                                                : VariantCopyInd(element.out(), &place);
        if (FAILED(code)) refuse(code);
        visit(element.get());
    }
}

// A script's array object: `length`, and its elements under their numbers.
template <typename Visit>
void for_each_property(const VARIANT& source, LCID locale, Visit visit) {
    const windows::LateBound object(windows::object_of(source));
    try {
        const std::int32_t length =
            Codec<std::int32_t>::read(windows::look_through(object.get(u"length").get()), locale);
        for (std::int32_t i = 0; i < length; ++i) {
            visit(windows::look_through(object.get(base::to_decimal(i).c_str()).get()));
        }
    } catch (const base::AutomationError&) {
        refuse(DISP_E_TYPEMISMATCH);
    }
}

template <typename Visit>
void for_each(const VARIANT& source, LCID locale, Visit visit) {
    if ((source.vt & VT_ARRAY) != 0) {
        for_each_element(source, visit);
    } else if (is_object(source)) {
        for_each_property(source, locale, visit);
    } else {
        refuse(DISP_E_TYPEMISMATCH);
    }
}

}  // namespace

Variant coerce(const VARIANT& source, VARTYPE type, LCID locale) {
    Variant through_default;
    VARIANT plain = source;
    if (is_object(source)) {
        through_default = default_property(source, locale);
        plain = windows::look_through(through_default.get());
        if (is_object(plain)) refuse(DISP_E_TYPEMISMATCH);
    }
    Variant result;
    const HRESULT code = VariantChangeTypeEx(result.out(), &plain, locale, VARIANT_ALPHABOOL, type);
    if (FAILED(code)) refuse(code);
    return result;
}

base::Text Codec<base::Text>::read(const VARIANT& source, LCID locale) {
    if (source.vt == VT_BSTR) return base::Text(windows::view_of(source.bstrVal));
    return base::Text(windows::view_of(coerce(source, VT_BSTR, locale).get().bstrVal));
}

base::SecretText Codec<base::SecretText>::read(const VARIANT& source, LCID locale) {
    if (source.vt == VT_BSTR) return base::SecretText(windows::view_of(source.bstrVal));
    const Variant coerced = coerce(source, VT_BSTR, locale);
    const base::TextView text = windows::view_of(coerced.get().bstrVal);
    base::SecretText secret(text);
    base::wipe(coerced.get().bstrVal, text.size() * sizeof(char16_t));
    return secret;
}

base::Bytes Codec<base::Bytes>::read(const VARIANT& source, LCID locale) {
    base::Bytes bytes;
    if (source.vt == (VT_ARRAY | VT_UI1) && windows::is_byte_array(source.parray)) {
        return windows::bytes_of(source.parray);
    }
    for_each(source, locale, [&](const VARIANT& element) {
        bytes.push_back(Codec<std::uint8_t>::read(windows::look_through(element), locale));
    });
    return bytes;
}

namespace {

template <typename T>
std::vector<T> read_texts(const VARIANT& source, LCID locale) {
    std::vector<T> texts;
    for_each(source, locale, [&](const VARIANT& element) {
        texts.push_back(Codec<T>::read(windows::look_through(element), locale));
    });
    return texts;
}

}  // namespace

std::vector<base::Text> Codec<std::vector<base::Text>>::read(const VARIANT& source, LCID locale) {
    return read_texts<base::Text>(source, locale);
}

std::vector<base::SecretText> Codec<std::vector<base::SecretText>>::read(const VARIANT& source,
                                                                         LCID locale) {
    return read_texts<base::SecretText>(source, locale);
}

Variant Codec<std::vector<base::Text>>::write(const std::vector<base::Text>& value) {
    windows::SafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(value.size())));
    if (!array) throw std::bad_alloc();
    LONG index = 0;
    for (const base::Text& text : value) {
        if (FAILED(SafeArrayPutElement(array.get(), &index, windows::make_bstr(text).get()))) {
            throw std::bad_alloc();
        }
        ++index;
    }
    return {std::move(array), VT_BSTR};
}

base::Value Codec<base::Value>::read(const VARIANT& source, LCID locale) {
    if (!is_object(source)) return windows::value_of(source);
    return windows::value_of(default_property(source, locale).get());
}

Variant Codec<base::Value>::write(const base::Value& value) {
    return windows::variant_of(value);
}

windows::ComPointer<IDispatch> Codec<windows::ComPointer<IDispatch>>::read(const VARIANT& source,
                                                                           LCID) {
    if (!is_object(source)) refuse(DISP_E_TYPEMISMATCH);
    windows::ComPointer<IDispatch> object = windows::object_of(source);
    // An object without IDispatch is not Nothing.
    if (!object && source.punkVal != nullptr) refuse(DISP_E_TYPEMISMATCH);
    return object;
}

}  // namespace tavrix::com
