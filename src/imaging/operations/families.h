// Each family of operations gives its descriptions through one function; the table of all is
// made of these. A new operation is one file beside its family and one line in its list.
#pragma once

#include <span>

#include "imaging/operation.h"

namespace kvn::imaging {

std::span<const Operation* const> artOperations();           // shadows, cracks, strokes, dots
std::span<const Operation* const> basicGeometryOperations(); // Crop, Flip, ResizeCanvas
std::span<const Operation* const> channelOperations();       // channels and alpha
std::span<const Operation* const> cipherOperations();        // under a key and back
std::span<const Operation* const> filterOperations();        // blurs, means, edges, reliefs
std::span<const Operation* const> generateOperations();      // pictures from nothing
std::span<const Operation* const> paletteOperations();       // few colours
std::span<const Operation* const> resampleOperations();      // other sizes, angles, outlines
std::span<const Operation* const> retouchOperations();       // flaws of photographs
std::span<const Operation* const> textureOperations();       // tiles, grain
std::span<const Operation* const> toneOperations();          // curves of the colour channels
std::span<const Operation* const> transformOperations();     // distortions

} // namespace kvn::imaging
