// Changing the colours of a palette picture and leaving its indices alone. Pictures without a
// palette are refused. 1-bit pictures have two colours; palettes without alpha take every colour as
// opaque.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Palette.Entry(index 0..255, colour): sets one colour. A palette that is shorter grows up to it,
// with black.
extern const Operation paletteEntryOperation;

// Palette.LoadPreset(preset 1..4): all colours at once; see imaging/palette_presets.h.
extern const Operation loadPresetOperation;

} // namespace kvn::imaging
