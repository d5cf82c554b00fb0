#include "imaging/draw/path.h"

#include <algorithm>
#include <numbers>

namespace kvn::imaging::draw {

void Box::add(PointD p) {
    left = std::min(left, p.x);
    top = std::min(top, p.y);
    right = std::max(right, p.x);
    bottom = std::max(bottom, p.y);
}

void Box::add(const Box& other) {
    if (other.isEmpty()) return;
    add(PointD{other.left, other.top});
    add(PointD{other.right, other.bottom});
}

void Box::grow(double by) {
    if (isEmpty()) return;
    left -= by;
    top -= by;
    right += by;
    bottom += by;
}

void Path::moveTo(PointD p) {
    verbs_.push_back(Verb::Move);
    points_.push_back(p);
    open_ = true;
}

void Path::lineTo(PointD p) {
    if (!open_) return moveTo(p);
    verbs_.push_back(Verb::Line);
    points_.push_back(p);
}

void Path::curveTo(PointD a, PointD b, PointD end) {
    if (!open_) moveTo(a);
    verbs_.push_back(Verb::Curve);
    points_.insert(points_.end(), {a, b, end});
}

void Path::close() {
    if (open_) verbs_.push_back(Verb::Close);
    open_ = false;
}

void Path::addPolyline(std::span<const PointD> points, bool closed) {
    if (points.empty()) return;
    moveTo(points.front());
    for (const PointD p : points.subspan(1))
        lineTo(p);
    if (closed) close();
}

void Path::addRectangle(PointD a, PointD b) {
    const PointD corners[] = {a, {b.x, a.y}, b, {a.x, b.y}};
    addPolyline(corners, true);
}

void Path::addArc(PointD center, double rx, double ry, double start, double sweep) {
    const auto on = [&](double angle) {
        return PointD{center.x + rx * std::cos(angle), center.y + ry * std::sin(angle)};
    };
    const auto along = [&](double angle) {
        return PointD{-rx * std::sin(angle), ry * std::cos(angle)};
    };
    lineTo(on(start));
    const int parts =
        std::clamp(static_cast<int>(std::ceil(std::abs(sweep) * 2 / std::numbers::pi)), 1, 64);
    const double step = sweep / parts;
    const double handle = 4.0 / 3 * std::tan(step / 4);
    for (int i = 0; i < parts; ++i) {
        const double from = start + i * step, to = from + step;
        curveTo(on(from) + along(from) * handle, on(to) - along(to) * handle, on(to));
    }
}

void Path::addEllipse(PointD center, double rx, double ry) {
    open_ = false;
    addArc(center, rx, ry, 0, 2 * std::numbers::pi);
    close();
}

void Path::addRoundRectangle(PointD a, PointD b, double rx, double ry) {
    constexpr double quarter = std::numbers::pi / 2;
    const double left = std::min(a.x, b.x), right = std::max(a.x, b.x);
    const double top = std::min(a.y, b.y), bottom = std::max(a.y, b.y);
    rx = std::min(std::abs(rx), (right - left) / 2);
    ry = std::min(std::abs(ry), (bottom - top) / 2);
    open_ = false;
    addArc({right - rx, top + ry}, rx, ry, -quarter, quarter);
    addArc({right - rx, bottom - ry}, rx, ry, 0, quarter);
    addArc({left + rx, bottom - ry}, rx, ry, quarter, quarter);
    addArc({left + rx, top + ry}, rx, ry, 2 * quarter, quarter);
    close();
}

void Path::append(const Path& other, const Affine& map) {
    verbs_.insert(verbs_.end(), other.verbs_.begin(), other.verbs_.end());
    for (const PointD p : other.points_)
        points_.push_back(map(p));
    if (!other.isEmpty()) open_ = other.open_;
}

void Path::join(const Path& other, const Affine& map) {
    const std::size_t at = verbs_.size();
    const bool joins = open_ && !other.isEmpty();
    append(other, map);
    if (joins) verbs_[at] = Verb::Line;
}

void Path::clear() {
    verbs_.clear();
    points_.clear();
    open_ = false;
}

Box Path::bounds() const {
    Box box;
    for (const PointD p : points_)
        box.add(p);
    return box;
}

namespace {

// A cubic's distance from n chords is at most 0.75 / n^2 of its larger second difference.
void flattenCurve(PointD p, PointD a, PointD b, PointD end, double tolerance,
                  std::vector<PointD>& out) {
    const double bend = std::max(length(p - a * 2 + b), length(a - b * 2 + end));
    const double wanted = std::ceil(std::sqrt(0.75 * bend / tolerance));
    const int parts = wanted < 256 ? std::max(1, static_cast<int>(wanted)) : 256;
    for (int i = 1; i < parts; ++i) {
        const double t = double(i) / parts, s = 1 - t;
        out.push_back(p * (s * s * s) + a * (3 * s * s * t) + b * (3 * s * t * t) +
                      end * (t * t * t));
    }
    out.push_back(end);
}

} // namespace

Outline Path::flattened(const Affine& map, double tolerance) const {
    Outline outline;
    std::size_t at = 0;
    for (const Verb verb : verbs_) {
        if (verb == Verb::Move) {
            outline.push_back({{map(points_[at++])}, false});
            continue;
        }
        Polyline& line = outline.back();
        if (verb == Verb::Line) {
            line.points.push_back(map(points_[at++]));
        } else if (verb == Verb::Curve) {
            flattenCurve(line.points.back(), map(points_[at]), map(points_[at + 1]),
                         map(points_[at + 2]), tolerance, line.points);
            at += 3;
        } else {
            line.closed = true;
        }
    }
    return outline;
}

Box boundsOf(const Outline& outline) {
    Box box;
    for (const Polyline& line : outline)
        for (const PointD p : line.points)
            box.add(p);
    return box;
}

} // namespace kvn::imaging::draw
