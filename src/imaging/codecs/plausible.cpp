#include "imaging/codecs/plausible.h"

#include "basic/error.h"
#include "imaging/pixel_buffer.h"

namespace kvn::imaging {

void requirePlausible(std::int64_t width, std::int64_t height, ImageType type,
                      std::uint64_t dataBytes) {
    constexpr double cheap = 64 << 20;
    constexpr double tightest = 4096;
    // The sides have passed the limits, so that they are no larger than an int.
    const double pixels =
        static_cast<double>(PixelBuffer::strideFor(rowBytes(type, static_cast<int>(width)))) *
        static_cast<double>(height);
    if (pixels > cheap && pixels > tightest * static_cast<double>(dataBytes))
        throw RuntimeError(errors::invalidPicture,
                           "The file is far too short for the picture that it announces.",
                           "Import");
}

} // namespace kvn::imaging
