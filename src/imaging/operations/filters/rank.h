// Filters that choose one value of the square window around a pixel, channel by channel. Palette
// and 1-bit pictures become 24-bit, 32-bit with alpha; the other types stay. Edge pixels are
// repeated outwards. Sizes are clamped to 1..255 px, even ones count as the next odd one; 1 changes
// nothing. Alpha is filtered like a colour, or stays where it is ignored; it does not weigh.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.MedianCut(filter size, ignore alpha): the exact median. Up to 15 by comparing whole
// vectors with the bits of the result, above by sliding histograms (S. Perreault and P. Hebert,
// Median filtering in constant time, 2007).
extern const Operation medianCutOperation;

// Effects.Minimum, Effects.Maximum(filter size, ignore alpha): the least and the greatest value.
extern const Operation minimumOperation;
extern const Operation maximumOperation;

// Effects.Despeckle(): a value stays if at least two of its eight neighbours go as far, else it is
// brought to the second least or second greatest of them. Specks of one or two pixels go, while
// lines and corners, which have company, stay. Alpha stays, and clear pixels count in the colour of
// visible ones beside them.
extern const Operation despeckleOperation;

} // namespace kvn::imaging
