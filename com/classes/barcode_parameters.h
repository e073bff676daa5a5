#pragma once

#include "barcode/surface/rotation.h"
#include "base/currency.h"
#include "com/parameter.h"
#include "ports/windows/host_surface.h"

namespace tavrix::com {

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

/// A host's picture box or printer, only ever drawn on.
template <>
class Parameter<ports::Surface&> : public ObjectParameter<ports::Surface, windows::HostSurface> {
  public:
    using ObjectParameter::ObjectParameter;
};

/// Results only: a Variant that stays Empty.
template <>
struct Codec<barcode::EmptyResult> {
    static constexpr VARTYPE type = VT_VARIANT;
    static windows::Variant write(barcode::EmptyResult) { return {}; }
};

}  // namespace tavrix::com
