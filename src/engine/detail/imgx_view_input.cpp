// Painting and input of a control: what the window system sends, as gestures and events.

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QScopeGuard>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QWheelEvent>
#include <cmath>
#include <exception>

#include "engine/detail/imgx_view_frame.h"
#include "engine/detail/imgx_view_impl.h"
#include "engine/imgx.h"

namespace kvn::engine::detail {

using imaging::Point;
using imaging::Rect;

namespace {

// The canvas pixel an event belongs to; on screens of uneven ratio it comes with a fraction.
QPoint canvasPixel(const QMouseEvent& event) {
    return {static_cast<int>(std::floor(event.position().x())),
            static_cast<int>(std::floor(event.position().y()))};
}

// The modes whose gestures begin with a press of the left button.
bool isTool(int mode) {
    return mode >= 1 && mode <= 12;
}

} // namespace

// --- GestureHost --------------------------------------------------------------------------------

void ImgXView::Impl::scrollTo(std::int64_t x, std::int64_t y) {
    if (viewport_.scrollTo(x, y)) viewChanged(false);
}

void ImgXView::Impl::zoomAt(double zoom, RealPoint anchor) {
    if (viewport_.setZoom(zoom, anchor)) viewChanged(true);
}

void ImgXView::Impl::zoomToBox(const Rect& box) {
    viewChanged(viewport_.zoomTo(box, largestZoom));
}

void ImgXView::Impl::showFrame(const std::optional<Rect>& frame) {
    frame_ = frame;
    repaintLater();
}

void ImgXView::Impl::drawRegion(const Rect& region) {
    const Rect before = region_.clipped(pictureSize());
    const bool had = region_.flag();
    region_.draw(region);
    if (!had || region_.clipped(pictureSize()) != before) reportRegion();
}

void ImgXView::Impl::dropRegion() {
    setHasRegion(false);
}

void ImgXView::Impl::finishRegion(Point from, Point to) {
    bool cancel = false;
    emit control_.RegionFinished(from.x, from.y, to.x, to.y, &cancel);
    if (cancel) dropRegion();
}

// --- mouse --------------------------------------------------------------------------------------

void ImgXView::Impl::endGesture() {
    gesture_.reset();
    gestureButton_ = Qt::NoButton;
    updateCursor();
}

void ImgXView::Impl::reportPixel(QMouseEvent* event) {
    const RealPoint place = devicePlace(event->position());
    const Point pixel = viewport_.imagePixel(static_cast<int>(std::floor(place.x)),
                                             static_cast<int>(std::floor(place.y)));
    lastReported_ = pixel;
    if (magnifier_) magnifier_->lookAt(pixel);
    emit control_.ImageMouseMove(buttonBits(event->buttons()), shiftBits(event->modifiers()),
                                 pixel.x, pixel.y);
}

// A press may come without a move before it, from a touch screen or after a menu; listeners act on
// the pixel that was told of last. Whatever they do on the press, even closing the window, is
// allowed.
void ImgXView::Impl::press(QMouseEvent* event, bool isDouble) {
    const QPointer<ImgX> alive(&control_);
    const RealPoint place = devicePlace(event->position());
    const int shift = shiftBits(event->modifiers());
    if (lastReported_ != viewport_.imagePixel(static_cast<int>(std::floor(place.x)),
                                              static_cast<int>(std::floor(place.y))))
        reportPixel(event);
    if (!alive) return;
    const QPoint pixel = canvasPixel(*event);
    if (isDouble)
        emit control_.DblClick();
    else
        emit control_.MouseDown(buttonBits(event->button()), shift, pixel.x(), pixel.y());
    if (!alive || gesture_) return;
    if (event->button() == Qt::LeftButton && isTool(toolMode_) && !handKey_)
        emit control_.ToolStarting();
    if (!alive) return;
    gesture_ = beginGesture(*this, toolMode_, event->button(), shift & 1, handKey_, place);
    if (gesture_) gestureButton_ = event->button();
    updateCursor();
}

void ImgXView::Impl::move(QMouseEvent* event) {
    const QPointer<ImgX> alive(&control_);
    if (gesture_ && !(event->buttons() & gestureButton_)) endGesture(); // the release went astray
    if (gesture_) gesture_->move(devicePlace(event->position()));
    if (!alive) return;
    const QPoint pixel = canvasPixel(*event);
    emit control_.MouseMove(buttonBits(event->buttons()), shiftBits(event->modifiers()), pixel.x(),
                            pixel.y());
    if (alive) reportPixel(event);
}

// The gesture is carried out before the release is told of: what listens may use its result.
void ImgXView::Impl::release(QMouseEvent* event) {
    const QPointer<ImgX> alive(&control_);
    if (gesture_ && event->button() == gestureButton_) {
        const std::unique_ptr<Gesture> ended = std::move(gesture_);
        ended->finish(devicePlace(event->position()));
        if (!alive) return;
        endGesture();
    }
    const QPoint pixel = canvasPixel(*event);
    emit control_.MouseUp(buttonBits(event->button()), shiftBits(event->modifiers()), pixel.x(),
                          pixel.y());
}

// Sideways movement scrolls; the rest is the listener's, who zooms, about the pixel under the
// cursor.
void ImgXView::Impl::wheel(QWheelEvent* event) {
    event->accept();
    const QPoint angle = event->angleDelta();
    const bool sideways = std::abs(angle.x()) > std::abs(angle.y());
    if (sideways || event->modifiers() & Qt::ShiftModifier) {
        const int by = event->pixelDelta().isNull() ? (sideways ? angle.x() : angle.y())
                                                    : event->pixelDelta().x();
        scrollTo(viewport_.origin().x - by, viewport_.origin().y);
        return;
    }
    const int distance = wheelCounter_.add(angle.y());
    if (distance == 0) return;
    const RealPoint place = devicePlace(event->position());
    wheelAnchor_ = RealPoint{std::floor(place.x) + 0.5, std::floor(place.y) + 0.5};
    // Whether the listener fails or even takes the control away.
    const auto reset = [this, alive = QPointer<ImgX>(&control_)] {
        if (alive) wheelAnchor_.reset();
    };
    const auto guard = qScopeGuard(reset);
    emit control_.MouseWheel(distance);
}

// --- keys ---------------------------------------------------------------------------------------

bool ImgXView::Impl::scrollByKey(int key) {
    const Point origin = viewport_.origin(), end = viewport_.furthest();
    const imaging::Size canvas = viewport_.canvas();
    const int line = control_.verticalScrollBar()->singleStep();
    const int column = control_.horizontalScrollBar()->singleStep();
    const int page = std::max(1, canvas.height - line); // a line of the last page stays in sight
    switch (key) {
    case Qt::Key_Left:
        return scrollTo(origin.x - column, origin.y), true;
    case Qt::Key_Right:
        return scrollTo(origin.x + column, origin.y), true;
    case Qt::Key_Up:
        return scrollTo(origin.x, origin.y - line), true;
    case Qt::Key_Down:
        return scrollTo(origin.x, origin.y + line), true;
    case Qt::Key_PageUp:
        return scrollTo(origin.x, origin.y - page), true;
    case Qt::Key_PageDown:
        return scrollTo(origin.x, origin.y + page), true;
    case Qt::Key_Home:
        return scrollTo(0, 0), true;
    case Qt::Key_End:
        return scrollTo(end.x, end.y), true;
    default:
        return false;
    }
}

bool ImgXView::Impl::keyPress(QKeyEvent* event) {
    const QPointer<ImgX> alive(&control_);
    const int shift = shiftBits(event->modifiers());
    if (const int code = virtualKey(*event)) emit control_.KeyDown(code, shift);
    if (!alive) return true;
    if (event->key() == Qt::Key_Escape && (gesture_ || region_.flag())) {
        if (gesture_)
            gesture_->cancel();
        else
            dropRegion();
        if (alive) endGesture();
        return true;
    }
    if (shift != 0) return false;
    if (event->key() == Qt::Key_Space) {
        handKey_ = true;
        updateCursor();
        return true;
    }
    return scrollByKey(event->key());
}

bool ImgXView::Impl::keyRelease(QKeyEvent* event) {
    if (event->isAutoRepeat()) return false; // a held key is pressed often and released once
    if (event->key() == Qt::Key_Space) {
        handKey_ = false;
        updateCursor();
    }
    if (const int code = virtualKey(*event))
        emit control_.KeyUp(code, shiftBits(event->modifiers()));
    return false;
}

bool ImgXView::Impl::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &control_ && event->type() == QEvent::FocusOut) {
        handKey_ = false;
        updateCursor();
    }
    return false;
}

// --- painting -----------------------------------------------------------------------------------

void ImgXView::Impl::viewportShown(bool shown) {
    if (!shown) painter_.dropCaches();
    if (magnifier_) magnifier_->setVisible(shown && magnifierWanted_);
}

void ImgXView::Impl::paint(QPaintEvent* event) {
    const double r = ratio();
    if (r != arrangedRatio_) arrange(); // the window has come to another screen
    QWidget* canvas = control_.viewport();
    QPainter painter(canvas);
    const QScopedValueRollback<bool> painting(painting_, true);
    try {
        painter_.paint(painter, event->rect(), canvas->size(), r, viewport_);
    } catch (const std::exception&) {
        painter.fillRect(event->rect(), Qt::gray); // no memory even for a line
    }
    painter.save();
    painter.scale(1 / r, 1 / r);
    const QRect all(0, 0, static_cast<int>(std::ceil(canvas->width() * r)),
                    static_cast<int>(std::ceil(canvas->height() * r)));
    const auto frame = [&](const Rect& imageRect) {
        const Rect place = viewport_.onCanvas(imageRect);
        paintFrame(painter, QRect(place.x, place.y, place.width, place.height), all,
                   std::max(1, static_cast<int>(r)));
    };
    if (region_.hasRectangle() && region_.isInForce(viewport_.picture()))
        frame(region_.clipped(viewport_.picture()));
    if (frame_) frame(*frame_);
    painter.restore();
    painter.save();
    emit control_.AfterPaint(&painter);
    painter.restore();
}

// --- what the control calls ---------------------------------------------------------------------

bool ImgXView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Show || event->type() == QEvent::Hide)
        impl_->viewportShown(event->type() == QEvent::Show);
    return false;
}
void ImgXView::paintEvent(QPaintEvent* event) {
    impl_->paint(event);
}
void ImgXView::resized() {
    impl_->arrange();
}
void ImgXView::scrolled() {
    impl_->scrollBarsMoved();
}
void ImgXView::mousePressed(QMouseEvent* event) {
    impl_->press(event, false);
}
void ImgXView::mouseMoved(QMouseEvent* event) {
    impl_->move(event);
}
void ImgXView::mouseReleased(QMouseEvent* event) {
    impl_->release(event);
}
void ImgXView::mouseDoubleClicked(QMouseEvent* event) {
    impl_->press(event, true);
}
void ImgXView::wheelTurned(QWheelEvent* event) {
    impl_->wheel(event);
}
bool ImgXView::keyPressed(QKeyEvent* event) {
    return impl_->keyPress(event);
}
bool ImgXView::keyReleased(QKeyEvent* event) {
    return impl_->keyRelease(event);
}

} // namespace kvn::engine::detail
