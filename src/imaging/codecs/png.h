// The parts of the PNG codec.
//
// Read: every colour type and depth, interlaced or not. Pixels are the file's own samples; gamma,
// profile and the like are carried, not applied. 1-bit grey and 1-bit palettes give Bit1, 2 and 4
// bits grey Gray8 (scaled to 0..255), palettes Indexed8 (Indexed8Alpha with a tRNS chunk, order
// kept), a transparent colour an alpha channel of 0 and 255, 16 bits are rounded to 8. The picture
// is turned upright after an eXIf chunk.
//
// An intact file that is not interlaced is inflated in one go and unfiltered by our own code,
// which halves the time; anything else goes through libpng, which gives what can be read of a
// damaged file. Missing pixels are black, or clear where there is alpha. Reading takes the memory
// of the picture twice over.
//
// Write: each type in the form that gives it back exactly; filters and compression run in bands on
// all cores.
#pragma once

#include <algorithm>
#include <array>
#include <optional>

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

inline constexpr std::array<std::uint8_t, 8> pngSignature{0x89, 'P',  'N',  'G',
                                                          '\r', '\n', 0x1a, '\n'};

enum class PngColor : std::uint8_t { Gray = 0, Rgb = 2, Palette = 3, GrayAlpha = 4, Rgba = 6 };

struct PngHeader {
    int width = 0;
    int height = 0;
    int depth = 8;
    PngColor color = PngColor::Rgb;
    bool interlaced = false;

    int channels() const {
        constexpr int counts[] = {1, 0, 3, 1, 2, 0, 4};
        return counts[static_cast<int>(color)];
    }
    int bits() const { return depth * channels(); }
    // Of an unfiltered row.
    std::size_t rowBytes() const {
        return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits()) + 7) / 8;
    }
    // The step of the filters.
    std::size_t pixelBytes() const { return static_cast<std::size_t>(std::max(1, bits() / 8)); }
};

Picture readPng(std::span<const std::uint8_t> file, ReadLimits limits, Task& task);
std::vector<PageFacts> pngFacts(std::span<const std::uint8_t> file, ReadLimits limits);
void writePng(const Page& page, ByteSink& sink, Task& task);

} // namespace kvn::imaging
