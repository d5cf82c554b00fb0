// Wide lines: the area that a pen covers along an outline, as polygons to be filled non-zero.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "imaging/draw/path.h"
#include "imaging/geometry.h"

namespace kvn::imaging::draw {

enum class LineCap { Flat, Square, Round };
enum class LineJoin { Miter, Bevel, Round };

struct StrokeStyle {
    double width = 1; // in the pen's space
    LineCap cap = LineCap::Flat;
    LineJoin join = LineJoin::Miter;
    double miterLimit = 10; // miter length in widths, beyond which a corner is bevelled
    // Lengths of dashes and gaps in turn, in the pen's space; none for a whole line.
    std::vector<double> dashes;
};

// Gives the area as polygons that all turn the same way and may overlap. `outline` is in pixels.
// The pen is round in its own space, which `pen` maps to pixels (its translation is not used), so
// that it becomes an ellipse where the axes have different scales. Lines are cut near `visible`,
// so that what lies far outside costs nothing; dashes keep their phase. Dashes of less than half
// a pixel, and those beyond 200,000, become whole lines. A figure of a single point gives a dot
// where the caps make one. Nothing comes if the pen's space is flat.
using PolygonSink = std::function<void(std::span<const PointD>)>;
void strokeOutline(const Outline& outline, const StrokeStyle& style, const Affine& pen,
                   const Rect& visible, const PolygonSink& sink);

// The number of polygon points that this makes, at most and roughly.
double strokeCost(const Outline& outline, const StrokeStyle& style, const Affine& pen,
                  const Rect& visible);

} // namespace kvn::imaging::draw
