#pragma once

#include "com/codec.h"
#include "ports/windows/variant_value.h"

namespace tavrix::com {

/// Whatever a field can hold; an object gives its default property.
template <>
struct Codec<ports::Value> {
    static constexpr VARTYPE type = VT_VARIANT;
    static ports::Value read(const VARIANT& source, LCID locale) {
        if (!is_object(source)) return windows::value_of(source);
        return windows::value_of(default_property(source, locale).get());
    }
    static windows::Variant write(const ports::Value& value) { return windows::variant_of(value); }
};

}  // namespace tavrix::com
