#pragma once

#include "ports/surface.h"
#include "windows/com_pointer.h"
#include "windows/gdi.h"

namespace tavrix::windows {

/// An OLE picture, as hosts' surfaces paint it.
class ComPicture final : public ports::Picture {
  public:
    explicit ComPicture(ComPointer<IDispatch> picture) : picture_(std::move(picture)) {}
    const ComPointer<IDispatch>& dispatch() const noexcept { return picture_; }

  private:
    ComPointer<IDispatch> picture_;
};

/// A picture that owns the bitmap. Throws base::AutomationError.
std::unique_ptr<ComPicture> picture_of_bitmap(GdiBitmap bitmap);

/// Drawings become enhanced metafiles; files are loaded by the system.
class ComPictures final : public ports::Pictures {
  public:
    std::unique_ptr<ports::Picture> from_drawing(const drawing::Drawing& drawing) override;
    std::unique_ptr<ports::Picture> load(base::TextView path) override;
    std::unique_ptr<ports::PictureForm> open_form() override;
};

}  // namespace tavrix::windows
