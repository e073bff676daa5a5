#include "drawing/pixels.h"

#include "drawing/coverage.h"

namespace tavrix::drawing {
namespace {

// As bitmaps have their bytes: blue first.
constexpr int byte_shifts[] = {16, 8, 0};

void blend(Pixels& pixels, const Coverage& coverage, Colour colour) {
    std::uint8_t* pixel = pixels.bytes.data();
    for (const std::uint8_t dark : coverage.dark) {
        if (dark != 0) {
            for (int i = 0; i < 3; ++i) {
                const int wanted = static_cast<int>((colour >> byte_shifts[i]) & 0xFF);
                const int there = pixel[i];
                pixel[i] = static_cast<std::uint8_t>(there + (wanted - there) * dark / 255);
            }
        }
        pixel += 4;
    }
}

}  // namespace

Pixels to_pixels(const Picture& picture, double pixels_per_twip) {
    const Coverage paper = rasterise({picture.width_twips, picture.height_twips}, pixels_per_twip);
    Pixels pixels{paper.width_px, paper.height_px, {}};
    pixels.bytes.reserve(paper.dark.size() * 4);
    for (std::size_t i = 0; i < paper.dark.size(); ++i) {
        for (const int shift : byte_shifts) {
            pixels.bytes.push_back(static_cast<std::uint8_t>(picture.paper >> shift));
        }
        pixels.bytes.push_back(0);
    }
    for (const Drawing& layer : picture.layers) {
        blend(pixels, rasterise(layer, pixels_per_twip), layer.colour());
    }
    return pixels;
}

}  // namespace tavrix::drawing
