#pragma once

#include "com/parameter.h"
#include "ports/windows/host_object.h"

namespace tavrix::com {

/// An object of the host, or Nothing; by reference in every signature and only passed on.
template <>
class Parameter<ports::HostObject&> {
  public:
    static constexpr VARTYPE type = VT_DISPATCH;
    static constexpr bool writes = false;
    static constexpr bool optional = false;

    explicit Parameter(const Incoming& incoming)
        : object_(detail::read<windows::ComPointer<IDispatch>>(incoming)) {}
    ports::HostObject& get() noexcept { return object_; }
    void write_back() const noexcept {}

  private:
    windows::HostObject object_;
};

}  // namespace tavrix::com
