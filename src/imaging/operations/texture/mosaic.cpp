#include "imaging/operations/texture/mosaic.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr int allChannels = 7;

// What one row of blocks needs.
struct Blocks {
    ConstView from;
    View to;
    int width, height; // of a block
    int mask;
    int channels, colors;
    bool weighted; // colours count by their alpha

    bool selects(int c) const { return colors == 1 || (mask >> c & 1) != 0; }
    bool replacesAll() const { return colors == channels && (colors == 1 || mask == allChannels); }
};

// Sums of the columns of the block row y0..y1, weighed by alpha where that counts.
void sumColumns(const Blocks& blocks, int y0, int y1, std::vector<std::uint32_t>& sums) {
    std::ranges::fill(sums, 0u);
    std::uint32_t* __restrict to = sums.data();
    const int channels = blocks.channels, samples = blocks.from.width * channels;
    for (int y = y0; y < y1; ++y) {
        const std::uint8_t* __restrict row = blocks.from.row(y);
        if (!blocks.weighted) {
            for (int i = 0; i < samples; ++i)
                to[i] += row[i];
            continue;
        }
        for (int i = 0; i < samples; i += channels) {
            const std::uint32_t alpha = row[i + channels - 1];
            for (int c = 0; c < channels - 1; ++c)
                to[i + c] += row[i + c] * alpha;
            to[i + channels - 1] += alpha;
        }
    }
}

// The mean of the columns x0..x1, `rows` high, a byte a channel; that of the alpha is not used.
// Blocks of which nothing is visible get their plain black.
void meanOf(const Blocks& blocks, const std::vector<std::uint32_t>& sums, int x0, int x1, int rows,
            std::uint8_t* mean) {
    std::uint64_t totals[4] = {};
    for (int x = x0; x < x1; ++x)
        for (int c = 0; c < blocks.channels; ++c)
            totals[c] += sums[static_cast<std::size_t>(x * blocks.channels + c)];
    const std::uint64_t weight =
        blocks.weighted ? totals[blocks.channels - 1]
                        : static_cast<std::uint64_t>(x1 - x0) * static_cast<std::uint64_t>(rows);
    for (int c = 0; c < blocks.colors; ++c)
        mean[c] = weight > 0 ? static_cast<std::uint8_t>((totals[c] + weight / 2) / weight) : 0;
}

// One row of means, as pixels.
void fillRow(const Blocks& blocks, const std::vector<std::uint32_t>& sums, int rows,
             std::uint8_t* out) {
    for (int x0 = 0; x0 < blocks.from.width; x0 += blocks.width) {
        const int x1 = std::min(blocks.from.width - x0, blocks.width) + x0;
        std::uint8_t mean[4] = {};
        meanOf(blocks, sums, x0, x1, rows, mean);
        for (int x = x0; x < x1; ++x, out += blocks.channels)
            for (int c = 0; c < blocks.channels; ++c)
                out[c] = mean[c];
    }
}

void takeSelected(const Blocks& blocks, const std::uint8_t* mean, const std::uint8_t* own,
                  std::uint8_t* out) {
    for (int c = 0; c < blocks.channels; ++c) {
        const std::uint8_t* from = c < blocks.colors && blocks.selects(c) ? mean : own;
        for (int i = c; i < blocks.from.width * blocks.channels; i += blocks.channels)
            out[i] = from[i];
    }
}

void blockRow(const Blocks& blocks, int y0, std::vector<std::uint32_t>& sums,
              std::vector<std::uint8_t>& mean) {
    const int y1 = std::min(blocks.from.height - y0, blocks.height) + y0;
    sumColumns(blocks, y0, y1, sums);
    fillRow(blocks, sums, y1 - y0, mean.data());
    for (int y = y0; y < y1; ++y) {
        if (blocks.replacesAll())
            std::memcpy(blocks.to.row(y), mean.data(), mean.size());
        else
            takeSelected(blocks, mean.data(), blocks.from.row(y), blocks.to.row(y));
    }
}

constexpr Argument mosaicArguments[] = {
    {"block width", ArgumentKind::Integer, 1, 10000, "px", "below 1 counts as 1"},
    {"block height", ArgumentKind::Integer, 1, 10000, "px", "below 1 counts as 1"},
    {"channels", ArgumentKind::Integer, 0, allChannels, "", "1 red, 2 green, 4 blue"},
};

Raster mosaic(const Raster& picture, const Arguments& arguments, Task& task) {
    const int width = std::clamp(arguments.integer(0), 1, picture.width());
    // Higher blocks would not fit their sums; no picture is as high.
    const int height = std::clamp(arguments.integer(1), 1, std::min(picture.height(), 60000));
    const int mask = arguments.integer(2) & allChannels;
    if (mask == 0 || (width == 1 && height == 1)) return picture;
    const Raster source =
        mask == allChannels ? promoted(picture, task) : promotedToColor(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const int channels = bytesPerPixel(source.type());
    const int colors = channels - (hasAlpha(source.type()) ? 1 : 0);
    const Blocks blocks{source.view(), result.edit(), width,  height,
                        mask,          channels,      colors, !isOpaque(source)};
    const int rows = (source.height() - 1) / height + 1;
    parallelRows(
        rows, task,
        [&](int first, int last) {
            std::vector<std::uint32_t> sums(rowBytes(source.type(), source.width()));
            std::vector<std::uint8_t> mean(sums.size());
            for (int row = first; row < last; ++row)
                blockRow(blocks, row * height, sums, mean);
        },
        1);
    return result;
}

} // namespace

const Operation mosaicOperation = {
    .name = "Effects.Mosaic",
    .undoName = "Mosaic",
    .arguments = mosaicArguments,
    .run = mosaic,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Tiles of one colour, the mean of what they cover.",
};

} // namespace kvn::imaging
