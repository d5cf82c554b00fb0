// The operations that move whole pixels: no colour changes, every image type is kept.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

extern const Operation cropOperation;
extern const Operation flipOperation;
extern const Operation resizeCanvasOperation;

} // namespace kvn::imaging
