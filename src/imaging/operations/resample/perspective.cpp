// Geometry.Perspective and Geometry.PerspectiveMap.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "basic/error.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/simd.h"
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

// From this many source pixels a step on the picture is reduced first. Below, the sampling kernel
// alone does not alias.
constexpr double worthReducing = 1.25;

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

struct Factors {
    double x = 1, y = 1;
};

// By how much the mapping shrinks the columns and the rows of the picture where it shrinks them
// least: that is at one of its corners.
Factors leastShrinking(const Homography& m, const Quadrilateral& to) {
    Factors least{64, 64};
    for (const Point& p : to) {
        const double depth = m[6] * p.x + m[7] * p.y + 1;
        const double u = (m[0] * p.x + m[1] * p.y + m[2]) / depth;
        const double v = (m[3] * p.x + m[4] * p.y + m[5]) / depth;
        const double across = std::hypot(m[0] - u * m[6], m[1] - u * m[7]) / std::abs(depth);
        const double down = std::hypot(m[3] - v * m[6], m[4] - v * m[7]) / std::abs(depth);
        least = {std::min(least.x, across), std::min(least.y, down)};
    }
    return {least.x < worthReducing ? 1 : least.x, least.y < worthReducing ? 1 : least.y};
}

// The picture with as many pixels as the mapping can show.
Raster reducedBy(const Factors& factors, const Raster& source, Task& task) {
    constexpr std::int64_t catmullRom = 21;
    const auto side = [](int length, double factor) {
        return std::max(std::int64_t{1}, static_cast<std::int64_t>(std::ceil(length / factor)));
    };
    const std::vector<Value> values{side(source.width(), factors.x),
                                    side(source.height(), factors.y), catmullRom};
    return resizeOperation.run(source, Arguments(values), task);
}

// Where the picture comes to lie, and a little more; everything if it reaches to the horizon.
Rect coveredPart(const Homography& forward, const Raster& picture) {
    const double right = picture.width(), bottom = picture.height();
    const double corners[][2] = {{-1, -1}, {right, -1}, {-1, bottom}, {right, bottom}};
    double low[2] = {1e9, 1e9}, high[2] = {-1e9, -1e9};
    int ahead = 0;
    for (const auto& [x, y] : corners) {
        const double depth = forward[6] * x + forward[7] * y + 1;
        ahead += depth > 0 ? 1 : -1;
        for (const std::size_t k : {0, 1}) {
            const double at =
                (forward[3 * k] * x + forward[3 * k + 1] * y + forward[3 * k + 2]) / depth;
            low[k] = std::min(low[k], at);
            high[k] = std::max(high[k], at);
        }
    }
    if (std::abs(ahead) != 4) return picture.rect();
    const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -1e6, 1e6)); };
    const int x0 = whole(low[0]) - 4, y0 = whole(low[1]) - 4;
    const Rect part =
        Rect{x0, y0, whole(high[0]) + 4 - x0, whole(high[1]) + 4 - y0}.intersected(picture.rect());
    return part.isEmpty() ? Rect{0, 0, 1, 1} : part;
}

// A mapping from the result to the reduced picture.
struct Projection {
    Homography m;
    double ahead; // the sign of the depth before the horizon
    double scaleX, scaleY, shiftX, shiftY;
};

// Places behind the horizon lie nowhere.
KVN_CLONES void placeRow(const Projection& p, int y, int x0, int count, float* toX, float* toY) {
    constexpr float nowhere = std::numeric_limits<float>::quiet_NaN();
    const double acrossX = p.m[0] * p.scaleX, startX = (p.m[1] * y + p.m[2]) * p.scaleX;
    const double acrossY = p.m[3] * p.scaleY, startY = (p.m[4] * y + p.m[5]) * p.scaleY;
    const double acrossDepth = p.m[6], startDepth = p.m[7] * y + 1;
    const double ahead = p.ahead, shiftX = p.shiftX, shiftY = p.shiftY;
    for (int i = 0; i < count; ++i) {
        const double x = x0 + i;
        const double depth = acrossDepth * x + startDepth;
        const double scale = 1 / depth;
        const auto u = static_cast<float>((acrossX * x + startX) * scale + shiftX);
        const auto v = static_cast<float>((acrossY * x + startY) * scale + shiftY);
        toX[i] = depth * ahead > 0 ? u : nowhere;
        toY[i] = depth * ahead > 0 ? v : nowhere;
    }
}

// What lies at `from` comes to lie at `to`. Places behind the horizon of the mapping show the
// background, like places beyond the picture.
Raster mapped(const Raster& picture, const Quadrilateral& from, const Quadrilateral& to,
              const char* name, Task& task) {
    const Homography m = homography(to, from, name);
    const WarpSettings settings{.size = picture.size(),
                                .bordered = true,
                                .background = {0, 0, 0, 0},
                                .active = coveredPart(homography(from, to, name), picture)};
    const Factors factors = leastShrinking(m, to);
    Raster source = picture;
    if (factors.x > 1 || factors.y > 1) {
        const Task::Stage reducing(task, 0, 0.3);
        source = reducedBy(factors, picture, task);
    }
    const double scaleX = static_cast<double>(source.width()) / picture.width();
    const double scaleY = static_cast<double>(source.height()) / picture.height();
    const Projection projection{
        m, m[6] * to[0].x + m[7] * to[0].y + 1, scaleX, scaleY, (scaleX - 1) / 2, (scaleY - 1) / 2};
    return warped(source, settings, task,
                  [&projection](int y, int x0, int count, float* toX, float* toY) {
                      placeRow(projection, y, x0, count, toX, toY);
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
