#pragma once

#include "com/parameter.h"
#include "ports/windows/ado_database.h"
#include "ports/windows/host_object.h"

namespace tavrix::com {

/// The host's open connection.
template <>
class Parameter<ports::Database&> : public ObjectParameter<ports::Database, windows::AdoDatabase> {
  public:
    using ObjectParameter::ObjectParameter;
};

/// An object of the host that is only passed on.
template <>
class Parameter<ports::HostObject&>
    : public ObjectParameter<ports::HostObject, windows::HostObject> {
  public:
    using ObjectParameter::ObjectParameter;
};

}  // namespace tavrix::com
