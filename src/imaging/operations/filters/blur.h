// Filters that mix a pixel with its surroundings, or push it away from them. Palette and 1-bit
// pictures become 24-bit, 32-bit with alpha; the other types stay. Edge pixels are repeated
// outwards. Colours count by their alpha, so that nothing shines in from invisible pixels.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Effects.Blur(amount 0..100 %, kernel 1..255 px, ignore alpha): each pixel goes by the amount
// towards the mean of the kernel x kernel window around it; even kernels count as the next odd
// one. Alpha is blurred too, unless it is ignored: then colours mix whatever their alpha and alpha
// stays. Amount 0 and kernel 1 change nothing.
extern const Operation blurOperation;

// Effects.GaussianBlur(amount 0..2500 %): the standard deviation is amount / 25 pixels, so 25 % is
// one pixel and 500 % twenty. Alpha is blurred too. 0 changes nothing.
extern const Operation gaussianBlurOperation;

// Effects.Soften(amount 0..100 %): each pixel goes by the amount towards the 5 x 5 binomial mean
// (1 4 6 4 1, both ways), which takes off noise and keeps shapes. Alpha is softened too.
extern const Operation softenOperation;

// Effects.Sharpen(amount 0..100 %, kernel 1..255 px, flag): v' = v + 3 * amount * (v - m), m the
// mean of the window, weighed by alpha; alpha stays. The flag is not looked at. Amount 0 and kernel
// 1 change nothing.
extern const Operation sharpenOperation;

// Effects.Vibration(amount 0..100 %): an exposure during which the picture swings sideways like
// sin t, by amount / 4 pixels rounded up. As the swing lingers at its ends, outlines double.
extern const Operation vibrationOperation;

} // namespace kvn::imaging
