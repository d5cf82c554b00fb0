// Operations that send each colour channel through one curve. They work on the stored values, keep
// the type (palette pictures get their palette mapped) and leave alpha alone. v is a channel value
// 0..255; results are rounded to nearest and clamped.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.BrightnessContrast(brightness -100..100, contrast -100..100, flag): contrast turns the
// line about the middle, brightness moves it:
//   v' = (v - 127.5) * k + 127.5 + 2.55 * brightness
//   k = 1 + contrast / 100 for contrast <= 0, 100 / (100 - contrast) above (100: a step at 127.5)
// 0, 0 changes nothing. The flag is not looked at.
extern const Operation brightnessContrastOperation;

// Effects.Gamma(gamma 0.01..100): v' = 255 * (v / 255)^(1 / gamma); above 1 brightens, 1 changes
// nothing. Values outside are clamped to the range.
extern const Operation gammaOperation;

// Effects.Intensify(amount -100..100): v' = v * (1 + amount / 100), and below 0 the way back,
// v' = v / (1 - amount / 100): 100 doubles, -100 halves, 0 changes nothing. Every channel keeps its
// share, so the hue stays until one is full.
extern const Operation intensifyOperation;

// Effects.Negative(colour or nothing): each channel moves towards its inverse in proportion to
// the colour's channel: v' = v + (255 - 2 v) * c / 255. Nothing inverts all channels; red inverts
// red alone. Grey pictures become colour ones unless the colour is grey.
extern const Operation negativeOperation;

// Effects.Posterize(): four levels a channel, 0, 85, 170, 255, each value to the nearest.
extern const Operation posterizeOperation;

// Effects.Solarize(threshold): values from the threshold on are inverted, v' = 255 - v. 0 means the
// middle, 128.
extern const Operation solarizeOperation;

} // namespace kvn::imaging
