// Whole-number points, sizes and rectangles in image pixels.
#pragma once

#include <algorithm>
#include <cstdint>

namespace kvn::imaging {

struct Point {
    int x = 0;
    int y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const Size&) const = default;
};

// Covers x to x + width - 1. Sums are 64-bit, so that a rectangle at the edge of the number range
// cannot wrap round.
struct Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    std::int64_t right() const { return std::int64_t{x} + width; }
    std::int64_t bottom() const { return std::int64_t{y} + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool operator==(const Rect&) const = default;

    // The smallest rectangle around both; an empty one counts for nothing.
    Rect united(const Rect& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        const int l = std::min(x, other.x), t = std::min(y, other.y);
        return {l, t, static_cast<int>(std::max(right(), other.right()) - l),
                static_cast<int>(std::max(bottom(), other.bottom()) - t)};
    }

    Rect intersected(const Rect& other) const {
        const std::int64_t l = std::max(x, other.x), t = std::max(y, other.y);
        const std::int64_t r = std::min(right(), other.right());
        const std::int64_t b = std::min(bottom(), other.bottom());
        if (r <= l || b <= t) return {};
        return {static_cast<int>(l), static_cast<int>(t), static_cast<int>(r - l),
                static_cast<int>(b - t)};
    }
};

} // namespace kvn::imaging
