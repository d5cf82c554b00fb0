// Which image pixel stands at which place of the scaled picture: the one rule for painting and
// for the mouse.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kvn::imaging {

// The longest side a scaled picture can have, so that sums of two places stay in an int.
inline constexpr double longestScaled = 1 << 30;

// The pixels of the screen that `length` image pixels take; at least one.
inline int scaledLength(int length, double zoom) {
    return static_cast<int>(std::clamp(std::floor(length * zoom + 0.5), 1.0, longestScaled));
}

// The image pixel under the middle of pixel `place` of the scaled picture.
inline std::int64_t sourceIndex(std::int64_t place, double zoom) {
    return static_cast<std::int64_t>(std::floor((static_cast<double>(place) + 0.5) / zoom));
}

} // namespace kvn::imaging
