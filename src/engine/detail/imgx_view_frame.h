// The frame around a region: two-coloured dashes one screen pixel wide, to be seen on anything.
#pragma once

#include <QRect>

class QPainter;

namespace kvn::engine::detail {

// `frame` and `canvas` in the painter's units, which are device pixels. A frame without width or
// height is drawn one pixel thin.
void paintFrame(QPainter& painter, const QRect& frame, const QRect& canvas, int thickness);

} // namespace kvn::engine::detail
