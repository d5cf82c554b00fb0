#include "dialogs/color_button.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionFocusRect>

#include "dialogs/color_value.h"

namespace kvn::dialogs {

ColorButton::ColorButton(QWidget* parent) : QPushButton(parent) {
    setFlat(true);
    setBackColor(color_);
}

void ColorButton::setBackColor(quint32 color) {
    color_ = color & 0xFFFFFF;
    // The value has to be readable without seeing the colour.
    const QString name = fromValue(color_).name();
    setToolTip(name + QStringLiteral(": click to choose another color"));
    setAccessibleDescription(name);
    update();
}

void ColorButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const bool marked = hasFocus() || isDown();
    const QColor line = palette().color(marked ? QPalette::Highlight : QPalette::Mid);
    painter.setPen(QPen(line, marked ? 2 : 1));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(marked ? frame.adjusted(0.5, 0.5, -0.5, -0.5) : frame, 3, 3);
    painter.setPen(Qt::NoPen);
    QColor fill = fromValue(color_);
    if (!isEnabled()) fill.setAlphaF(0.35F);
    painter.setBrush(fill);
    painter.drawRoundedRect(frame.adjusted(2.5, 2.5, -2.5, -2.5), 1.5, 1.5);
}

} // namespace kvn::dialogs
