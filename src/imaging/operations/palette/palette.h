// Pictures drawn with few colours. The result has a palette: 8-bit, or 8-bit with alpha where the
// palette has transparency.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.Dither(colours 2..256, dither, flag): the best colours for the picture, ordered from
// dark to light, and the picture drawn with them, by error diffusion or by the nearest colour each.
// A picture that has no more colours keeps exactly those. Transparent pictures get colours with
// alpha. The flag is not looked at. See imaging/quantize.h for the methods.
extern const Operation ditherOperation;

// Geometry.ApplyPalette(palette, dither): the picture drawn with the colours of a palette, by
// error diffusion or by the nearest colour each. Colours that stand in the palette are kept
// exactly. An empty palette is refused. A palette without transparency makes the result opaque.
extern const Operation applyPaletteOperation;

} // namespace kvn::imaging
