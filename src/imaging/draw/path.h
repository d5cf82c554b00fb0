// Outlines of lines and curves, and the polygons that stand for them.
#pragma once

#include <span>
#include <vector>

#include "imaging/draw/affine.h"

namespace kvn::imaging::draw {

struct Polyline {
    std::vector<PointD> points;
    bool closed = false;
};
using Outline = std::vector<Polyline>;

// The smallest box around what was put in; empty until something is.
struct Box {
    double left = 1e300, top = 1e300, right = -1e300, bottom = -1e300;
    bool isEmpty() const { return left > right || top > bottom; }
    void add(PointD p);
    void add(const Box& other);
    void grow(double by);
};

class Path {
  public:
    void moveTo(PointD p);
    // Without a figure begun, these begin one at their first point.
    void lineTo(PointD p);
    void curveTo(PointD a, PointD b, PointD end); // cubic Bezier
    void close();

    void addPolyline(std::span<const PointD> points, bool closed);
    void addRectangle(PointD a, PointD b);
    void addEllipse(PointD center, double rx, double ry);
    // Angles in radians from the x axis towards the y axis; `sweep` may be negative. Joins the
    // figure begun, if there is one, by a line.
    void addArc(PointD center, double rx, double ry, double start, double sweep);
    void addRoundRectangle(PointD a, PointD b, double rx, double ry);
    void append(const Path& other, const Affine& map);
    // The same, but a line leads from the figure begun to `other`, if there is one.
    void join(const Path& other, const Affine& map);

    bool isEmpty() const { return verbs_.empty(); }
    std::size_t size() const { return points_.size(); }
    void clear();
    PointD current() const { return points_.empty() ? PointD{} : points_.back(); }
    // Of the points, so that curves lie within.
    Box bounds() const;

    // Curves become lines that are no further away from them than `tolerance` after the map.
    Outline flattened(const Affine& map, double tolerance = 0.1) const;

  private:
    enum class Verb : unsigned char { Move, Line, Curve, Close };
    std::vector<Verb> verbs_;
    std::vector<PointD> points_;
    bool open_ = false;
};

Box boundsOf(const Outline& outline);

} // namespace kvn::imaging::draw
