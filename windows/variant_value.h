#pragma once

#include "base/value.h"
#include "windows/variant.h"

namespace tavrix::windows {

/// What a field or an argument holds, references followed. Empty is null, as is an object (Nothing
/// or not); currencies and decimals become integers when they have no fraction and floating-point
/// numbers otherwise.
base::Value value_of(const VARIANT& variant);

/// An integer that does not fit a long becomes a decimal, the type that hosts without 64-bit
/// integers know.
Variant variant_of(const base::Value& value);

}  // namespace tavrix::windows
