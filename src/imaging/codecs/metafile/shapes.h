// The figures that records name: everything that is not text or a bitmap. Coordinates are logical.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

void moveTo(Drawing& drawing, PointD to);
void lineTo(Drawing& drawing, PointD to);
// Both go on from the current position, and leave it at their end.
void lineStrip(Drawing& drawing, std::span<const PointD> points);
void curveStrip(Drawing& drawing, std::span<const PointD> points); // three points a curve
void polyline(Drawing& drawing, std::span<const PointD> points);
void polygon(Drawing& drawing, std::span<const PointD> points);
void bezier(Drawing& drawing, std::span<const PointD> points);
void polyPolyline(Drawing& drawing, const std::vector<std::vector<PointD>>& lines);
void polyPolygon(Drawing& drawing, const std::vector<std::vector<PointD>>& figures);
// `kinds`, one a point: 6 begins a figure, 2 a line, 4 a curve's points; 1 added closes.
void polyDraw(Drawing& drawing, std::span<const PointD> points,
              std::span<const std::uint8_t> kinds);
void closeFigure(Drawing& drawing);

struct Corners {
    PointD a, b;
};
void rectangle(Drawing& drawing, const Corners& box);
void roundRectangle(Drawing& drawing, const Corners& box, PointD corner);
void ellipse(Drawing& drawing, const Corners& box);
enum class ArcKind { Arc, ArcTo, Chord, Pie };
void arc(Drawing& drawing, ArcKind kind, const Corners& box, PointD from, PointD to);
// Degrees, anticlockwise; joined to the current position by a line.
void angleArc(Drawing& drawing, PointD center, double radius, double start, double sweep);

void fillRegion(Drawing& drawing, const Region& region, const Brush& brush, int rop2);
void frameRegion(Drawing& drawing, const Region& region, const Brush& brush, PointD width);
draw::Outline outlineOf(const Region& region, const Affine& map);
void setPixel(Drawing& drawing, PointD at, Rgba color);
// Slopes of colour over a rectangle or a triangle.
struct Vertex {
    PointD at;
    Rgba color;
};
void gradientRectangle(Drawing& drawing, const Vertex& a, const Vertex& b, bool upright);
void gradientTriangle(Drawing& drawing, const std::array<Vertex, 3>& corners);

} // namespace kvn::imaging::metafile
