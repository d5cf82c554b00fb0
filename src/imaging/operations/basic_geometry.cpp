#include "imaging/operations/basic_geometry.h"

#include "imaging/operations/families.h"

namespace kvn::imaging {

namespace {

constexpr Argument cropArguments[] = {
    {"left", ArgumentKind::Integer, 0, 65535, "px", "first column that is kept"},
    {"top", ArgumentKind::Integer, 0, 65535, "px", "first row that is kept"},
    {"width", ArgumentKind::Integer, 1, 65535, "px", "columns that are kept"},
    {"height", ArgumentKind::Integer, 1, 65535, "px", "rows that are kept"},
};

Raster crop(const Raster& source, const Arguments& arguments, Task&) {
    return source.cropped(
        {arguments.integer(0), arguments.integer(1), arguments.integer(2), arguments.integer(3)});
}

} // namespace

const Operation cropOperation = {
    .name = "Geometry.Crop",
    .undoName = "Crop",
    .arguments = cropArguments,
    .run = crop,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Keeps the part of the picture that lies in the rectangle; fails if nothing does.",
};

std::span<const Operation* const> basicGeometryOperations() {
    static constexpr const Operation* list[] = {
        &cropOperation,
        &flipOperation,
        &resizeCanvasOperation,
    };
    return list;
}

} // namespace kvn::imaging
