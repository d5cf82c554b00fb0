// Moving the colour channels, alpha, or hue, saturation and luminance, by fixed amounts or by
// shares. All zero changes no bit. Palette pictures keep their type and have their palette mapped;
// grey pictures become colour ones where the channels part. Where alpha falls below 255, a picture
// without alpha gets it.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Channels.AdjustLiteral(red, green, blue, alpha; -255..255): v' = v + offset, clamped to 0..255.
extern const Operation adjustLiteralOperation;

// Channels.AdjustPercent(red, green, blue, alpha; -100..100 %): v' = v * (1 + share / 100), clamped
// to 0..255. A share of -100 empties the channel, 0 leaves it.
extern const Operation adjustPercentOperation;

// Channels.AdjustHSLLiteral(hue, saturation, luminance; -255..255): adds the offsets in the HSL
// model scaled to 0..255 (imaging/rgba.h). Hue wraps, a full turn being 255; saturation and
// luminance are clamped. Grey stays grey. Alpha stays.
extern const Operation adjustHslLiteralOperation;

// Channels.AdjustHSLPercent(hue, saturation, luminance; -100..100 %): saturation and luminance
// grow by shares of themselves; hue, which has no size, turns by that share of the circle. Grey
// stays grey. Alpha stays.
extern const Operation adjustHslPercentOperation;

} // namespace kvn::imaging
