#include "drawing/png.h"

#include <png.h>

#include <array>
#include <cmath>
#include <new>

#include "base/error.h"

namespace tavrix::drawing {
namespace {

using Palette = std::array<png_color, 256>;

Palette shades(Colour colour) {
    Palette palette{};
    for (int dark = 0; dark < 256; ++dark) {
        const auto shade = [&](int shift) {
            const int full = static_cast<int>((colour >> shift) & 0xFF);
            return static_cast<png_byte>(255 - (255 - full) * dark / 255);
        };
        palette[static_cast<std::size_t>(dark)] = {shade(0), shade(8), shade(16)};
    }
    return palette;
}

/// What a file is made of: rows of bytes, and what they mean.
struct Content {
    std::int32_t width_px;
    std::int32_t height_px;
    const std::uint8_t* bytes;
    std::ptrdiff_t bytes_per_row;
    /// Null for four bytes a pixel, blue first.
    const Palette* palette;
};

/// The library's two structures. Its failures jump to where setjmp was last called.
class PngWriter {
  public:
    PngWriter() {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
        if (info_ == nullptr) return;
        png_set_write_fn(png_, &file_, &append, nullptr);
        // A picture of a million pixels and more is wide, not hostile: it is our own.
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    }
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    /// False when memory has run out: the caller has seen that there is a picture. Nothing here may
    /// have a destructor, because a jump would pass it over.
    bool write(const Content& content, png_uint_32 dots_per_metre) {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0) return false;
        constexpr int bits = 8;
        const bool has_palette = content.palette != nullptr;
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(content.width_px),
                     static_cast<png_uint_32>(content.height_px), bits,
                     has_palette ? PNG_COLOR_TYPE_PALETTE : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_pHYs(png_, info_, dots_per_metre, dots_per_metre, PNG_RESOLUTION_METER);
        if (has_palette) {
            png_set_PLTE(png_, info_, content.palette->data(),
                         static_cast<int>(content.palette->size()));
            // Neighbours in a palette are no neighbours in colour: filters have nothing to gain.
            png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
        }
        png_write_info(png_, info_);
        if (!has_palette) {
            png_set_filler(png_, 0, PNG_FILLER_AFTER);
            png_set_bgr(png_);
        }
        for (std::int32_t y = 0; y < content.height_px; ++y) {
            png_write_row(png_, content.bytes + y * content.bytes_per_row);
        }
        png_write_end(png_, info_);
        return true;
    }
    base::Bytes take() { return std::move(file_); }

  private:
    // No C++ exception may pass through the library.
    static void append(png_structp png, png_bytep data, std::size_t size) {
        auto& file = *static_cast<base::Bytes*>(png_get_io_ptr(png));
        bool is_written = true;
        try {
            file.insert(file.end(), data, data + size);
        } catch (const std::bad_alloc&) {
            is_written = false;
        }
        if (!is_written) png_error(png, "out of memory");
    }

    base::Bytes file_;
    // The library's own functions would write to the standard error output.
    [[noreturn]] static void fail(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void ignore(png_structp, png_const_charp) {}

    png_structp png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &fail, &ignore);
    png_infop info_ = nullptr;
};

base::Bytes written(const Content& content, double dots_per_inch) {
    constexpr double metres_per_inch = 0.0254;
    const auto per_metre = static_cast<png_uint_32>(std::lround(dots_per_inch / metres_per_inch));
    if (content.width_px <= 0 || content.height_px <= 0) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"PNG",
                                    u"Pusty obraz nie może być plikiem PNG");
    }
    PngWriter writer;
    if (!writer.write(content, per_metre)) throw std::bad_alloc();
    return writer.take();
}

}  // namespace

base::Bytes to_png(const Coverage& picture, Colour colour, double dots_per_inch) {
    const Palette palette = shades(colour);
    return written(
        {picture.width_px, picture.height_px, picture.dark.data(), picture.width_px, &palette},
        dots_per_inch);
}

base::Bytes to_png(const Pixels& picture, double dots_per_inch) {
    return written({picture.width_px, picture.height_px, picture.bytes.data(),
                    std::ptrdiff_t{4} * picture.width_px, nullptr},
                   dots_per_inch);
}

}  // namespace tavrix::drawing
