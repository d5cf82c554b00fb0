// Palettes for error diffusion: few entries, seen from so far away that they mix.
#pragma once

#include <cstddef>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// With more entries the gaps are too small for a mixture to be seen as one.
inline constexpr std::size_t mostSpreadEntries = 32;

// Means of clusters lie within the cloud of a picture's colours, and no mixture of them gives the
// outer ones. This moves the entries so that the dithered picture, slightly blurred, comes nearest
// to the blurred picture without getting much coarser: draws a part of the picture, finds the
// entries that suit the pattern best by least squares, and again (after J. Puzicha et al., "On
// spatial quantization of color images", 2000). At most mostSpreadEntries colours.
std::vector<Rgba> spreadForDithering(const Raster& source, std::vector<Rgba> colors, bool withAlpha,
                                     Task& task);

} // namespace kvn::imaging
