#include "drawing/png.h"

#include <zlib.h>

#include <cmath>
#include <new>

namespace tavrix::ports {
namespace {

void append_number(base::Bytes& bytes, std::uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(number >> shift));
    }
}

void append_chunk(base::Bytes& file, std::string_view type, const base::Bytes& data) {
    append_number(file, static_cast<std::uint32_t>(data.size()));
    const std::size_t checked_from = file.size();
    file.insert(file.end(), type.begin(), type.end());
    file.insert(file.end(), data.begin(), data.end());
    append_number(file,
                  static_cast<std::uint32_t>(crc32(0, file.data() + checked_from,
                                                   static_cast<uInt>(file.size() - checked_from))));
}

base::Bytes header(const Coverage& picture) {
    base::Bytes data;
    append_number(data, static_cast<std::uint32_t>(picture.width_px));
    append_number(data, static_cast<std::uint32_t>(picture.height_px));
    constexpr std::uint8_t bits = 8, palette = 3, deflate = 0, adaptive = 0, not_interlaced = 0;
    data.insert(data.end(), {bits, palette, deflate, adaptive, not_interlaced});
    return data;
}

base::Bytes shades(Colour colour) {
    base::Bytes data;
    for (int dark = 0; dark < 256; ++dark) {
        for (const int shift : {0, 8, 16}) {  // red, green, blue
            const int full = static_cast<int>((colour >> shift) & 0xFF);
            data.push_back(static_cast<std::uint8_t>(255 - (255 - full) * dark / 255));
        }
    }
    return data;
}

base::Bytes resolution(double dots_per_inch) {
    constexpr double metres_per_inch = 0.0254;
    const auto per_metre = static_cast<std::uint32_t>(std::lround(dots_per_inch / metres_per_inch));
    base::Bytes data;
    append_number(data, per_metre);
    append_number(data, per_metre);
    constexpr std::uint8_t unit_metre = 1;
    data.push_back(unit_metre);
    return data;
}

base::Bytes compressed(const Coverage& picture) {
    const auto width = static_cast<std::size_t>(picture.width_px);
    base::Bytes rows;
    rows.reserve((width + 1) * static_cast<std::size_t>(picture.height_px));
    constexpr std::uint8_t no_filter = 0;
    for (std::size_t begin = 0; begin < picture.dark.size(); begin += width) {
        rows.push_back(no_filter);
        rows.insert(rows.end(), picture.dark.begin() + static_cast<std::ptrdiff_t>(begin),
                    picture.dark.begin() + static_cast<std::ptrdiff_t>(begin + width));
    }
    uLongf size = compressBound(static_cast<uLong>(rows.size()));
    base::Bytes data(size);
    // Only memory can run out: the output is large enough for anything.
    if (compress2(data.data(), &size, rows.data(), static_cast<uLong>(rows.size()),
                  Z_DEFAULT_COMPRESSION) != Z_OK) {
        throw std::bad_alloc();
    }
    data.resize(size);
    return data;
}

}  // namespace

base::Bytes to_png(const Coverage& picture, Colour colour, double dots_per_inch) {
    base::Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    append_chunk(file, "IHDR", header(picture));
    append_chunk(file, "PLTE", shades(colour));
    append_chunk(file, "pHYs", resolution(dots_per_inch));
    append_chunk(file, "IDAT", compressed(picture));
    append_chunk(file, "IEND", {});
    return file;
}

}  // namespace tavrix::ports
