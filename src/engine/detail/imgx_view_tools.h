// The gestures of a canvas, one object from press to release: rubber band, pan, zoom box, zoom
// click, zoom drag. Places are device pixels of the canvas, fractions included.
#pragma once

#include <Qt>
#include <memory>
#include <optional>

#include "engine/detail/viewport.h"

namespace kvn::engine::detail {

// Engine modes of the control.
enum class ToolMode {
    None = 0,
    RubberBand = 1,
    Pan = 2,
    ZoomBox = 3,
    ZoomClick = 4,
    ZoomHand = 12,
};

// What a gesture can do to the canvas. Zooms made by hand keep within what the zoom commands
// of a window can reach, so that no gesture leads where they do nothing.
class GestureHost {
  public:
    static constexpr double smallestZoom = 0.005;
    static constexpr double largestZoom = 16;

    virtual const Viewport& viewport() const = 0;
    virtual void scrollTo(std::int64_t x, std::int64_t y) = 0;
    virtual void zoomAt(double zoom, RealPoint anchor) = 0;
    virtual void zoomToBox(const imaging::Rect& box) = 0;
    // A frame in image pixels that is only shown.
    virtual void showFrame(const std::optional<imaging::Rect>& frame) = 0;
    virtual void drawRegion(const imaging::Rect& region) = 0;
    virtual void dropRegion() = 0;
    // The drag's ends in image pixels.
    virtual void finishRegion(imaging::Point from, imaging::Point to) = 0;

  protected:
    ~GestureHost() = default;
};

class Gesture {
  public:
    explicit Gesture(GestureHost& host) : host_(host) {}
    virtual ~Gesture() = default;
    Gesture(const Gesture&) = delete;
    Gesture& operator=(const Gesture&) = delete;

    virtual void move(RealPoint place) = 0;
    virtual void finish(RealPoint place) { move(place); }
    virtual void cancel() {}
    virtual Qt::CursorShape cursor() const { return Qt::ArrowCursor; }

  protected:
    GestureHost& host_;
};

// What the press of `button` begins; null for nothing. `hand` is the key that pans in every mode.
std::unique_ptr<Gesture> beginGesture(GestureHost& host, int mode, Qt::MouseButton button,
                                      bool shift, bool hand, RealPoint place);

} // namespace kvn::engine::detail
