// Pictures made from nothing. They take the place of the picture at hand, of which only the place
// matters. Sides are 1 to 100,000 pixels; others are refused.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.Gradient(width, height, kind, start, end, from, to, form, scale, repetition): a slope
// from the start colour at `from` to the end colour at `to`, in a picture whose type is `kind`
// (0..6, clamped). t is the share of the way:
//   form 0 linear    along the line through both points      3 reflected  the same to both sides
//        1 radial    by the distance from the first point     4 square     the same in a square
//        2 angular   once around the first point, clockwise from the direction to the second
// `scale` makes the way so many times as long (at least 0.001). Beyond its ends, repetition 0 holds
// the end's colour, 1 begins anew, 2 goes back and forth. Points that coincide leave the end colour
// alone. Colours are mixed as stored, in proportion to their alpha; the rounding is
// spread over neighbouring pixels, so that there are no steps to be seen, and exact colours stay
// exact. (Pattern: the two-dimensional golden ratio sequence of M. Roberts, 2018.)
extern const Operation gradientOperation;

// Geometry.HugoNoise(width, height, octaves 1..12, smoothness 0..100, size 0..100): value noise
// in octaves after H. Elias (1998): random values in a grid, and a cubic B-spline over them, which
// shows nothing of the grid. Cells of the first octave are `size` percent of the longer side wide,
// every further octave's half as much, down to a pixel, and weaker by a factor from 0.9 (smoothness
// 0) to 0.2 (100).
//
// Geometry.PerlinNoise(width, height, size 0..100): the sum of all octaves of gradient noise (K.
// Perlin, Improving Noise, 2002) of cells from `size` percent of the longer side down to three
// pixels, each half as strong as the one before.
//
// Both make grey pictures that reach from nearly black to nearly white, the same with every call.
// Numbers are clamped to their ranges.
extern const Operation hugoNoiseOperation;
extern const Operation perlinNoiseOperation;

} // namespace kvn::imaging
