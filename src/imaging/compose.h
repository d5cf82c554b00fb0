// Drawing one picture into another.
#pragma once

#include <optional>

#include "imaging/alpha_merge.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

struct DrawOptions {
    std::optional<Rgba> transparent; // source pixels of this colour (alpha not looked at) stay out
    double opacity = 1.0;            // 0..1, clamped; multiplies the source's alpha
    // How the target's alpha meets the source's. Nothing: by the rule of "over".
    std::optional<AlphaMerge> merge;
};

// Draws `source` over `target` with its top left corner at `at` (Porter and Duff 1984, "over",
// straight alpha, rounded to nearest). The target keeps its type and size: where it has no alpha
// the result is opaque, grey targets take the luma, palette targets the nearest of their own
// colours. An opaque source pixel replaces what is there exactly. Pixels outside are left out.
void drawOver(Raster& target, const Raster& source, Point at, const DrawOptions& options,
              Task& task);

} // namespace kvn::imaging
