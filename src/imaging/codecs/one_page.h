// What the codecs of formats with one picture a file have in common.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/picture.h"

namespace kvn::imaging {

// Throws RuntimeError(invalidCall) unless there is just one.
const Page& onlyPage(std::span<const Page> pages, std::string_view format);

// Throws RuntimeError(invalidCall) for a side that the format's fields cannot hold.
void requireSides(const Raster& raster, int longest, std::string_view format);

// The first `rows` rows in the file's order are there; makes the others black and says so.
void blackenMissingRows(const View& view, const Palette& palette, int rows, bool topDown,
                        std::string_view format, std::vector<std::string>& warnings);

} // namespace kvn::imaging
