#include "engine/detail/imgx_view_tools.h"

#include <algorithm>
#include <cmath>

#include "engine/detail/region.h"

namespace kvn::engine::detail {

namespace {

using imaging::Point;
using imaging::Rect;

constexpr double clickStep = 2;      // one click
constexpr double dragToDouble = 120; // device pixels of a drag that double the zoom

// Held within the reach of the hand; a zoom already beyond goes no further, but may stay.
double handZoom(double from, double to) {
    return std::clamp(to, std::min(from, GestureHost::smallestZoom),
                      std::max(from, GestureHost::largestZoom));
}

class PanGesture : public Gesture {
  public:
    PanGesture(GestureHost& host, RealPoint start)
        : Gesture(host), start_(start), origin_(host.viewport().origin()) {}

    void move(RealPoint place) override {
        host_.scrollTo(origin_.x - std::llround(place.x - start_.x),
                       origin_.y - std::llround(place.y - start_.y));
    }
    void cancel() override { host_.scrollTo(origin_.x, origin_.y); }
    Qt::CursorShape cursor() const override { return Qt::ClosedHandCursor; }

  private:
    RealPoint start_;
    Point origin_;
};

// A drag from one image point to another. A drag beyond the canvas pulls the picture along.
class BandGesture : public Gesture {
  public:
    BandGesture(GestureHost& host, RealPoint start)
        : Gesture(host), place_(start), start_(host.viewport().imagePoint(start)), end_(start_) {}

    void move(RealPoint place) override {
        if (place == place_) return;
        place_ = place;
        const imaging::Size canvas = host_.viewport().canvas();
        const Point origin = host_.viewport().origin();
        host_.scrollTo(origin.x + std::llround(beyond(place.x, canvas.width)),
                       origin.y + std::llround(beyond(place.y, canvas.height)));
        end_ = host_.viewport().imagePoint(place);
        dragged_ = dragged_ || std::llround(end_.x) != std::llround(start_.x) ||
                   std::llround(end_.y) != std::llround(start_.y);
        if (dragged_) show(draggedRect(start_.x, start_.y, end_.x, end_.y));
    }

  protected:
    virtual void show(const Rect& rect) = 0;

    // A press and release over the same pixel is no drag.
    bool isDragged() const { return dragged_; }
    RealPoint from() const { return start_; }
    RealPoint to() const { return end_; }

  private:
    static double beyond(double place, int length) {
        return place < 0 ? place : std::max(0.0, place - length);
    }

    RealPoint place_, start_, end_;
    bool dragged_ = false;
};

class RegionGesture : public BandGesture {
  public:
    RegionGesture(GestureHost& host, RealPoint start) : BandGesture(host, start) {
        host.dropRegion();
    }
    void finish(RealPoint place) override {
        move(place);
        if (isDragged()) host_.finishRegion(borderIn(from()), borderIn(to()));
    }
    void cancel() override { host_.dropRegion(); }

  private:
    void show(const Rect& rect) override { host_.drawRegion(rect); }

    // The nearest pixel border, within the picture.
    Point borderIn(RealPoint point) const {
        const imaging::Size picture = host_.viewport().picture();
        const auto border = [](double value, int length) {
            return static_cast<int>(std::clamp(std::floor(value + 0.5), 0.0, double(length)));
        };
        return {border(point.x, picture.width), border(point.y, picture.height)};
    }
};

class ZoomBoxGesture : public BandGesture {
  public:
    using BandGesture::BandGesture;
    void finish(RealPoint place) override {
        move(place);
        host_.showFrame({});
        if (isDragged()) host_.zoomToBox(draggedRect(from().x, from().y, to().x, to().y));
    }
    void cancel() override { host_.showFrame({}); }

  private:
    void show(const Rect& rect) override { host_.showFrame(rect); }
};

class ZoomClickGesture : public Gesture {
  public:
    ZoomClickGesture(GestureHost& host, bool out) : Gesture(host), out_(out) {}
    void move(RealPoint) override {}
    void finish(RealPoint place) override {
        const double zoom = host_.viewport().zoom();
        host_.zoomAt(handZoom(zoom, out_ ? zoom / clickStep : zoom * clickStep), place);
    }

  private:
    bool out_;
};

// Up is nearer, about the point of the press.
class ZoomDragGesture : public Gesture {
  public:
    ZoomDragGesture(GestureHost& host, RealPoint start)
        : Gesture(host), start_(start), zoom_(host.viewport().zoom()) {}
    void move(RealPoint place) override {
        if (place.y == lastY_) return;
        lastY_ = place.y;
        const double factor = std::exp2((start_.y - place.y) / dragToDouble);
        host_.zoomAt(handZoom(zoom_, zoom_ * factor), start_);
    }
    void cancel() override { host_.zoomAt(zoom_, start_); }
    Qt::CursorShape cursor() const override { return Qt::SizeVerCursor; }

  private:
    RealPoint start_;
    double zoom_, lastY_ = start_.y;
};

} // namespace

std::unique_ptr<Gesture> beginGesture(GestureHost& host, int mode, Qt::MouseButton button,
                                      bool shift, bool hand, RealPoint place) {
    const bool left = button == Qt::LeftButton, right = button == Qt::RightButton;
    if (button == Qt::MiddleButton || (hand && left))
        return std::make_unique<PanGesture>(host, place);
    switch (static_cast<ToolMode>(mode)) {
    case ToolMode::RubberBand:
        if (left) return std::make_unique<RegionGesture>(host, place);
        break;
    case ToolMode::Pan:
        if (left) return std::make_unique<PanGesture>(host, place);
        break;
    case ToolMode::ZoomBox:
        if (left) return std::make_unique<ZoomBoxGesture>(host, place);
        break;
    case ToolMode::ZoomClick:
        if (left || right) return std::make_unique<ZoomClickGesture>(host, right || shift);
        break;
    case ToolMode::ZoomHand:
        if (left) return std::make_unique<ZoomDragGesture>(host, place);
        if (right) return std::make_unique<PanGesture>(host, place);
        break;
    case ToolMode::None:
        break;
    }
    return nullptr;
}

} // namespace kvn::engine::detail
