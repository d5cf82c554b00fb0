// Distortions about a centre that depend on the distance alone.
#pragma once

#include <functional>
#include <vector>

#include "imaging/operations/support/warp.h"

namespace kvn::imaging {

// Where a pixel at distance r (pixels) comes from: at distance `distance`, turned back by `angle`
// (radians, clockwise in the result).
struct RadialPlace {
    double distance;
    double angle;
};
using RadialRule = std::function<RadialPlace(double r)>;

struct RadialDistortion {
    double centreX, centreY; // from the picture's middle
    double radius;           // nothing changes beyond it
    bool everywhere = false; // the rule holds beyond the radius too
};

// The picture through the rule. A radius below 1 leaves it as it is.
Raster radiallyDistorted(const Raster& source, const RadialDistortion& distortion, Task& task,
                         const RadialRule& rule);

} // namespace kvn::imaging
