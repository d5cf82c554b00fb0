// Tone curves that come from the picture's own histogram. Invisible pixels (alpha 0) don't count;
// alpha stays. Palette pictures keep their type and have their palette mapped; grey pictures become
// colour ones only where the mask leaves a channel out. Limits are clamped to 0..255, and exchanged
// if they stand the wrong way round.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.AutoBrightness(low, high 0..255, even distribution): one curve for all channels, from the
// lumas within low..high; what lies outside is taken for noise and glare. Their range, less half a
// percent of the pixels at each end, is spread over 0..255 by a straight line. With even
// distribution the curve is a quarter that line and three quarters the running sum of the lumas,
// which evens them out without tearing rare tones apart. A picture with less than two lumas there
// stays as it is.
extern const Operation autoBrightnessOperation;

// Geometry.HistogramStretch(low, high 0..255, mask): the range of each channel of the mask (1 red,
// 2 green, 4 blue), less a thousandth of the pixels at each end, is spread over low..high. A
// channel of one value stays as it is.
extern const Operation histogramStretchOperation;

// Geometry.HistogramEqualize(low, high 0..255, mask): the values of each channel of the mask that
// lie within low..high are distributed evenly over low..high (the running sum of the histogram; see
// R. Gonzalez, R. Woods, Digital Image Processing, 3.3); others stay.
extern const Operation histogramEqualizeOperation;

} // namespace kvn::imaging
