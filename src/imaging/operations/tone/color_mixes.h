// Operations that look at the three colour channels of a pixel together. Alpha stays, palette
// pictures keep their type and have their palette mapped. L is the luma (Rec. 601) of a colour,
// rounded to a whole number.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Saturation(level 0..10): every channel moves away from the luma or towards it:
//   v' = L + level * (v - L), level in steps of 1/2048
// 0 gives grey, 1 changes nothing. Grey pictures stay as they are.
extern const Operation saturationOperation;

// Effects.Colorize(colour, hue, saturation, luminance): the parts of each pixel's colour that are
// switched on become those of the colour given, in the HSL model of imaging/rgba.h. With hue
// switched on, grey is coloured as far as its saturation, old or new, is above 0. All off changes
// nothing.
extern const Operation colorizeOperation;

// Effects.Duotone(colour): the picture printed in one ink: luma 0 is black, the colour stands where
// the luma is its own, 255 is white, straight lines in between. So the luma of every pixel stays.
extern const Operation duotoneOperation;

// Effects.Threshold(low, high 0..255, ignore alpha): pixels whose luma lies within low..high become
// white, all others black. With alpha not ignored, it is treated alike: 255 within, 0 outside.
extern const Operation thresholdOperation;

// Effects.Tint(amount -100..100): the balance between green (below 0) and magenta (above):
//   red, blue *= 1 + k,  green *= 1 - k * (0.299 + 0.114) / 0.587,  k = 0.35 * amount / 100
// The luma stays until a channel is full. Grey pictures become colour ones; 0 changes nothing.
extern const Operation tintOperation;

// Geometry.ReplaceColor(old, new, tolerance 0..100 %, opaque): pixels none of whose channels
// differs from the old colour by more than the tolerance in percent of 255 get the new one. If
// `opaque` is false they become clear too, and pictures without alpha get it. Grey pictures become
// colour ones unless the new colour is grey.
extern const Operation replaceColorOperation;

// Effects.NormalizedDifference(second, flag, scale, offset): channel by channel, with a of this
// picture and b of the second,
//   d = (a - b) / (a + b)  (0 where both are 0),  v' = 127.5 + 127.5 * (d * scale + offset)
// clamped. The second is brought to this picture's type and must have its size. The flag is not
// looked at. 1-bit and palette pictures are promoted.
extern const Operation normalizedDifferenceOperation;

} // namespace kvn::imaging
