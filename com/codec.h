#pragma once

#include <vector>

#include "base/currency.h"
#include "base/secret.h"
#include "base/value.h"
#include "com/call_arguments.h"
#include "windows/variant.h"

namespace tavrix::com {

// How each portable type travels as a VARIANT. `read` is given a value without references
// (look_through), takes everything that the system can turn into the type in the caller's locale,
// and throws ArgumentError (DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW, without an index) for the rest.
// A type that is always an object of one public class says which, as `class_name`.
template <typename T>
struct Codec;

/// `source` as type `type`, an object through its default property.
windows::Variant coerce(const VARIANT& source, VARTYPE type, LCID locale);

template <>
struct Codec<base::Text> {
    static constexpr VARTYPE type = VT_BSTR;
    static base::Text read(const VARIANT& source, LCID locale);
    static windows::Variant write(const base::Text& value) { return value; }
};

/// A text like any other to the host.
template <>
struct Codec<base::SecretText> {
    static constexpr VARTYPE type = VT_BSTR;
    static base::SecretText read(const VARIANT& source, LCID locale);
    static windows::Variant write(const base::SecretText& value) { return value.view(); }
};

template <>
struct Codec<std::int32_t> {
    static constexpr VARTYPE type = VT_I4;
    static std::int32_t read(const VARIANT& source, LCID locale) {
        return source.vt == type ? source.lVal : coerce(source, type, locale).get().lVal;
    }
    static windows::Variant write(std::int32_t value) { return value; }
};

template <>
struct Codec<std::int16_t> {
    static constexpr VARTYPE type = VT_I2;
    static std::int16_t read(const VARIANT& source, LCID locale) {
        return source.vt == type ? source.iVal : coerce(source, type, locale).get().iVal;
    }
    static windows::Variant write(std::int16_t value) { return value; }
};

template <>
struct Codec<std::uint8_t> {
    static constexpr VARTYPE type = VT_UI1;
    static std::uint8_t read(const VARIANT& source, LCID locale) {
        return source.vt == type ? source.bVal : coerce(source, type, locale).get().bVal;
    }
    static windows::Variant write(std::uint8_t value) { return value; }
};

template <>
struct Codec<double> {
    static constexpr VARTYPE type = VT_R8;
    static double read(const VARIANT& source, LCID locale) {
        return source.vt == type ? source.dblVal : coerce(source, type, locale).get().dblVal;
    }
    static windows::Variant write(double value) { return value; }
};

template <>
struct Codec<bool> {
    static constexpr VARTYPE type = VT_BOOL;
    static bool read(const VARIANT& source, LCID locale) {
        return (source.vt == type ? source : coerce(source, type, locale).get()).boolVal !=
               VARIANT_FALSE;
    }
    static windows::Variant write(bool value) { return value; }
};

template <>
struct Codec<base::Currency> {
    static constexpr VARTYPE type = VT_CY;
    static base::Currency read(const VARIANT& source, LCID locale) {
        return {source.vt == type ? source.cyVal.int64
                                  : coerce(source, type, locale).get().cyVal.int64};
    }
    static windows::Variant write(base::Currency value) {
        return windows::Variant::currency(value.ten_thousandths);
    }
};

/// Bytes come as an array of bytes, as an array of anything that counts as bytes (script hosts), or
/// as a script's array object.
template <>
struct Codec<base::Bytes> {
    static constexpr VARTYPE type = VT_ARRAY | VT_UI1;
    static base::Bytes read(const VARIANT& source, LCID locale);
    static windows::Variant write(const base::Bytes& value) { return value; }
};

template <>
struct Codec<std::vector<base::Text>> {
    static constexpr VARTYPE type = VT_ARRAY | VT_BSTR;
    static std::vector<base::Text> read(const VARIANT& source, LCID locale);
    static windows::Variant write(const std::vector<base::Text>& value);
};

/// Read only: none of them goes back.
template <>
struct Codec<std::vector<base::SecretText>> {
    static constexpr VARTYPE type = VT_ARRAY | VT_BSTR;
    static std::vector<base::SecretText> read(const VARIANT& source, LCID locale);
};

/// Whatever a field can hold; an object gives its default property.
template <>
struct Codec<base::Value> {
    static constexpr VARTYPE type = VT_VARIANT;
    static base::Value read(const VARIANT& source, LCID locale);
    static windows::Variant write(const base::Value& value);
};

/// The host's own value, a deep copy.
template <>
struct Codec<windows::Variant> {
    static constexpr VARTYPE type = VT_VARIANT;
    static windows::Variant read(const VARIANT& source, LCID) {
        return windows::Variant::copy_of(source);
    }
    static windows::Variant write(windows::Variant value) { return value; }
};

/// An object, or Nothing.
template <>
struct Codec<windows::ComPointer<IDispatch>> {
    static constexpr VARTYPE type = VT_DISPATCH;
    static windows::ComPointer<IDispatch> read(const VARIANT& source, LCID locale);
    static windows::Variant write(const windows::ComPointer<IDispatch>& value) { return value; }
};

/// Results only: what `For Each` walks through.
template <>
struct Codec<windows::ComPointer<IUnknown>> {
    static constexpr VARTYPE type = VT_UNKNOWN;
    static windows::Variant write(const windows::ComPointer<IUnknown>& value) { return value; }
};

}  // namespace tavrix::com
