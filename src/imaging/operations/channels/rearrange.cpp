#include "imaging/operations/channels/rearrange.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/luma_rows.h"
#include "imaging/operations/support/simd.h"
#include "imaging/operations/support/swizzle_rows.h"

namespace kvn::imaging {
namespace {

bool isGray(ImageType type) {
    return type == ImageType::Gray8 || type == ImageType::GrayAlpha16;
}

constexpr Argument swizzleArguments[] = {
    {"red", ArgumentKind::Integer, 0, 3, "", "the channel that red takes", false, true},
    {"green", ArgumentKind::Integer, 0, 3, "", "the channel that green takes", false, true},
    {"blue", ArgumentKind::Integer, 0, 3, "", "the channel that blue takes", false, true},
    {"alpha", ArgumentKind::Integer, 0, 3, "", "the channel that alpha takes", false, true},
};

Raster swizzle(const Raster& source, const Arguments& arguments, Task& task) {
    const std::array<int, 4> from{arguments.integer(0), arguments.integer(1), arguments.integer(2),
                                  arguments.integer(3)};
    if (from == std::array<int, 4>{0, 1, 2, 3}) return source;
    using enum ResultForm;
    const bool colors = from[0] == 3 || from[1] == 3 || from[2] == 3;
    const bool alpha = from[3] != 3;
    if (isGray(source.type()) && !colors && !alpha) return source;
    const ResultForm form =
        colors ? (alpha ? ColorWithAlpha : Color) : (alpha ? WithAlpha : SameType);
    return mapRows(source, form, task, [&](const PixelRow& row) { swizzleRow(row, from); });
}

constexpr Argument shiftArguments[] = {
    {"channels", ArgumentKind::Integer, 0, 7, "", "sum of 1 red, 2 green, 4 blue"},
    {"x", ArgumentKind::Integer, -100'000, 100'000, "px", "to the right; wraps"},
    {"y", ArgumentKind::Integer, -100'000, 100'000, "px", "down; wraps"},
};

// Which bytes of a row move, repeated until it has a length that every vector divides.
using BytePattern = std::array<std::uint8_t, 192>;

BytePattern movingBytes(int mask, int channels) {
    BytePattern pattern{};
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const auto channel = static_cast<int>(i) % channels;
        const bool moves = channels < 3 ? channel == 0 : channel < 3 && (mask >> channel & 1);
        pattern[i] = moves ? 255 : 0;
    }
    return pattern;
}

// Pixels begin at the start of the pattern.
KVN_CLONES void moveBytes(const std::uint8_t* own, const std::uint8_t* moved, std::uint8_t* out,
                          std::size_t count, const BytePattern& moves) {
    for (; count >= 192; count -= 192, own += 192, moved += 192, out += 192)
        for (std::size_t i = 0; i < 192; ++i)
            out[i] = static_cast<std::uint8_t>((moved[i] & moves[i]) | (own[i] & ~moves[i]));
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>((moved[i] & moves[i]) | (own[i] & ~moves[i]));
}

int wrapped(int offset, int length) {
    const int rest = offset % length;
    return rest < 0 ? rest + length : rest;
}

Raster shift(const Raster& source, const Arguments& arguments, Task& task) {
    const int mask = arguments.integer(0) & 7;
    const int dx = wrapped(arguments.integer(1), source.width());
    const int dy = wrapped(arguments.integer(2), source.height());
    if (mask == 0 || (dx == 0 && dy == 0)) return source;
    const Raster picture =
        isGray(source.type()) && mask == 7 ? source : promotedToColor(source, task);
    Raster result = Raster::uninitialized(picture.type(), picture.width(), picture.height());
    const ConstView in = picture.view();
    const View out = result.edit();
    const int channels = bytesPerPixel(in.type);
    const BytePattern moves = movingBytes(mask, channels);
    const auto bytes = [channels](int pixels) {
        return static_cast<std::size_t>(pixels * channels);
    };
    const int right = in.width - dx; // pixels that stay on this side of the edge
    parallelRows(in.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* own = in.row(y);
            const std::uint8_t* moved = in.row(wrapped(y - dy, in.height));
            std::uint8_t* to = out.row(y);
            moveBytes(own + bytes(dx), moved, to + bytes(dx), bytes(right), moves);
            moveBytes(own, moved + bytes(right), to, bytes(dx), moves);
        }
    });
    return result;
}

void splitRow(const ConstView& in, int y, const std::array<View, 4>& pages, std::size_t count) {
    ColorPlanes planes = {};
    const std::uint8_t* const values[4] = {planes.r, planes.g, planes.b, planes.a};
    for (int x = 0; x < in.width; x += ColorPlanes::size) {
        const int pixels = std::min(ColorPlanes::size, in.width - x);
        splitPlanes(in.type, in.row(y) + std::ptrdiff_t{x} * bytesPerPixel(in.type), pixels,
                    planes);
        for (std::size_t c = 0; c < count; ++c)
            std::memcpy(pages[c].row(y) + x, values[c], static_cast<std::size_t>(pixels));
    }
}

std::vector<Raster> split(const Raster& source, const Arguments&, Task& task) {
    const Raster picture = promoted(source, task);
    const std::size_t count = hasAlpha(picture.type()) ? 4 : 3;
    std::vector<Raster> pages;
    std::array<View, 4> views;
    while (pages.size() < count)
        pages.push_back(Raster::uninitialized(ImageType::Gray8, picture.width(), picture.height()));
    for (std::size_t c = 0; c < count; ++c)
        views[c] = pages[c].edit();
    const ConstView in = picture.view();
    parallelRows(in.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            splitRow(in, y, views, count);
    });
    return pages;
}

Raster desaturate(const Raster& source, const Arguments&, Task& task) {
    if (isGray(source.type())) return source;
    return mapRows(source, ResultForm::SameType, task, desaturateRow);
}

} // namespace

const Operation swizzleOperation = {
    .name = "Channels.Swizzle",
    .undoName = "Swap Channels",
    .arguments = swizzleArguments,
    .run = swizzle,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note = "Rearranges the channels. Keeps the type; alpha is added where it takes a colour.",
};

const Operation shiftOperation = {
    .name = "Channels.Shift",
    .undoName = "Shift Channels",
    .arguments = shiftArguments,
    .run = shift,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Promotes,
    .note = "Moves single colour channels, round the edges.",
};

const Operation splitOperation = {
    .name = "Channels.Split",
    .undoName = "Split Channels",
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "One page of 8-bit grey for each channel.",
    .runPages = split,
};

const Operation desaturateOperation = {
    .name = "Channels.Desaturate",
    .undoName = "Desaturate",
    .run = desaturate,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Gives every colour the grey of its luma.",
};

} // namespace kvn::imaging
