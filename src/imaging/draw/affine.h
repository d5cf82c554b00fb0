// Points between the pixels and affine maps of them. Pixel (x, y) covers x to x + 1 and y to y + 1.
#pragma once

#include <cmath>
#include <optional>

namespace kvn::imaging::draw {

struct PointD {
    double x = 0;
    double y = 0;
    PointD operator+(PointD o) const { return {x + o.x, y + o.y}; }
    PointD operator-(PointD o) const { return {x - o.x, y - o.y}; }
    PointD operator*(double k) const { return {x * k, y * k}; }
    bool operator==(const PointD&) const = default;
};
inline double dot(PointD a, PointD b) {
    return a.x * b.x + a.y * b.y;
}
inline double cross(PointD a, PointD b) {
    return a.x * b.y - a.y * b.x;
}
inline double length(PointD a) {
    return std::hypot(a.x, a.y);
}

// x' = xx x + xy y + dx, y' = yx x + yy y + dy.
struct Affine {
    double xx = 1, xy = 0, yx = 0, yy = 1, dx = 0, dy = 0;

    static Affine scaling(double x, double y) { return {x, 0, 0, y, 0, 0}; }
    static Affine translation(double x, double y) { return {1, 0, 0, 1, x, y}; }

    PointD operator()(PointD p) const {
        return {xx * p.x + xy * p.y + dx, yx * p.x + yy * p.y + dy};
    }
    // A direction: no translation.
    PointD linear(PointD p) const { return {xx * p.x + xy * p.y, yx * p.x + yy * p.y}; }
    // First `other`, then this.
    Affine operator*(const Affine& o) const {
        return {xx * o.xx + xy * o.yx, xx * o.xy + xy * o.yy,      yx * o.xx + yy * o.yx,
                yx * o.xy + yy * o.yy, xx * o.dx + xy * o.dy + dx, yx * o.dx + yy * o.dy + dy};
    }
    double determinant() const { return xx * yy - xy * yx; }
    // How much longer lines get, as the mean over the directions.
    double scale() const { return std::sqrt(std::abs(determinant())); }
    // None if a line or a point is all that the map leaves.
    std::optional<Affine> inverse() const {
        const double d = determinant();
        if (!std::isfinite(d) || std::abs(d) < 1e-30) return {};
        return Affine{
            yy / d, -xy / d, -yx / d, xx / d, (xy * dy - yy * dx) / d, (yx * dx - xx * dy) / d};
    }
    // Whether every point of a drawing stays a usable number under the map.
    bool isUsable() const {
        const double most = 1e9;
        for (const double v : {xx, xy, yx, yy, dx / 1e6, dy / 1e6})
            if (!(std::abs(v) < most)) return false;
        return true;
    }
};

} // namespace kvn::imaging::draw
