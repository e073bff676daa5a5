#include "ports/windows/com_pictures.h"

#include <olectl.h>

#include <vector>

#include "ports/windows/adapters.h"
#include "ports/windows/memory_surface.h"
#include "windows/failure.h"
#include "windows/gdi.h"
#include "windows/variant.h"

namespace tavrix::windows {
namespace {

using Metafile = Owned<HENHMETAFILE, DeleteEnhMetaFile>;

void abandon(HDC metafile) noexcept {
    DeleteEnhMetaFile(CloseEnhMetaFile(metafile));
}
/// A metafile that is being written.
using MetafileDevice = Owned<HDC, abandon>;

// One PolyPolygon for each row of the drawing.
void draw_rows(HDC device, const drawing::Drawing& drawing) {
    std::vector<POINT> points;
    points.reserve(drawing.points().size());
    for (const drawing::PointTwips point : drawing.points()) {
        points.push_back({point.x_twips, -point.y_twips});
    }
    const POINT* row_points = points.data();
    std::size_t polygon = 0;
    for (const std::size_t end : drawing.rows()) {
        static_assert(sizeof(INT) == sizeof(std::int32_t));
        const auto* sizes = reinterpret_cast<const INT*>(drawing.sizes().data()) + polygon;
        PolyPolygon(device, row_points, sizes, static_cast<int>(end - polygon));
        for (; polygon < end; ++polygon) row_points += drawing.sizes()[polygon];
    }
}

Metafile make_metafile(const drawing::Drawing& drawing) {
    MetafileDevice device(CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr));
    if (!device) throw_failure(E_OUTOFMEMORY, u"CreateEnhMetaFile");
    SetMapMode(device.get(), MM_TWIPS);
    // The y axis of twips points up, a drawing's points down.
    const RECT whole = {0, 0, drawing.width_twips(), -drawing.height_twips()};
    FillRect(device.get(), &whole, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    {
        const GdiBrush brush(CreateSolidBrush(drawing.colour()));
        const Selected with_brush(device.get(), brush.get());
        const Selected without_outline(device.get(), GetStockObject(NULL_PEN));
        draw_rows(device.get(), drawing);
    }
    return Metafile(CloseEnhMetaFile(device.release()));
}

// Both members in front of the handle, and the handle with what follows it.
constexpr UINT description_bytes = 16;

ComPointer<IDispatch> make_picture(PICTDESC& description) {
    ComPointer<IPicture> picture;
    check(OleCreatePictureIndirect(&description, IID_IPicture, TRUE, picture.out_void()),
          u"OleCreatePictureIndirect");
    return picture.query<IDispatch>();
}

/// Owns the bitmap.
std::unique_ptr<ComPicture> picture_of_bitmap(GdiBitmap bitmap) {
    PICTDESC description{};
    description.cbSizeofstruct = description_bytes;
    description.picType = PICTYPE_BITMAP;
    description.bmp.hbitmap = bitmap.get();
    auto picture = std::make_unique<ComPicture>(make_picture(description));
    bitmap.release();
    return picture;
}

// Two boxes out of sight.
class MemoryForm final : public ports::PictureForm {
  public:
    ports::Surface& upright() override { return upright_; }
    ports::Surface& turned() override { return turned_; }
    std::unique_ptr<ports::Picture> turned_picture() override {
        return picture_of_bitmap(turned_.copy_image());
    }
    void set_version(base::TextView version) override { version_ = version; }

  private:
    MemorySurface upright_;
    MemorySurface turned_;
    base::Text version_;
};

class ComPictures final : public ports::Pictures {
  public:
    std::unique_ptr<ports::Picture> from_drawing(const drawing::Drawing& drawing) override;
    std::unique_ptr<ports::Picture> load(base::TextView path) override;
    std::unique_ptr<ports::PictureForm> open_form() override;
};

std::unique_ptr<ports::Picture> ComPictures::from_drawing(const drawing::Drawing& drawing) {
    Metafile metafile = make_metafile(drawing);
    PICTDESC description{};
    description.cbSizeofstruct = description_bytes;
    description.picType = PICTYPE_ENHMETAFILE;
    description.emf.hemf = metafile.get();
    auto picture = std::make_unique<ComPicture>(make_picture(description));
    // From now on the picture deletes it.
    metafile.release();
    return picture;
}

std::unique_ptr<ports::Picture> ComPictures::load(base::TextView path) {
    ComPointer<IDispatch> picture;
    const Variant file{path};
    check(OleLoadPictureFile(file.get(), picture.out()), u"OleLoadPictureFile");
    return std::make_unique<ComPicture>(std::move(picture));
}

std::unique_ptr<ports::PictureForm> ComPictures::open_form() {
    return std::make_unique<MemoryForm>();
}

}  // namespace
}  // namespace tavrix::windows

namespace tavrix::ports {

std::unique_ptr<Pictures> make_windows_pictures() {
    return std::make_unique<windows::ComPictures>();
}

}  // namespace tavrix::ports
