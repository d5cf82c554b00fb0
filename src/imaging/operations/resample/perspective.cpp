// Geometry.Perspective and Geometry.PerspectiveMap.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "basic/error.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/warp.h"

namespace kvn::imaging {
namespace {

constexpr Argument corner(std::string_view name, std::string_view note) {
    return {name, ArgumentKind::Point, 0, 0, "px", note};
}

constexpr Argument perspectiveArguments[] = {
    corner("p1", "where the bottom left corner goes"),
    corner("p2", "where the top left corner goes"),
    corner("p3", "where the top right corner goes"),
    corner("p4", "where the bottom right corner goes"),
    {"flag", ArgumentKind::Integer, 0, 1, "", "not looked at"},
};

constexpr Argument perspectiveMapArguments[] = {
    corner("p1", "comes to q1"),
    corner("p2", "comes to q2"),
    corner("p3", "comes to q3"),
    corner("p4", "comes to q4"),
    corner("q1", "where p1 goes"),
    corner("q2", "where p2 goes"),
    corner("q3", "where p3 goes"),
    corner("q4", "where p4 goes"),
    {"flag", ArgumentKind::Integer, 0, 1, "", "not looked at"},
};

using Quadrilateral = std::array<Point, 4>;

// u = (m0 x + m1 y + m2) / (m6 x + m7 y + 1), v = (m3 x + m4 y + m5) / (m6 x + m7 y + 1).
using Homography = std::array<double, 8>;

// Gauss with the largest pivots. False if the equations have no single solution.
bool solve(std::array<std::array<double, 9>, 8>& rows, Homography& result) {
    constexpr std::size_t n = 8;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t best = k;
        for (std::size_t r = k + 1; r < n; ++r)
            if (std::abs(rows[r][k]) > std::abs(rows[best][k])) best = r;
        if (std::abs(rows[best][k]) < 1e-9) return false;
        std::swap(rows[k], rows[best]);
        for (std::size_t r = 0; r < n; ++r) {
            if (r == k) continue;
            const double factor = rows[r][k] / rows[k][k];
            for (std::size_t c = k; c <= n; ++c)
                rows[r][c] -= factor * rows[k][c];
        }
    }
    for (std::size_t k = 0; k < n; ++k)
        result[k] = rows[k][n] / rows[k][k];
    return std::ranges::all_of(result, [](double v) { return std::isfinite(v); });
}

// Twice the area of a triangle; 0 for three points on a line.
double doubleArea(Point a, Point b, Point c) {
    return (double{1} * b.x - a.x) * (double{1} * c.y - a.y) -
           (double{1} * b.y - a.y) * (double{1} * c.x - a.x);
}

bool isFlat(const Quadrilateral& q) {
    for (std::size_t i = 0; i < 4; ++i)
        if (doubleArea(q[i], q[(i + 1) % 4], q[(i + 2) % 4]) == 0) return true;
    return false;
}

// Takes the points of `from` to those of `to`.
Homography homography(const Quadrilateral& from, const Quadrilateral& to, const char* source) {
    std::array<std::array<double, 9>, 8> rows{};
    for (std::size_t i = 0; i < 4; ++i) {
        const double x = from[i].x, y = from[i].y, u = to[i].x, v = to[i].y;
        rows[2 * i] = {x, y, 1, 0, 0, 0, -u * x, -u * y, u};
        rows[2 * i + 1] = {0, 0, 0, x, y, 1, -v * x, -v * y, v};
    }
    Homography result{};
    if (isFlat(from) || isFlat(to) || !solve(rows, result))
        throw RuntimeError(errors::invalidCall, "Three of the points lie on one line", source);
    return result;
}

// What lies at `from` comes to lie at `to`. Places behind the horizon of the mapping show the
// background, like places beyond the picture.
Raster mapped(const Raster& source, const Quadrilateral& from, const Quadrilateral& to,
              const char* name, Task& task) {
    const Homography m = homography(to, from, name);
    const double side = m[6] * to[0].x + m[7] * to[0].y + 1;
    const WarpSettings settings{
        .size = source.size(), .bordered = true, .background = {0, 0, 0, 0}};
    return warped(source, settings, task, [=](int y, int x0, int count, float* toX, float* toY) {
        constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
        for (int i = 0; i < count; ++i) {
            const double x = x0 + i;
            const double depth = m[6] * x + m[7] * y + 1;
            const double scale = 1 / depth;
            const bool ahead = depth * side > 0;
            toX[i] = ahead ? static_cast<float>((m[0] * x + m[1] * y + m[2]) * scale) : nowhere;
            toY[i] = ahead ? static_cast<float>((m[3] * x + m[4] * y + m[5]) * scale) : nowhere;
        }
    });
}

Quadrilateral pointsOf(const Arguments& arguments, std::size_t first) {
    return {arguments.point(first), arguments.point(first + 1), arguments.point(first + 2),
            arguments.point(first + 3)};
}

Raster perspective(const Raster& source, const Arguments& arguments, Task& task) {
    const int right = source.width() - 1, bottom = source.height() - 1;
    const Quadrilateral corners{Point{0, bottom}, Point{0, 0}, Point{right, 0},
                                Point{right, bottom}};
    const Quadrilateral points = pointsOf(arguments, 0);
    if (points == corners) return source;
    return mapped(source, corners, points, "Geometry.Perspective", task);
}

Raster perspectiveMap(const Raster& source, const Arguments& arguments, Task& task) {
    const Quadrilateral from = pointsOf(arguments, 0), to = pointsOf(arguments, 4);
    if (from == to) return source;
    return mapped(source, from, to, "Geometry.PerspectiveMap", task);
}

} // namespace

const Operation perspectiveOperation = {
    .name = "Geometry.Perspective",
    .undoName = "Perspective",
    .arguments = perspectiveArguments,
    .run = perspective,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note = "Draws the picture into a quadrilateral; 1-bit and palette pictures become 24-bit or "
            "32-bit unless nothing moves.",
};

const Operation perspectiveMapOperation = {
    .name = "Geometry.PerspectiveMap",
    .undoName = "Perspective",
    .arguments = perspectiveMapArguments,
    .run = perspectiveMap,
    .border = -1,
    .alpha = AlphaRule::Weighted,
    .types = TypeRule::Fixed,
    .note =
        "Takes one quadrilateral to another; 1-bit and palette pictures become 24-bit or 32-bit "
        "unless nothing moves.",
};

} // namespace kvn::imaging
