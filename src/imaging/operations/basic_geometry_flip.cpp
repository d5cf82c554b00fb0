#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/basic_geometry.h"
#include "imaging/operations/basic_geometry_rows.h"

namespace kvn::imaging {

namespace {

enum Direction { horizontal, vertical };

constexpr Argument arguments[] = {
    {"direction", ArgumentKind::Integer, horizontal, vertical, "",
     "0 exchanges left and right, 1 top and bottom", /*optional*/ false, /*enforced*/ true},
};

// Bits are turned round as bytes: the last byte of a row may be filled in part only.
void reverseBits(const std::uint8_t* from, std::uint8_t* to, std::vector<std::uint8_t>& bytes) {
    const int width = static_cast<int>(bytes.size());
    expandBits(from, bytes.data(), width);
    std::ranges::reverse(bytes);
    packBits(bytes.data(), to, width);
}

void flipRows(const ConstView& from, const View& to, int direction, int y0, int y1) {
    const int step = bytesPerPixel(from.type);
    std::vector<std::uint8_t> bytes(step == 0 ? static_cast<std::size_t>(from.width) : 0);
    for (int y = y0; y < y1; ++y) {
        if (direction == vertical)
            std::memcpy(to.row(y), from.row(from.height - 1 - y), rowBytes(from.type, from.width));
        else if (step == 0)
            reverseBits(from.row(y), to.row(y), bytes);
        else
            reversePixels(from.row(y), to.row(y), from.width, step);
    }
}

Raster flip(const Raster& source, const Arguments& arguments, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    result.setPalette(source.palette());
    const ConstView from = source.view();
    const View to = result.edit();
    const int direction = arguments.integer(0);
    parallelRows(to.height, task, [&](int y0, int y1) { flipRows(from, to, direction, y0, y1); });
    return result;
}

} // namespace

const Operation flipOperation = {
    .name = "Geometry.Flip",
    .undoName = "Flip",
    .arguments = arguments,
    .run = flip,
    .border = -1,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Mirrors the picture.",
};

} // namespace kvn::imaging
