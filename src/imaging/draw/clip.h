// What part of a drawing may change: a rectangle of whole pixels, narrowed or widened by shapes
// with soft edges. Cheap to copy; the mask of the shapes is made when it is first needed.
#pragma once

#include <memory>
#include <vector>

#include "imaging/draw/path.h"
#include "imaging/draw/scan.h"
#include "imaging/geometry.h"

namespace kvn::imaging::draw {

// How a shape changes what is open so far.
enum class Combine { And, Or, Xor, Without, Replace };

class Clip {
  public:
    struct Shape {
        Outline outline;
        FillRule rule = FillRule::NonZero;
        Combine how = Combine::And;
    };

    // Shapes beyond this many are left out: a file may have any number.
    static constexpr std::size_t mostShapes = 1024;

    // Nothing outside `whole` is ever open.
    explicit Clip(const Rect& whole) : whole_(whole), bounds_(whole) {}

    void add(const Rect& rect, Combine how);
    void add(Outline outline, FillRule rule, Combine how);
    // What is open moves; nothing does where all is.
    void move(PointD by);
    // All open again.
    void reset();

    // What is closed for certain lies outside.
    const Rect& bounds() const { return bounds_; }
    bool isRectangle() const { return shapes_.empty(); }
    bool isEmpty() const { return bounds_.isEmpty(); }
    const std::vector<std::shared_ptr<const Shape>>& shapes() const { return shapes_; }
    bool sameAs(const Clip& other) const {
        return bounds_ == other.bounds_ && shapes_ == other.shapes_;
    }

  private:
    Rect whole_, bounds_;
    std::vector<std::shared_ptr<const Shape>> shapes_;
};

// How far each pixel of `area` is open, 255 for wholly.
struct Mask {
    Rect area;
    std::vector<std::uint8_t> values;

    const std::uint8_t* row(int y) const {
        return &values[static_cast<std::size_t>(y - area.y) * static_cast<std::size_t>(area.width)];
    }
};
Mask maskOf(const Clip& clip);

// The smallest rectangle of whole pixels around the box, cut to `limit`.
Rect pixelsAround(const Box& box, const Rect& limit);
Outline outlineOf(const Rect& rect);

} // namespace kvn::imaging::draw
