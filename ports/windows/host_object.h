#pragma once

#include "ports/host_object.h"
#include "windows/com_pointer.h"

namespace tavrix::windows {

/// A host's object behind its dispatch interface; may be Nothing. In sight because the public
/// classes' arguments become one.
class HostObject final : public ports::HostObject {
  public:
    explicit HostObject(ComPointer<IDispatch> object) noexcept : object_(std::move(object)) {}
    IDispatch* dispatch() const noexcept { return object_.get(); }

  private:
    ComPointer<IDispatch> object_;
};

}  // namespace tavrix::windows
