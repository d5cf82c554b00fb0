// Connected patches of marked pixels and their shapes.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/geometry.h"

namespace kvn::imaging {

// A stretch of marked pixels in a row, from x0 to x1 - 1.
struct MarkedRun {
    int y = 0, x0 = 0, x1 = 0;
    int patch = 0; // filled in by joinRuns
};

struct Patch {
    std::int64_t area = 0;
    Rect bounds;
    double middleX = 0, middleY = 0;
    // The longer half axis of the ellipse with the same moments against the shorter one.
    double elongation = 1;
    // The area against that of the ellipse in the bounds; 1 for a disc.
    double filling = 0;
};

// Runs, in reading order, that touch or have one pixel between them, sideways or up and down,
// belong to one patch.
std::vector<Patch> joinRuns(std::vector<MarkedRun>& runs);

} // namespace kvn::imaging
