// The design unit of every window: fifteen twips are one device-independent pixel.
#pragma once

#include <cmath>

namespace kvn {

inline constexpr int twipsPerPixel = 15;

inline int pixelsFromTwips(double twips) {
    return static_cast<int>(std::nearbyint(twips / twipsPerPixel));
}
inline double twipsFromPixels(double pixels) {
    return pixels * twipsPerPixel;
}

} // namespace kvn
