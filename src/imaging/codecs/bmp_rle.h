// The run lengths of BMP files: 8 and 4 bits a pixel, and 24 as OS/2 has them.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/metadata.h"
#include "imaging/raster.h"

namespace kvn::imaging {

// Unpacks into `target` (one byte a pixel for 4 and 8 bits, Rgb24 for 24), which must be filled
// already: pixels that the runs skip keep what is there. Runs past the end of a line or of the
// picture are cut. Returns how many rows, in the file's order, were begun; fewer than the height
// if the data end early, and all of them after an end mark.
int unpackBmpRuns(std::span<const std::uint8_t> data, int bits, bool topDown, View target);

// One line of bytes as runs, with its end mark.
void packBmpLine(std::span<const std::uint8_t> line, Bytes& out);

} // namespace kvn::imaging
