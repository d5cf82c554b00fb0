#include "engine/detail/region.h"

#include <algorithm>
#include <cmath>

namespace kvn::engine::detail {

using imaging::Rect;
using imaging::Size;

void Region::setFlag(bool on) {
    flag_ = on;
    if (!on) rect_.reset();
}

Rect& Region::edited(Size picture) {
    if (!rect_) rect_ = Rect{0, 0, picture.width, picture.height};
    return *rect_;
}

void Region::draw(const Rect& rect) {
    rect_ = rect;
    flag_ = true;
}

bool Region::isInForce(Size picture) const {
    const Rect all{0, 0, picture.width, picture.height};
    return flag_ && !(rect_ ? rect_->intersected(all) : all).isEmpty();
}

Rect Region::clipped(Size picture) const {
    const Rect all{0, 0, picture.width, picture.height};
    return rect_ && isInForce(picture) ? rect_->intersected(all) : all;
}

namespace {

struct Stretch {
    int begin, length;
};

Stretch stretchOf(double a, double b) {
    constexpr double limit = 1 << 30;
    const double begin = std::clamp(std::floor(std::min(a, b) + 0.5), -limit, limit);
    const double end = std::clamp(std::floor(std::max(a, b) + 0.5), -limit, limit);
    return {static_cast<int>(begin), static_cast<int>(std::max(1.0, end - begin))};
}

} // namespace

Rect draggedRect(double x1, double y1, double x2, double y2) {
    const Stretch across = stretchOf(x1, x2), down = stretchOf(y1, y2);
    return {across.begin, down.begin, across.length, down.length};
}

} // namespace kvn::engine::detail
