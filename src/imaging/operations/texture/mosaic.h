// Effects.Mosaic: tiles of one colour.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Mosaic(block width, block height in px, channel mask: 1 red, 2 green, 4 blue): the
// selected channels of every block get the mean of the block, weighed by alpha; alpha stays. Blocks
// start at the left and the top; those at the other edges are as small as what is left. Sides below
// 1 count as 1, bits above 4 are not looked at. Mask 0 and blocks of one pixel change nothing.
//
// Palette and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay, except that
// grey pictures become colour ones if the mask selects some channels only.
extern const Operation mosaicOperation;

} // namespace kvn::imaging
