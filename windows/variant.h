#pragma once

#include <concepts>

#include "base/text.h"
#include "windows/automation.h"
#include "windows/bstr.h"
#include "windows/com_pointer.h"
#include "windows/safe_array.h"

namespace tavrix::windows {

/// Owns one VARIANT. Its constructors give each type of value the type that hosts know it by.
class Variant {
  public:
    Variant() noexcept { VariantInit(&value_); }
    Variant(base::TextView text) : Variant(make_bstr(text)) {}
    Variant(const base::Text& text) : Variant(base::TextView(text)) {}
    Variant(const char16_t* text) : Variant(base::TextView(text)) {}
    Variant(base::ByteView bytes) : Variant(make_byte_array(bytes), VT_UI1) {}
    Variant(const base::Bytes& bytes) : Variant(base::ByteView(bytes)) {}
    // A template, so that no pointer turns into a truth value.
    template <std::same_as<bool> Bool>
    Variant(Bool value) noexcept {
        value_.vt = VT_BOOL;
        value_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
    Variant(std::uint8_t value) noexcept {
        value_.vt = VT_UI1;
        value_.bVal = value;
    }
    Variant(std::int16_t value) noexcept {
        value_.vt = VT_I2;
        value_.iVal = value;
    }
    Variant(std::int32_t value) noexcept {
        value_.vt = VT_I4;
        value_.lVal = value;
    }
    Variant(double value) noexcept {
        value_.vt = VT_R8;
        value_.dblVal = value;
    }
    explicit Variant(Bstr text) noexcept {
        value_.vt = VT_BSTR;
        value_.bstrVal = text.release();
    }
    Variant(SafeArray array, VARTYPE element_type) noexcept {
        value_.vt = static_cast<VARTYPE>(VT_ARRAY | element_type);
        value_.parray = array.release();
    }
    Variant(ComPointer<IDispatch> object) noexcept {
        value_.vt = VT_DISPATCH;
        value_.pdispVal = object.release();
    }
    Variant(ComPointer<IUnknown> object) noexcept {
        value_.vt = VT_UNKNOWN;
        value_.punkVal = object.release();
    }

    Variant(Variant&& other) noexcept : value_(other.release()) {}
    Variant& operator=(Variant&& other) noexcept {
        if (this != &other) {
            VariantClear(&value_);
            value_ = other.release();
        }
        return *this;
    }
    ~Variant() { VariantClear(&value_); }

    /// A deep copy with every reference followed. Throws std::bad_alloc.
    static Variant copy_of(const VARIANT& source);
    static Variant null() noexcept;
    /// What stands for an argument that is left out.
    static Variant missing() noexcept;
    static Variant date(double days) noexcept;
    static Variant currency(std::int64_t ten_thousandths) noexcept;

    VARTYPE type() const noexcept { return value_.vt; }
    const VARIANT& get() const noexcept { return value_; }
    VARIANT* address() noexcept { return &value_; }
    /// Where a function stores the value that it gives away.
    VARIANT* out() noexcept {
        VariantClear(&value_);
        return &value_;
    }
    VARIANT release() noexcept {
        const VARIANT value = value_;
        VariantInit(&value_);
        return value;
    }

  private:
    VARIANT value_;
};

/// `source` with its references followed, as a value that owns nothing and must not be cleared: it
/// lives as long as `source` does.
VARIANT look_through(const VARIANT& source) noexcept;

/// The object in `value` (references followed), empty for Nothing and for everything that is no
/// object.
ComPointer<IDispatch> object_of(const VARIANT& value) noexcept;

}  // namespace tavrix::windows
