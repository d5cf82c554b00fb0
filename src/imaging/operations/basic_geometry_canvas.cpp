#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/basic_geometry.h"

namespace kvn::imaging {

namespace {

constexpr Argument arguments[] = {
    {"width", ArgumentKind::Integer, 1, 65535, "px", "columns of the new canvas"},
    {"height", ArgumentKind::Integer, 1, 65535, "px", "rows of the new canvas"},
    {"color", ArgumentKind::Color, 0, 255, "", "what the picture does not cover"},
    {"offsetX", ArgumentKind::Integer, -65535, 65535, "px", "column of the picture's left edge"},
    {"offsetY", ArgumentKind::Integer, -65535, 65535, "px", "row of the picture's top edge"},
};

// The palette with the colour in it, if there is room; 1-bit pictures keep their two.
Palette paletteWith(const Raster& source, Rgba color) {
    Palette palette = source.palette();
    if (!hasAlpha(source.type())) color.a = 255;
    const auto& colors = palette.colors();
    if (source.type() != ImageType::Bit1 && palette.size() < Palette::maxSize &&
        std::ranges::find(colors, color) == colors.end())
        palette.set(palette.size(), color);
    return palette;
}

// One row of the bare canvas. Palette types: its index in every byte, also for 1-bit.
std::vector<std::uint8_t> bareRow(const Palette& palette, ImageType type, int width, Rgba color) {
    if (hasPalette(type)) {
        if (!hasAlpha(type)) color.a = 255;
        return std::vector<std::uint8_t>(static_cast<std::size_t>(width),
                                         static_cast<std::uint8_t>(palette.nearest(color)));
    }
    const Raster row = Raster::filled(type, width, 1, color);
    return {row.view().row(0), row.view().row(0) + row.rowBytes()};
}

// Where a row of the picture goes on the canvas.
struct Placement {
    Rect covered; // on the canvas
    int sourceX = 0, sourceY = 0;
};

Placement place(const Raster& source, Size canvas, Point offset) {
    const Rect whole{0, 0, canvas.width, canvas.height};
    Placement placement;
    placement.covered =
        Rect{offset.x, offset.y, source.width(), source.height()}.intersected(whole);
    // An offset far to the left covers nothing, and then the difference means nothing either.
    if (placement.covered.isEmpty()) return placement;
    placement.sourceX = placement.covered.x - offset.x;
    placement.sourceY = placement.covered.y - offset.y;
    return placement;
}

// The 1-bit row goes through bytes, since the two may not start at the same bit.
void placeBits(const std::uint8_t* from, const Placement& placement, int sourceWidth,
               std::vector<std::uint8_t>& row, std::uint8_t* to, int width) {
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(sourceWidth));
    expandBits(from, bytes.data(), sourceWidth);
    std::copy_n(bytes.begin() + placement.sourceX, placement.covered.width,
                row.begin() + placement.covered.x);
    packBits(row.data(), to, width);
}

void drawRow(const ConstView& from, const Placement& placement,
             const std::vector<std::uint8_t>& bare, const View& to, int y) {
    const int step = bytesPerPixel(from.type);
    const Rect& covered = placement.covered;
    const bool inside = y >= covered.y && y < covered.bottom();
    const std::uint8_t* row = inside ? from.row(y - covered.y + placement.sourceY) : nullptr;
    if (step == 0) {
        std::vector<std::uint8_t> bytes = bare;
        if (inside)
            placeBits(row, placement, from.width, bytes, to.row(y), to.width);
        else
            packBits(bytes.data(), to.row(y), to.width);
        return;
    }
    std::memcpy(to.row(y), bare.data(), bare.size());
    if (inside)
        std::memcpy(to.row(y) + std::ptrdiff_t{covered.x} * step,
                    row + std::ptrdiff_t{placement.sourceX} * step,
                    static_cast<std::size_t>(covered.width) * static_cast<std::size_t>(step));
}

Raster resizeCanvas(const Raster& source, const Arguments& arguments, Task& task) {
    const Size size{arguments.integer(0), arguments.integer(1)};
    const Rgba color = arguments.color(2);
    Raster result = Raster::uninitialized(source.type(), size.width, size.height);
    if (hasPalette(source.type())) result.setPalette(paletteWith(source, color));
    const auto bare = bareRow(result.palette(), source.type(), size.width, color);
    const Placement placement = place(source, size, {arguments.integer(3), arguments.integer(4)});
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            drawRow(from, placement, bare, to, y);
    });
    return result;
}

} // namespace

const Operation resizeCanvasOperation = {
    .name = "Geometry.ResizeCanvas",
    .undoName = "Resize Canvas",
    .arguments = arguments,
    .run = resizeCanvas,
    .border = -1,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Lays the picture on a canvas of the given size; a palette gets the color if it has "
            "room.",
};

} // namespace kvn::imaging
