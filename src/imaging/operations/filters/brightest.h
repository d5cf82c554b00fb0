// Effects.Maximum2: the brightest pixel of the square window around every pixel, taken whole.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Maximum2(filter size 1..255 px, ignore alpha): where Effects.Maximum takes the greatest
// value of each channel, and so makes colours that the picture does not have, this takes all
// channels of one pixel: the one with the greatest luma; of several, the one with more red, then
// green, then blue. Alpha comes along, and luma counts in proportion to it; where alpha is ignored
// it stays where it is and does not count. Grey pictures come out as from Effects.Maximum.
//
// Sizes are made odd; 1 changes nothing. Edge pixels are repeated outwards. Palette and 1-bit
// pictures become 24-bit, 32-bit with alpha; the other types stay. The time does not grow with the
// size but for its logarithm. (Down the columns: M. van Herk 1992, J. Gil and M. Werman 1993.)
extern const Operation maximum2Operation;

} // namespace kvn::imaging
