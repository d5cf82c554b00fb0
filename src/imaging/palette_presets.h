// The built-in sets of colours.
#pragma once

#include "imaging/palette.h"

namespace kvn::imaging {

inline constexpr int palettePresetCount = 4;

// By number:
//   1  the colours of a 256-colour display: twenty fixed ones, ten at either end, and between them
//      the web colours, red fastest, and a ramp of twenty greys
//   2  the 216 web-safe colours: 0, 51, 102, 153, 204 and 255 of each channel, blue fastest
//   3  the sixteen of colour text displays, the dark half first
//   4  black and white
// Throws RuntimeError(invalidCall) for any other number.
Palette presetPalette(int preset);

} // namespace kvn::imaging
