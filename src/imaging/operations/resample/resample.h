// Operations that compute a picture anew on another grid of pixels. Pixel centres lie at whole
// numbers; rows count downwards. Where colours are mixed they are weighted by their alpha (a
// clear pixel lends no colour), and 1-bit and palette pictures become 24-bit, or 32-bit where the
// palette has alpha. Results with a side above 100,000 are refused.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.Resize(width, height, method): width or height 0 keeps the aspect ratio. The kernels
// are stretched when reducing, so that nothing aliases; the last pixel repeats beyond the edges.
// A picture whose size stays is returned untouched, and an axis whose length stays is left alone.
//    0 Bi-Linear  straight lines between pixels; reducing: their mean over the result pixel
//    1 Bi-Cubic   cubic convolution, a = -0.75
//    2 Simple     the nearest pixel; keeps every type, palette and bit
//    3 Decimate   reducing: the mean of the covered area; enlarging: as 21
//    4 Default    sinc windowed by sinc, two lobes
//    5 Box        the mean of the pixels whose centre lies in the result pixel
//    6, 8, 14, 19 Triangle
//    7 Hamming    sinc of three lobes under a Hamming window; 20 Hanning: under a Hann window
//    9 Gaussian   standard deviation half a pixel, cut at two pixels
//   10 Bell       quadratic B-spline; 11 B-Spline: the cubic one
//   12 Cubic1     cubic convolution, a = -1
//   13 Cubic2     the six-point cubic of fourth order of Keys (1981)
//   15 Lanczos3   sinc windowed by sinc, three lobes; 17 Sinc: four lobes, cut
//   16 Mitchell   cubic, B = C = 1/3; 18 Hermite: B = C = 0; 21 Catrom: B = 0, C = 1/2
// The results are within 1 of the kernel computed in real numbers.
extern const Operation resizeOperation;

// Geometry.Rotate(angle, colour, flag): clockwise by `angle` degrees about the centre. The canvas
// grows to hold the whole picture; what it does not cover is the colour, and the picture's edges
// are antialiased. Multiples of 90 degrees move whole pixels and keep every type. Other angles
// sample bicubically; pictures without alpha take the colour as opaque, and grey ones become
// colour if the colour is not grey. The flag is not looked at.
extern const Operation rotateOperation;

// Geometry.Skew(direction, offset, colour, fast): direction 0 moves the top row `offset` pixels to
// the right against the bottom row, 1 the left column `offset` pixels down against the right one;
// negative offsets the other way. The canvas grows by the offset. Fast moves rows or columns by
// whole pixels, otherwise they are sampled bicubically along their direction. Colour as above.
extern const Operation skewOperation;

// Geometry.AutoCrop(tolerance, colour): cuts off the rows and columns at the border in which no
// channel differs from the colour by more than tolerance percent of 255. Nothing: the colour that
// most of the four corners have. Alpha counts as a channel; clear pixels are equal whatever their
// colour. A picture of that colour alone is left as it is. Keeps the type.
extern const Operation autoCropOperation;

// Geometry.Perspective(p1, p2, p3, p4, flag): draws the picture so that its corners bottom left,
// top left, top right and bottom right come to lie on the four points, in picture coordinates.
// The canvas keeps its size; what is not covered is clear, or black where the type has no alpha.
// Samples bicubically with antialiased edges. Points of which three lie on a line are refused.
// The flag is not looked at.
extern const Operation perspectiveOperation;

// Geometry.PerspectiveMap(p1..p4, q1..q4, flag): the same for any quadrilateral: what lies at p1 to
// p4 comes to lie at q1 to q4, and the rest of the picture with it.
extern const Operation perspectiveMapOperation;

} // namespace kvn::imaging
