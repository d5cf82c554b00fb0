#include "shell/gradient_strip.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kvn::shell {

namespace {

constexpr int keyStep = 4; // pixels an arrow key moves

struct Parts {
    int red, green, blue;
};

Parts split(quint32 color) {
    const int blue = static_cast<int>(color / 65536);
    const int green = static_cast<int>(color % 65536 / 256);
    return {static_cast<int>(color % 256), green, blue};
}

// The channel at `position` of `steps` on the way from `start` to `end`.
int channelAt(int start, int end, int position, int steps) {
    const double step = start == end ? 0.0 : static_cast<double>(end - start) / steps;
    return std::clamp(static_cast<int>(std::lround(start + position * step)), 0, 255);
}

} // namespace

GradientStrip::GradientStrip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Gradient"));
    setAccessibleName(QStringLiteral("Colors between foreground and background"));
    setToolTip(QStringLiteral("Left click takes the foreground color, right click the background"));
    setStatusTip(QStringLiteral("Take a color between foreground and background; by keyboard: "
                                "arrows, then Space or Shift+Space"));
    setAccessibleDescription(statusTip());
    setFocusPolicy(Qt::TabFocus);
    setFixedHeight(20);
}

void GradientStrip::draw(quint32 foreground, quint32 background) {
    foreground_ = foreground;
    background_ = background;
    const int steps = std::max(1, width());
    const Parts start = split(background), end = split(foreground);
    strip_ = QImage(steps, 1, QImage::Format_RGB32);
    for (int x = 0; x < steps; ++x)
        strip_.setPixel(x, 0,
                        qRgb(channelAt(start.red, end.red, x, steps),
                             channelAt(start.green, end.green, x, steps),
                             channelAt(start.blue, end.blue, x, steps)));
    update();
}

quint32 GradientStrip::colorAt(int x) const {
    if (strip_.isNull()) return background_;
    const QRgb pixel = strip_.pixel(std::clamp(x, 0, strip_.width() - 1), 0);
    return static_cast<quint32>(qRed(pixel) | qGreen(pixel) << 8 | qBlue(pixel) << 16);
}

void GradientStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(rect(), strip_);
    if (!hasFocus()) return;
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.setPen(Qt::white);
    painter.drawLine(cursor_, 0, cursor_, height());
}

void GradientStrip::resizeEvent(QResizeEvent*) {
    draw(foreground_, background_);
}

void GradientStrip::mousePressEvent(QMouseEvent* event) {
    cursor_ = qRound(event->position().x());
    emit picked(event->button() == Qt::LeftButton ? 0 : 1, colorAt(cursor_));
}

void GradientStrip::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left:
        cursor_ = std::max(0, cursor_ - keyStep);
        break;
    case Qt::Key_Right:
        cursor_ = std::min(width() - 1, cursor_ + keyStep);
        break;
    case Qt::Key_Space:
        emit picked(event->modifiers() & Qt::ShiftModifier ? 1 : 0, colorAt(cursor_));
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    update();
}

} // namespace kvn::shell
