#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/basic_geometry.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/result_size.h"

namespace kvn::imaging {

namespace {

constexpr Argument arguments[] = {
    {"width", ArgumentKind::Integer, 1, 65535, "px", "columns of the new canvas"},
    {"height", ArgumentKind::Integer, 1, 65535, "px", "rows of the new canvas"},
    {"color", ArgumentKind::Color, 0, 255, "", "what the picture does not cover"},
    {"offsetX", ArgumentKind::Integer, -65535, 65535, "px", "column of the picture's left edge"},
    {"offsetY", ArgumentKind::Integer, -65535, 65535, "px", "row of the picture's top edge"},
};

// The picture in a type that has the colour: the palette takes it up if it has room, otherwise the
// picture becomes 24-bit or 32-bit, as a grey one does for a colour that is no grey.
Raster ableToShow(const Raster& source, Rgba color, Task& task) {
    if (!hasPalette(source.type()))
        return color.r == color.g && color.g == color.b ? source : promotedToColor(source, task);
    if (!hasAlpha(source.type())) color.a = 255;
    Raster result = source;
    Palette& palette = result.paletteForEdit();
    palette.place(color, source.type() == ImageType::Bit1 ? 2 : Palette::maxSize);
    return palette.find(color) < 0 ? promoted(source, task) : result;
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

Raster resizeCanvas(const Raster& picture, const Arguments& arguments, Task& task) {
    const Size size =
        checkedResultSize(arguments.integer(0), arguments.integer(1), "Geometry.ResizeCanvas");
    const Rgba color = arguments.color(2);
    const Placement placement = place(picture, size, {arguments.integer(3), arguments.integer(4)});
    if (placement.covered == picture.rect() && size == picture.size()) return picture;
    const bool bares = placement.covered != Rect{0, 0, size.width, size.height};
    const Raster source = bares ? ableToShow(picture, color, task) : picture;
    Raster result = Raster::uninitialized(source.type(), size.width, size.height);
    result.setPalette(source.palette());
    const auto bare = bareRow(result.palette(), source.type(), size.width, color);
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
    .types = TypeRule::Fixed,
    .note =
        "Lays the picture on a canvas of the given size; 24-bit or 32-bit where the type cannot "
        "show the color.",
};

} // namespace kvn::imaging
