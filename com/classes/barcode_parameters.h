#pragma once

#include "barcode/surface/rotation.h"
#include "com/parameter.h"
#include "ports/windows/host_surface.h"

namespace tavrix::com {

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
