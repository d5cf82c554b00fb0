// Colour channels side by side instead of pixel by pixel: the form in which plain loops over a
// block of pixels become vector code. Knows nothing of what the loops compute.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {

// A block of pixels, a channel after the other. Grey pictures have r = g = b, pictures without
// alpha 255. Loops may always run over the whole block.
struct ColorPlanes {
    static constexpr int size = 512;
    alignas(64) std::uint8_t r[size];
    alignas(64) std::uint8_t g[size];
    alignas(64) std::uint8_t b[size];
    alignas(64) std::uint8_t a[size];
};

// Reads and writes up to ColorPlanes::size pixels. Not for palette types. Grey takes the red plane;
// alpha is left out where the type has none.
void splitPlanes(ImageType type, const std::uint8_t* pixels, int count, ColorPlanes& planes);
void mergePlanes(const ColorPlanes& planes, int count, ImageType type, std::uint8_t* pixels);

// Has the bytes to be read and written next brought near while a kernel works on a block, which has
// no memory to wait for. They may lie beyond the end of a picture.
void fetchAhead(const std::uint8_t* in, std::size_t inBytes, const std::uint8_t* out,
                std::size_t outBytes);

using PlaneKernel = std::function<void(ColorPlanes& planes)>;

// The same as mapRows for kernels that may change all four channels of a block in place.
Raster mapPlanes(const Raster& source, ResultForm form, Task& task, const PlaneKernel& kernel);

} // namespace kvn::imaging
