// Choosing few colours for a picture, and drawing it with them.
#pragma once

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// How a palette will be used. Colours that shall mix by error diffusion lie farther apart.
enum class PaletteUse { Nearest, Dithered };

// The best palette of at most `colors` entries (2..256) for the picture, dark to light. With
// `withAlpha` the alpha channel counts too and entries have alpha; otherwise entries are opaque.
// A picture with no more than `colors` different colours gives exactly those.
Palette choosePalette(const Raster& source, int colors, bool withAlpha, Task& task,
                      PaletteUse use = PaletteUse::Nearest);

// The picture drawn with the palette's colours as Indexed8 (Indexed8Alpha if the palette has
// transparency). With `dither`, error diffusion in serpentine order (R. W. Floyd, L. Steinberg
// 1976); otherwise the nearest colour each. Colours that stand in the palette are drawn exactly.
Raster mapToPalette(const Raster& source, const Palette& palette, bool dither, Task& task);

// The number of different colours (with alpha where the type has it); stops counting at
// `limit` + 1.
int countColors(const Raster& source, int limit);

} // namespace kvn::imaging
