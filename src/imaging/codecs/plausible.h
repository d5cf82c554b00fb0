// A cheap check against headers that announce far more than their file can hold.
#pragma once

#include <cstdint>

#include "imaging/image_type.h"

namespace kvn::imaging {

// To be called after ReadLimits::take. Throws RuntimeError(invalidPicture) for a picture that takes
// more than 64 MB of memory and whose data are less than a 4096th part of them: no scheme without
// whole-picture modelling packs that tightly, so nearly all of it would be missing. Smaller
// pictures pass: blank memory for them is cheap.
void requirePlausible(std::int64_t width, std::int64_t height, ImageType type,
                      std::uint64_t dataBytes);

} // namespace kvn::imaging
