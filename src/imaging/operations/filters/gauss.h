// Gaussian blur of a picture, row by row, as floats for whoever goes on computing with it. The edge
// pixels are repeated outwards. It knows nothing of operations and their arguments.
//
// Below sigma 2.6 (3 where colours count by alpha) the kernel itself, cut at 3.5 (4.2) sigma.
// Above, the picture is brought to a coarse grid of about sigma / 2 pixels by a cubic B-spline,
// blurred there and brought back by a cubic B-spline. The blur in between has the spectrum that the
// splines leave of the kernel, so the sum differs from it by what aliases only, and the time does
// not grow with sigma. (B-splines: M. Unser, Splines: a perfect fit for signal and image
// processing, 1999.)
#pragma once

#include <functional>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Levels: errors up to a tenth of a level, for results that are rounded next. Fine: errors of
// floats, for differences that are going to be multiplied.
enum class Precision { Levels, Fine };

// Takes row y of the blurred picture: a float of 0..255 a channel. Called from several threads.
using BlurredRow = std::function<void(int y, const float* row)>;

// `sigma` above 0, in pixels. `weighted`, for types with alpha: colours count by their alpha, and
// the rows come multiplied by alpha / 255. Not for palette types. The view is a
// raster's, behind whose rows whole vectors may be read.
void gaussRows(const ConstView& view, double sigma, bool weighted, Task& task,
               const BlurredRow& finish, Precision precision = Precision::Levels);

// Takes row y in 1/128 of a level.
using FixedRow = std::function<void(int y, const std::uint16_t* row)>;
// The quickest form, with the errors of Precision::Levels and without weighting: for small sigmas
// only. False, and nothing done, if `sigma` is none.
bool gaussRowsFixed(const ConstView& view, double sigma, Task& task, const FixedRow& finish);

// The same with a window of one's own: an odd number of symmetric weights with sum 1 downwards,
// and along the rows.
void windowRows(const ConstView& view, const std::vector<float>& down,
                const std::vector<float>& along, bool weighted, Task& task,
                const BlurredRow& finish, Precision precision = Precision::Levels);

// A row of colours multiplied by alpha / 255 made straight. channels: 2 or 4, alpha last. Where
// nothing is visible around, all of the pixel stays.
void straightRow(const float* row, const std::uint8_t* pixels, float* out, int width, int channels);

} // namespace kvn::imaging
