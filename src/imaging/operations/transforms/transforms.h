// Distortions. The picture keeps its size; every pixel of the result is fetched from another place
// of the picture, sampled bicubically, and as the mean over its area where the picture shrinks.
// Beyond its edges the picture goes on as its mirror image, unless told otherwise. Colours are
// weighted by alpha; 1-bit and palette pictures become 24-bit, or 32-bit where the palette has
// alpha. Arguments that move nothing leave the picture as it is.
//
// Lengths are pixels of the picture, x to the right and y downwards. "Centre" is the picture's
// middle moved by (offsetX, offsetY). With r the distance from it and R the radius, u = r / R;
// the radial distortions change what lies within R only.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Transforms.Spin(R, angle, offsetX, offsetY): turns the middle clockwise by `angle` degrees, less
// and less towards R: angle * (1 - 3u^2 + 2u^3).
extern const Operation spinOperation;

// Transforms.SpinWave(R, angle, periods, offsetX, offsetY): turns rings to and fro: by
// angle * (1 - u) * sin(2 pi periods u) degrees.
extern const Operation spinWaveOperation;

// Transforms.Lens(R, offsetX, offsetY): a ball of glass: source u = 2/pi * asin(u). Magnifies by
// pi/2 in the middle and shrinks towards the rim.
extern const Operation lensOperation;

// Transforms.Pinch(R, amount, offsetX, offsetY): draws the picture towards the centre: source
// u = u^(2^(-amount / 20)). Negative amounts push it outwards. Amount is clamped to -100..100.
extern const Operation pinchOperation;

// Transforms.Ripple(damping, R, amount, periods, offsetX, offsetY): waves as of a stone in water:
// source r = r + amount / 2 * d(u) * sin(2 pi periods u), with d by the style: 0 full 1, 1 linear
// 1 - u, 2 square (1 - u)^2, 3 sine sin(pi u), 4 cosine cos(pi u / 2): the sine is strongest half
// way, the others in the middle.
extern const Operation rippleOperation;

// Transforms.Wow(style, R): 0 Stretch draws the rim of the circle outwards into rays (source
// r = min(r, R)); 1 Wow repeats the circle outwards in mirrored rings.
extern const Operation wowOperation;

// Transforms.Wave(style, maxOffset, periods): moves columns or rows along a wave with that many
// periods over the picture: 0, 2 move rows sideways, 1, 3 move columns up and down; 0, 1 sine,
// 2, 3 cosine.
extern const Operation waveOperation;

// Transforms.ZigZag(style, maxOffset, periods): the same along a line of straight pieces: 0 moves
// rows sideways, 1 moves columns up and down.
extern const Operation zigZagOperation;

// Transforms.Offset(style, offsetX, offsetY): moves the picture by whole pixels. What leaves on
// one side comes back on the other: style 1 both ways, 2 left and right, 3 top and bottom;
// otherwise what becomes free is clear, or black; a palette gets that colour if it has room, else
// its nearest one stands for it. Keeps every type.
extern const Operation offsetOperation;

// Transforms.LineSlice(style, offset1, offset2): style 0 moves even rows to the right by offset1
// and odd ones by offset2, 1 moves even columns down by offset1 and odd ones by offset2; what
// leaves comes back on the other side. Keeps every type.
extern const Operation lineSliceOperation;

// Transforms.Marble(amount, sizeX, sizeY): streaks as in marbled paper: every pixel comes from
// `amount` pixels away, in a direction that smooth gradient noise (K. Perlin 2002) turns by up to
// a whole turn either way. Sizes: a vein in percent of the picture's width and height.
extern const Operation marbleOperation;

// Transforms.Perlin(amount, sizeX, sizeY): moves pixels by up to about `amount` along two fields
// of smooth gradient noise. Sizes as above.
extern const Operation perlinOperation;

// Transforms.Random(offset): every pixel is one of those at most `offset` away in x and y, taken by
// a hash of its place; the picture looks as through frosted glass. Samples the nearest pixel.
extern const Operation randomOperation;

// Transforms.Custom(): a kaleidoscope of six mirrored pairs about the centre. They show the sector
// of 30 degrees, of the twelve from straight up on, whose colours vary most.
extern const Operation customOperation;

// Geometry.Warp(x1, y1, x2, y2): pushes the picture along the line: what is at its start comes to
// its end, and what lies around follows, less and less up to 2.5 times the line's length away and
// up to the picture's edges, which stay where they are. With (dx, dy) from the end of the line,
// L its length and (rx, ry) from its end to the edges on the side of the pixel, a place moves by
// (1 - q)^2 of the line, q^2 = (d / 2.5 L)^4 + (dx / rx)^4 + (dy / ry)^4.
extern const Operation warpOperation;

// Transforms.BumpMap(amount, bump): lights the picture as if the bump picture, stretched to its
// size, were a relief: bright is high, the light comes from the upper left. Amount: steepness in
// tenths, clamped to -100..100. Flat parts keep their colours; alpha stays.
extern const Operation bumpMapOperation;

} // namespace kvn::imaging
