// Row kernels of the reliefs.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

// The direction towards the light, a unit vector: x to the right, y up, z out of the picture.
struct Light {
    float x, y, z;
};

// Brightness of a surface whose height is given by three rows of grey, `reach` entries apart on
// both sides of the middle: shade[i] = 255 * (normal . light), 0 where it is turned away. `flat` is
// the z of the normal against height differences of 0..255.
void shadeRow(const std::uint8_t* above, const std::uint8_t* middle, const std::uint8_t* below,
              int reach, const Light& light, float flat, float* shade, std::size_t count);

} // namespace kvn::imaging
