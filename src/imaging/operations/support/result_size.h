// Guards against results that are too large to be meant.
#pragma once

#include "imaging/geometry.h"

namespace kvn::imaging {

inline constexpr int longestSide = 100'000;

// The size as whole numbers. Throws RuntimeError(invalidCall) for a side that is below 1, above
// `longestSide` or no number; `source` names the operation.
Size checkedResultSize(double width, double height, const char* source);

} // namespace kvn::imaging
