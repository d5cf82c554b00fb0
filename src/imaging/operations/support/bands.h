// Neighbourhood operations: cuts the picture into bands, gives each its surroundings, and keeps
// the alpha rule. A kernel sees one band and knows nothing of threads, progress or alpha.
#pragma once

#include <functional>
#include <opencv2/core.hpp>

#include "imaging/operation.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// `in` has the rows of the band, and `border` more above and below; fewer only at the edges of the
// picture, where the kernel repeats the last row. Row `top` of `in` is row 0 of `out`. Both have
// one type: 8-bit with 1 to 4 channels, or, where colours must be weighted by their alpha,
// 32-bit float with 2 or 4 channels, the colours multiplied by alpha/255 (all 0..255).
using BandKernel = std::function<void(const cv::Mat& in, int top, cv::Mat& out)>;

// A kernel that filters a whole matrix into another of the same size and type.
BandKernel wholeBand(std::function<void(const cv::Mat& in, cv::Mat& out)> filter);

// Alpha rules: Weighted, ColorOnly, EveryChannel. Palette pictures are promoted first. An opaque
// picture gives the same result under each rule, in 8 bits.
Raster filterBands(const Raster& source, int border, AlphaRule rule, Task& task,
                   const BandKernel& kernel);

// The pixels of a raster as a matrix, shared. Not for 1-bit pictures.
cv::Mat matOf(const ConstView& view); // to be read only
cv::Mat matOf(const View& view);

} // namespace kvn::imaging
