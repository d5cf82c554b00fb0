// Where the picture stands on the canvas: zoom, place, and what fits. Plain numbers in device
// pixels; it knows no window.
#pragma once

#include <cstdint>
#include <optional>

#include "imaging/geometry.h"

namespace kvn::engine::detail {

struct RealPoint {
    double x = 0;
    double y = 0;
    bool operator==(const RealPoint&) const = default;
};

class Viewport {
  public:
    static constexpr double smallestZoom = 0.001;
    static constexpr double largestZoom = 1000;

    // In image pixels; empty for no picture.
    void setPicture(imaging::Size size);
    imaging::Size picture() const { return picture_; }
    // The canvas without scroll bars, and what a scroll bar takes of it.
    void setCanvas(imaging::Size full, int barThickness);

    double zoom() const { return zoom_; } // device pixels an image pixel
    // The image point at `anchor`, a place on the canvas, stays there as far as the picture's edges
    // let it. Several zooms at one anchor drift nowhere. False if the zoom is the same as before.
    bool setZoom(double zoom, RealPoint anchor);
    // The zoom at which the picture just fits: 1 whole, 2 in width, 3 in height, with room for the
    // scroll bar that the other axis may then need. The present one without a picture.
    double fittingZoom(int kind) const;
    // Shows `box`, in image pixels, in the middle and as large as the canvas and `largest` let it.
    bool zoomTo(const imaging::Rect& box, double largest);

    bool needsBarAcross() const { return barAcross_; } // the horizontal one
    bool needsBarDown() const { return barDown_; }
    imaging::Size canvas() const { return canvas_; } // without the bars it needs
    imaging::Size scaled() const { return scaled_; } // the picture; empty if there is none

    // Place of the scaled picture at the canvas's top left, from 0 to furthest().
    imaging::Point origin() const { return origin_; }
    imaging::Point furthest() const;
    // Clips. False if that changes nothing.
    bool scrollTo(std::int64_t x, std::int64_t y);

    // The image pixel at the canvas's top left corner.
    imaging::Point firstPixel() const;
    // The image pixel shown by a device pixel of the canvas; outside the picture too.
    imaging::Point imagePixel(int x, int y) const;
    // The image point at a place of the canvas.
    RealPoint imagePoint(RealPoint place) const;
    // The part of the canvas, and beyond, that a rectangle of the picture takes.
    imaging::Rect onCanvas(const imaging::Rect& rect) const;

  private:
    void arrange();
    void moveTo(std::int64_t x, std::int64_t y);

    imaging::Size picture_, scaled_, full_, canvas_;
    int barThickness_ = 0;
    bool barAcross_ = false, barDown_ = false;
    double zoom_ = 1;
    imaging::Point origin_;
    // The anchor of the last zoom and what it held, until something else moves the picture.
    struct Held {
        RealPoint anchor, image;
    };
    std::optional<Held> held_;
};

} // namespace kvn::engine::detail
