#include "engine/detail/imgx_view_magnifier.h"

#include <QFontDatabase>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace kvn::engine::detail {

namespace {

constexpr int pictureSide = 200;
constexpr int border = 1;
constexpr int margin = 8; // from the control's corner

QString colorText(const imaging::Rgba& color) {
    QString text = QStringLiteral("#%1%2%3")
                       .arg(color.r, 2, 16, QLatin1Char('0'))
                       .arg(color.g, 2, 16, QLatin1Char('0'))
                       .arg(color.b, 2, 16, QLatin1Char('0'))
                       .toUpper();
    if (color.a != 255) text += QStringLiteral(" A:%1").arg(color.a);
    return text;
}

} // namespace

Magnifier::Magnifier(Source source, QWidget* owner)
    : QWidget(owner, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
      source_(std::move(source)), owner_(owner) {
    setObjectName(QStringLiteral("ZoomWindow"));
    setWindowTitle(QStringLiteral("Zoom Window"));
    setAccessibleName(windowTitle());
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setFixedSize(pictureSide + 2 * border,
                 pictureSide + 2 * fontMetrics().height() + margin + 2 * border);
}

void Magnifier::setRate(int rate) {
    rate_ = std::clamp(rate, smallestRate, largestRate);
    update();
}

void Magnifier::lookAt(imaging::Point pixel) {
    pixel_ = pixel;
    update();
}

void Magnifier::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    move(owner_->mapToGlobal(QPoint(owner_->width() - width() - margin, margin)));
}

// The pixel in the middle has a frame of black and white, to be seen on anything.
void Magnifier::paintPicture(QPainter& painter, const QRect& room) {
    const double ratio = devicePixelRatioF();
    const int rate = std::max(1, static_cast<int>(std::lround(rate_ * ratio)));
    const QSize size(static_cast<int>(std::ceil(room.width() * ratio)),
                     static_cast<int>(std::ceil(room.height() * ratio)));
    const QImage image = source_.picture(pixel_, rate, size);
    if (image.isNull()) return;
    painter.save();
    painter.setClipRect(room);
    painter.translate(room.topLeft());
    painter.scale(1 / ratio, 1 / ratio);
    painter.drawImage(QPoint(), image);
    const QRect middle(size.width() / 2 - rate / 2, size.height() / 2 - rate / 2, rate, rate);
    painter.setPen(Qt::black);
    painter.drawRect(middle.adjusted(-2, -2, 1, 1));
    painter.setPen(Qt::white);
    painter.drawRect(middle.adjusted(-1, -1, 0, 0));
    painter.restore();
}

void Magnifier::paintReadOut(QPainter& painter, const QRect& room) {
    const imaging::Rgba color = source_.color(pixel_);
    const QRect well(room.x() + margin / 2, room.y() + margin / 2, room.height() - margin,
                     room.height() - margin);
    painter.fillRect(well, QColor(color.r, color.g, color.b));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(well.adjusted(0, 0, -1, -1));
    painter.setPen(palette().color(QPalette::WindowText));
    const QString text = colorText(color) + QStringLiteral("\n%1, %2").arg(pixel_.x).arg(pixel_.y);
    painter.drawText(room.adjusted(room.height() + margin / 2, 0, 0, 0),
                     Qt::AlignVCenter | Qt::AlignLeft, text);
}

void Magnifier::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect inside = rect().adjusted(border, border, -border, -border);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    paintPicture(painter, QRect(inside.topLeft(), QSize(pictureSide, pictureSide)));
    paintReadOut(painter, inside.adjusted(0, pictureSide, 0, 0));
    painter.setPen(palette().color(QPalette::Dark));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void Magnifier::mousePressEvent(QMouseEvent* event) {
    grab_ = event->position().toPoint();
}

void Magnifier::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) move(event->globalPosition().toPoint() - grab_);
}

} // namespace kvn::engine::detail
