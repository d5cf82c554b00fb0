#include "shell/top_bar.h"

#include <QHBoxLayout>
#include <QLabel>

namespace kvn::shell {

namespace {

constexpr int barHeight = 36; // pixels

QLabel* heading(const char* text, QWidget* parent) {
    auto* label = new QLabel(QString::fromLatin1(text), parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel* readOut(const char* name, const char* tip, QWidget* parent) {
    auto* label = new QLabel(QStringLiteral("0, 0"), parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setToolTip(QString::fromLatin1(tip));
    label->setAccessibleDescription(QString::fromLatin1(tip));
    // Wide enough for the corner of any picture, so that nothing jumps while the pointer moves.
    label->setFixedWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("00000,00000")));
    return label;
}

} // namespace

int coordsLeft(int barWidth, int coordsWidth, int panelRight) {
    const int left = barWidth - coordsWidth;
    return panelRight >= left ? panelRight : left;
}

TopBar::TopBar(QWidget* parent)
    : QFrame(parent), CoordsInfo_(new QFrame(this)),
      lblCoords_(readOut("lblCoords", "Position of the pointer in the picture", CoordsInfo_)),
      lblArea_(
          readOut("lblArea", "Width and height of the selection, or of the picture", CoordsInfo_)) {
    setObjectName(QStringLiteral("TopBar"));
    setAccessibleName(QStringLiteral("Options"));
    CoordsInfo_->setObjectName(QStringLiteral("CoordsInfo"));
    CoordsInfo_->setAccessibleName(QStringLiteral("Coordinates"));
    auto* row = new QHBoxLayout(CoordsInfo_);
    row->setContentsMargins(8, 0, 12, 0);
    row->setSpacing(6);
    row->addWidget(heading("Position", CoordsInfo_));
    row->addWidget(lblCoords_);
    row->addSpacing(8);
    row->addWidget(heading("Area", CoordsInfo_));
    row->addWidget(lblArea_);
    setFixedHeight(barHeight);
}

void TopBar::setColors(QFrame* colors) {
    colors_ = colors;
    placeCoords();
}

void TopBar::UpdateStatus(const QString& x, const QString& y, const QString& width,
                          const QString& height) {
    lblCoords_->setText(x + u',' + y);
    lblArea_->setText(width + u',' + height);
}

void TopBar::placeCoords() {
    CoordsInfo_->resize(CoordsInfo_->sizeHint().width(), height());
    if (colors_) colors_->setGeometry(0, 0, colors_->sizeHint().width(), height());
    const int panelRight = colors_ ? colors_->geometry().right() + 1 : 0;
    CoordsInfo_->move(coordsLeft(width(), CoordsInfo_->width(), panelRight), 0);
}

QSize TopBar::sizeHint() const {
    const int colors = colors_ ? colors_->sizeHint().width() : 0;
    return {colors + CoordsInfo_->sizeHint().width(), barHeight};
}

void TopBar::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    placeCoords();
}

} // namespace kvn::shell
