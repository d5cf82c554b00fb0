// The control's event handlers: everything goes to its view, which is not there yet or no longer
// while the base class is being made or taken apart.

#include <QKeyEvent>

#include "engine/detail/imgx_view.h"
#include "engine/imgx.h"

namespace kvn::engine {

bool ImgX::viewportEvent(QEvent* event) {
    if (view_ && view_->viewportEvent(event)) return true;
    return QAbstractScrollArea::viewportEvent(event);
}

void ImgX::paintEvent(QPaintEvent* event) {
    if (view_) view_->paintEvent(event);
}

void ImgX::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (view_) view_->resized();
}

void ImgX::scrollContentsBy(int, int) {
    if (view_) view_->scrolled();
}

void ImgX::mousePressEvent(QMouseEvent* event) {
    if (view_) view_->mousePressed(event);
}

void ImgX::mouseMoveEvent(QMouseEvent* event) {
    if (view_) view_->mouseMoved(event);
}

void ImgX::mouseReleaseEvent(QMouseEvent* event) {
    if (view_) view_->mouseReleased(event);
}

void ImgX::mouseDoubleClickEvent(QMouseEvent* event) {
    if (view_) view_->mouseDoubleClicked(event);
}

void ImgX::wheelEvent(QWheelEvent* event) {
    if (view_) view_->wheelTurned(event);
}

void ImgX::keyPressEvent(QKeyEvent* event) {
    if (!view_ || !view_->keyPressed(event)) event->ignore();
}

void ImgX::keyReleaseEvent(QKeyEvent* event) {
    if (!view_ || !view_->keyReleased(event)) event->ignore();
}

} // namespace kvn::engine
