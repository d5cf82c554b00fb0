#include "imaging/blit.h"

#include <cstring>

#include "basic/error.h"

namespace kvn::imaging {
namespace {

void copyBits(std::uint8_t* to, int toBit, const std::uint8_t* from, int fromBit, int count) {
    for (int i = 0; i < count; ++i, ++toBit, ++fromBit) {
        const auto mask = static_cast<std::uint8_t>(0x80 >> (toBit & 7));
        const bool set = from[fromBit >> 3] & (0x80 >> (fromBit & 7));
        std::uint8_t& byte = to[toBit >> 3];
        byte = static_cast<std::uint8_t>(set ? byte | mask : byte & ~mask);
    }
}

} // namespace

void copyPixels(Raster& target, const Raster& source, Point at) {
    if (target.type() != source.type())
        throw RuntimeError(errors::invalidCall, "The images have different types.", "copyPixels");
    const Rect part = Rect{at.x, at.y, source.width(), source.height()}.intersected(target.rect());
    if (part.isEmpty()) return;
    const ConstView from = source.view();
    const View to = target.edit();
    const int fromX = part.x - at.x, fromY = part.y - at.y;
    const int bytes = bytesPerPixel(target.type());
    for (int y = 0; y < part.height; ++y) {
        const std::uint8_t* in = from.row(fromY + y);
        std::uint8_t* out = to.row(part.y + y);
        if (bytes == 0)
            copyBits(out, part.x, in, fromX, part.width);
        else
            std::memcpy(out + part.x * bytes, in + fromX * bytes,
                        static_cast<std::size_t>(part.width) * static_cast<std::size_t>(bytes));
    }
}

} // namespace kvn::imaging
