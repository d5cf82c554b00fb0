// Effects that redo a picture by hand: frames and shadows, cracks, strokes and dots, veils and
// motion. Lengths are pixels, angles degrees. 1-bit and palette pictures become 24-bit, 32-bit with
// alpha; the other types stay unless told otherwise. No colour of a clear pixel is seen: they count
// by their alpha or as visible ones beside them. Arguments out of range are clamped. Random numbers
// are hashes of places, so the same picture always comes out the same.
//
// What has no length of its own among its arguments is measured by the picture, so that it looks
// the same on a small copy: U is a thousandth of the shorter side.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.BevelEdge(size, left, top, right, bottom, smoothness): the outermost `size` pixels
// become four slopes that meet at the corners. With f the percentage of a slope, v' = v + (f / 100
// - 1) * w * (3 v + 255) / 4: three quarters of the light come back in the picture's own colour,
// one as gloss, so dark pictures show their bevel too. w = 1 - t^(250 / smoothness) over the depth
// t: smoothness 0 is a flat slope with a sharp inner edge, 100 bends into the picture, more hugs
// the rim; the corners' mitres grow softer with it. Size is clamped to half the shorter side,
// percentages and smoothness to 0..500. Alpha stays. Size 0 and four times 100 change nothing.
extern const Operation bevelEdgeOperation;

// Geometry.Crackle(depth, mode): the picture on a ground that has broken into plates, lit from the
// upper left. Mode 0 glaze: hairlines with finer ones within; 1 old paint: small plates that curl
// up at the rims; 2 dry earth: wide gaps between rounded plates; 3 broken glass: plates slide and
// differ in brightness, with bright edges; 4 gold: the seams are filled. Depth 0..100 makes cracks
// wider and darker, rims steeper and plates slide farther. Grey pictures stay grey. Alpha stays.
// Depth 0 changes nothing.
extern const Operation crackleOperation;

// Geometry.DropShadow(offset x, offset y, colour, blur level, increase canvas): the picture over
// its own shadow, which is its alpha moved by the offsets, blurred with a standard deviation of
// level / 25.5 pixels (0..2550) and painted in the colour, whose alpha is the shadow's strength;
// nothing is black at 160. The canvas grows to hold all that can be seen of the shadow, or stays;
// an opaque picture has to make room for its shadow then and loses the rim on that side. Results
// have alpha: grey with alpha for a grey picture and shadow, else 32-bit. A colour of alpha 0
// changes nothing.
extern const Operation dropShadowOperation;

// Geometry.EmbossShape(depth, angle, softness, shadow, highlight): the visible shape, or in an
// opaque picture what is bright (Rec. 601 luma), is raised `depth` pixels out of the picture; its
// edges are rounded by a Gaussian blur of softness / 40 pixels. A lamp stands at the angle, 0 to
// the right and 90 above, 45 degrees high. What is turned towards it takes the highlight colour,
// what is turned away the shadow colour, each as strongly as the ground is brighter or darker than
// flat ground and as the colour's alpha says; flat ground keeps the picture. Negative depths are
// sunk. Depth -100..100, softness 0..1000. Grey pictures take the colours' luma. Alpha stays. Depth
// 0 and two clear colours change nothing.
extern const Operation embossShapeOperation;

// Geometry.Gauzy(blur, sharpen, clarity, mode): a portrait through gauze. The veil is the picture
// blurred by blur * 0.3 U, below it the picture sharpened by an unsharp mask of strength
// sharpen / 40; the result is the veil and 20 % to 75 % of the sharp picture, as clarity grows.
// Mode 0 desaturated: the veil is grey; 1 full colour; 2 high contrast: shadows are deeper and
// lights brighter, by the curve 3 t^2 - 2 t^3; 3 max: veil and picture shine through each other
// like two slides on one screen, s + b - s b, so that lights glow and spread; 4 min: like two
// slides in one projector, s b, so that shadows do. Other modes are taken as 1. Percentages
// 0..100. Alpha stays, and colours count by it.
extern const Operation gauzyOperation;

// Geometry.MotionBlur(distance, steps, angle, style): the exposure of a moving camera. 0 linear:
// the mean over `distance` pixels at the angle, 0 to the right, 90 upwards. 1 radial: the picture
// turns about its middle; 2 zoom: it comes closer; both so that the rim of the largest circle in
// it moves by the distance. The motion is gone through `steps` times (1..10), each of which
// softens the ends of the streaks. Distance 0..1000; edge pixels are repeated outwards; colours
// count by their alpha. Distance 0 changes nothing.
extern const Operation motionBlurOperation;

// Geometry.Scribble(line darkness, filter, filter first): the picture scribbled over with a pen:
// wavering outlines, drawn twice, where it is darker than around, and up to three layers of strokes
// to and fro where it is dark. Lines are about 2 U wide, their ink is the square root of the line
// darkness, and the picture behind them pales with it. The filter makes the picture simpler: 0
// blurred (Gaussian, 4 U before, 1.3 U after), 1 filtered (median, 5 to 9 pixels before, 3 to 5
// after), 2 posterized (a drawing in five steps of its luma, which keeps its hues), 3 despeckled;
// before it is drawn, or the whole drawing afterwards. Alpha counts as in the filter.
extern const Operation scribbleOperation;

// Geometry.Stipple(size, filter, filter first): the picture in dots, size * 0.3 U apart, but at
// least 4 pixels, 6 for beads. Each takes the colour at its middle. 0 arithmetic mean: dots of
// paint that differ a little in colour; 1 minimum: dark dots on light ground; 2 maximum: light dots
// on dark ground; 3 geometric mean: beads of glass, through which the picture shows; 4 Yp mean:
// beads of coloured glass. The filter of that name runs over the picture before (window of half the
// distance), or over the dots afterwards (a quarter). Alpha stays, and colours count by it in the
// filter. Size 0 changes nothing.
extern const Operation stippleOperation;

} // namespace kvn::imaging
