#pragma once

#include "ports/surface.h"
#include "windows/com_pointer.h"

namespace tavrix::windows {

/// An OLE picture, as hosts' surfaces paint it: in sight because a surface hands it to its host.
class ComPicture final : public ports::Picture {
  public:
    explicit ComPicture(ComPointer<IDispatch> picture) : picture_(std::move(picture)) {}
    const ComPointer<IDispatch>& dispatch() const noexcept { return picture_; }

  private:
    ComPointer<IDispatch> picture_;
};

}  // namespace tavrix::windows
