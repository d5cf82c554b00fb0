#include "imaging/codecs/plausible.h"

#include "basic/error.h"

namespace kvn::imaging {

void requirePlausible(std::int64_t width, std::int64_t height, ImageType type,
                      std::uint64_t dataBytes) {
    constexpr double cheap = 64 << 20;
    constexpr double tightest = 4096;
    const double pixels =
        static_cast<double>(width) * static_cast<double>(height) * bitsPerPixel(type) / 8;
    if (pixels > cheap && pixels > tightest * static_cast<double>(dataBytes))
        throw RuntimeError(errors::invalidPicture,
                           "The file is far too short for the picture that it announces.",
                           "Import");
}

} // namespace kvn::imaging
