// Exchanging, moving, parting and dropping the colour channels.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Channels.Swizzle(red, green, blue, alpha): each channel takes the values of the channel named:
// 0 red, 1 green, 2 blue, 3 alpha (255 where the picture has none); other numbers are refused. Grey
// pictures count as red = green = blue and become colour ones where a colour takes alpha. Alpha is
// added where it takes a colour. Palettes are mapped.
extern const Operation swizzleOperation;

// Channels.Shift(mask, x, y): moves the channels of the mask (1 red, 2 green, 4 blue) to the right
// and down by x and y pixels; what leaves on one side comes back on the other, so that a shift back
// restores every bit. Alpha stays. Palette pictures are promoted, grey ones become colour ones
// unless all three channels move.
extern const Operation shiftOperation;

// Channels.Split(): pages of 8-bit grey: red, green, blue, and alpha where the type has it.
extern const Operation splitOperation;

// Channels.Desaturate(): every colour becomes the grey of its luma (Rec. 601). The type and alpha
// stay; palettes are mapped.
extern const Operation desaturateOperation;

} // namespace kvn::imaging
