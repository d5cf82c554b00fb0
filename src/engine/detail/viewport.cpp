#include "engine/detail/viewport.h"

#include <algorithm>
#include <cmath>

#include "imaging/view/scaling.h"

namespace kvn::engine::detail {

using imaging::Point;
using imaging::Rect;
using imaging::Size;

namespace {

int clampedInt(double value) {
    return static_cast<int>(std::clamp(value, -imaging::longestScaled, imaging::longestScaled));
}

// The first device pixel whose middle lies behind a border of image pixels.
int edge(std::int64_t imageEdge, double zoom) {
    return clampedInt(std::ceil(static_cast<double>(imageEdge) * zoom - 0.5));
}

// One axis filled: `length` image pixels in `room` pixels, of which the bar of the other axis
// takes its part if the picture is then longer than `otherRoom` there.
double filledZoom(int length, int room, int otherLength, int otherRoom, int bar) {
    const double open = static_cast<double>(room) / length;
    if (imaging::scaledLength(otherLength, open) <= otherRoom) return open;
    const double barred = static_cast<double>(std::max(1, room - bar)) / length;
    if (imaging::scaledLength(otherLength, barred) > otherRoom) return barred;
    // With the bar it would not be needed: as large as it gets without one.
    return static_cast<double>(otherRoom) / otherLength;
}

} // namespace

void Viewport::setPicture(Size size) {
    if (size == picture_) return;
    picture_ = size;
    held_.reset();
    arrange();
}

void Viewport::setCanvas(Size full, int barThickness) {
    if (full == full_ && barThickness == barThickness_) return;
    full_ = full;
    barThickness_ = barThickness;
    held_.reset();
    arrange();
}

void Viewport::arrange() {
    scaled_ = picture_.isEmpty() ? Size{}
                                 : Size{imaging::scaledLength(picture_.width, zoom_),
                                        imaging::scaledLength(picture_.height, zoom_)};
    barAcross_ = scaled_.width > full_.width;
    barDown_ = scaled_.height > full_.height - (barAcross_ ? barThickness_ : 0);
    barAcross_ = scaled_.width > full_.width - (barDown_ ? barThickness_ : 0);
    canvas_ = {std::max(0, full_.width - (barDown_ ? barThickness_ : 0)),
               std::max(0, full_.height - (barAcross_ ? barThickness_ : 0))};
    moveTo(origin_.x, origin_.y);
}

Point Viewport::furthest() const {
    return {std::max(0, scaled_.width - canvas_.width),
            std::max(0, scaled_.height - canvas_.height)};
}

void Viewport::moveTo(std::int64_t x, std::int64_t y) {
    const Point end = furthest();
    origin_ = {static_cast<int>(std::clamp<std::int64_t>(x, 0, end.x)),
               static_cast<int>(std::clamp<std::int64_t>(y, 0, end.y))};
}

bool Viewport::scrollTo(std::int64_t x, std::int64_t y) {
    const Point before = origin_;
    moveTo(x, y);
    if (origin_ == before) return false;
    held_.reset();
    return true;
}

RealPoint Viewport::imagePoint(RealPoint place) const {
    return {(origin_.x + place.x) / zoom_, (origin_.y + place.y) / zoom_};
}

Point Viewport::firstPixel() const {
    constexpr double rounding = 1e-9; // a place that was computed from this pixel gives it back
    const RealPoint corner = imagePoint({0, 0});
    return {clampedInt(std::floor(corner.x + rounding)),
            clampedInt(std::floor(corner.y + rounding))};
}

Point Viewport::imagePixel(int x, int y) const {
    const auto index = [this](int origin, int place) {
        return clampedInt(
            static_cast<double>(imaging::sourceIndex(std::int64_t{origin} + place, zoom_)));
    };
    return {index(origin_.x, x), index(origin_.y, y)};
}

Rect Viewport::onCanvas(const Rect& rect) const {
    const int left = edge(rect.x, zoom_), top = edge(rect.y, zoom_);
    return {left - origin_.x, top - origin_.y, edge(rect.right(), zoom_) - left,
            edge(rect.bottom(), zoom_) - top};
}

bool Viewport::setZoom(double zoom, RealPoint anchor) {
    zoom = std::isnan(zoom) ? zoom_ : std::clamp(zoom, smallestZoom, largestZoom);
    if (zoom == zoom_) return false;
    const RealPoint image = held_ && held_->anchor == anchor ? held_->image : imagePoint(anchor);
    zoom_ = zoom;
    arrange();
    moveTo(std::llround(image.x * zoom - anchor.x), std::llround(image.y * zoom - anchor.y));
    held_ = {anchor, image};
    return true;
}

double Viewport::fittingZoom(int kind) const {
    if (picture_.isEmpty() || full_.isEmpty()) return zoom_;
    const auto [w, h] = picture_;
    double zoom = zoom_;
    if (kind == 1)
        zoom =
            std::min(static_cast<double>(full_.width) / w, static_cast<double>(full_.height) / h);
    else if (kind == 2)
        zoom = filledZoom(w, full_.width, h, full_.height, barThickness_);
    else if (kind == 3)
        zoom = filledZoom(h, full_.height, w, full_.width, barThickness_);
    return std::clamp(zoom, smallestZoom, largestZoom);
}

bool Viewport::zoomTo(const Rect& box, double largest) {
    if (box.isEmpty() || full_.isEmpty()) return false;
    const auto fitting = [this](int room, int length) {
        return static_cast<double>(std::max(1, room - barThickness_)) / length;
    };
    const double zoom =
        std::min({fitting(full_.width, box.width), fitting(full_.height, box.height), largest});
    const bool changed = setZoom(zoom, {0, 0});
    held_.reset();
    const double x = box.x + box.width / 2.0, y = box.y + box.height / 2.0;
    moveTo(std::llround(x * zoom_ - canvas_.width / 2.0),
           std::llround(y * zoom_ - canvas_.height / 2.0));
    return changed;
}

} // namespace kvn::engine::detail
