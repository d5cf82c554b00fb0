#include "engine/detail/imgx_view_frame.h"

#include <QPainter>
#include <algorithm>

namespace kvn::engine::detail {

namespace {

constexpr int dash = 4; // in line widths, black and white each

// White and black by turns from `begin` on, counted from `zero` so that the dashes stay with the
// frame when its visible part changes.
void paintEdge(QPainter& painter, int zero, int begin, int end, int thickness, const auto& rectOf) {
    const int step = dash * thickness;
    int at = zero + (begin - zero) / step * step;
    for (; at < end; at += step) {
        const int from = std::max(at, begin), to = std::min(at + step, end);
        const bool black = (at - zero) / step % 2 == 0;
        painter.fillRect(rectOf(from, to - from), black ? Qt::black : Qt::white);
    }
}

} // namespace

void paintFrame(QPainter& painter, const QRect& frame, const QRect& canvas, int thickness) {
    const QRect outer(frame.topLeft(), frame.size().expandedTo({thickness, thickness}));
    const QRect seen = outer & canvas;
    if (seen.isEmpty()) return;
    const int left = outer.x(), top = outer.y();
    const auto across = [&](int y) {
        if (y + thickness <= canvas.top() || y > canvas.bottom()) return;
        paintEdge(painter, left, seen.x(), seen.x() + seen.width(), thickness,
                  [&](int from, int length) { return QRect(from, y, length, thickness); });
    };
    const auto down = [&](int x) {
        if (x + thickness <= canvas.left() || x > canvas.right()) return;
        paintEdge(painter, top, seen.y(), seen.y() + seen.height(), thickness,
                  [&](int from, int length) { return QRect(x, from, thickness, length); });
    };
    across(top);
    across(top + outer.height() - thickness);
    down(left);
    down(left + outer.width() - thickness);
}

} // namespace kvn::engine::detail
