// The rectangle of a control that commands work on: what was drawn or written, and what of it
// counts. Written sides are kept as they are and clipped when asked for, so that the order in
// which they are written does not matter.
#pragma once

#include <optional>

#include "imaging/geometry.h"

namespace kvn::engine::detail {

class Region {
  public:
    // A flag without a rectangle stands for the whole picture. Taking the flag off forgets the
    // rectangle.
    void setFlag(bool on);
    bool flag() const { return flag_; }
    // Whether a rectangle was drawn or written, not just the flag set.
    bool hasRectangle() const { return rect_.has_value(); }

    // With no rectangle yet, the other sides are those of the picture.
    void setLeft(int value, imaging::Size picture) { edited(picture).x = value; }
    void setTop(int value, imaging::Size picture) { edited(picture).y = value; }
    void setWidth(int value, imaging::Size picture) { edited(picture).width = value; }
    void setHeight(int value, imaging::Size picture) { edited(picture).height = value; }

    // Sets the rectangle and the flag.
    void draw(const imaging::Rect& rect);

    // True if the flag is set and something of the rectangle lies in the picture.
    bool isInForce(imaging::Size picture) const;
    // In image pixels, inside the picture; the whole of it if no region is in force.
    imaging::Rect clipped(imaging::Size picture) const;

  private:
    imaging::Rect& edited(imaging::Size picture);

    bool flag_ = false;
    std::optional<imaging::Rect> rect_;
};

// The pixels between two points of a drag, image coordinates, in either order: from the pixel
// border nearest to one to the border nearest to the other, at least one pixel each way.
imaging::Rect draggedRect(double x1, double y1, double x2, double y2);

} // namespace kvn::engine::detail
