// The operations that move whole pixels: no colour of the picture changes.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.Crop(left, top, width, height): what of the rectangle lies in the picture. Keeps every
// type. Throws RuntimeError(invalidCall) if nothing does.
extern const Operation cropOperation;

// Geometry.Flip(direction): 0 exchanges left and right, 1 top and bottom. Keeps every type.
extern const Operation flipOperation;

// Geometry.ResizeCanvas(width, height, colour, offset x, offset y): a canvas of the colour, with
// the picture's top left corner at the offset; what lies beyond the canvas is cut off. Types
// without alpha take the colour as opaque. The type stays where it can show the colour or nothing
// of the canvas is bare, and palettes take the colour up if they have room; otherwise the result is
// 24-bit, or 32-bit where the picture has alpha. A canvas that is the picture changes nothing.
// Sides are 1 to 100,000; others are refused.
extern const Operation resizeCanvasOperation;

} // namespace kvn::imaging
