#include "engine/detail/imgx_view.h"

#include <QCursor>
#include <QJsonArray>
#include <QScrollBar>
#include <cmath>

#include "engine/detail/imgx_view_access.h"
#include "engine/detail/imgx_view_impl.h"
#include "engine/imgx.h"

namespace kvn::engine::detail {

using imaging::Raster;
using imaging::Rect;
using imaging::Size;

namespace {

// A changed pixel shows in the pixels beside it where the picture is shown reduced.
constexpr int reducedReach = 2;

constexpr int customPointer = 99;

} // namespace

// --- the parts, bound together ----------------------------------------------------------------

ImgXView::Impl::Impl(ImgX& control) : control_(control) {
    installCanvasAccess();
    control.setAccessibleName(QStringLiteral("Canvas"));
    control.setFocusPolicy(Qt::StrongFocus);
    control.setFrameShape(QFrame::NoFrame);
    control.setLayoutDirection(Qt::LeftToRight); // a picture is not mirrored
    control.viewport()->setMouseTracking(true);
    control.viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    control.installEventFilter(this);
    arrange();
}

ImgXView::Impl::~Impl() = default;

void ImgXView::Impl::takePicture(const Raster& picture, const Rect& changed) {
    const Rect different = painter_.setPicture(picture, changed);
    if (viewport_.picture() != picture.size()) {
        viewport_.setPicture(picture.size());
        painter_.invalidate();
        viewChanged(false);
    } else if (!different.isEmpty()) {
        Rect part = viewport_.onCanvas(different);
        part = {part.x - reducedReach, part.y - reducedReach, part.width + 2 * reducedReach,
                part.height + 2 * reducedReach};
        painter_.invalidate(part);
        const double r = ratio();
        control_.viewport()->update(
            QRectF(part.x / r, part.y / r, part.width / r, part.height / r).toAlignedRect());
    }
    if (magnifier_) magnifier_->update();
}

void ImgXView::Impl::setPicture(const Raster& picture, const Rect& changed) {
    if (!frozen_) {
        takePicture(picture, changed);
        return;
    }
    const bool released = (waiting_ ? waiting_->picture : painter_.picture()).isEmpty();
    if (!waiting_) waiting_.emplace();
    waiting_->all = waiting_->all || (changed.isEmpty() && !released);
    waiting_->changed = waiting_->changed.united(changed);
    waiting_->picture = picture;
    waiting_->size = picture.size();
}

void ImgXView::Impl::releasePicture() {
    painter_.releasePicture();
    if (waiting_) waiting_->picture = {};
}

void ImgXView::Impl::setAutoDisplay(bool on) {
    if (frozen_ == !on) return;
    frozen_ = !on;
    if (frozen_) return;
    if (waiting_) {
        const Waiting next = std::move(*waiting_);
        waiting_.reset();
        takePicture(next.picture, next.all ? next.picture.rect() : next.changed);
    }
    repaintLater();
}

Size ImgXView::Impl::pictureSize() const {
    return waiting_ ? waiting_->size : viewport_.picture();
}

void ImgXView::Impl::repaintLater() {
    if (!frozen_) control_.viewport()->update();
    if (magnifier_) magnifier_->update();
}

void ImgXView::Impl::repaintNow() {
    if (!frozen_ && !painting_) control_.viewport()->repaint();
}

void ImgXView::Impl::updateCursor() {
    QCursor cursor(Qt::ArrowCursor);
    if (gesture_ && gesture_->cursor() != Qt::ArrowCursor)
        cursor = gesture_->cursor();
    else if (handKey_)
        cursor = Qt::OpenHandCursor;
    else if (pointer_ == customPointer && !icon_.isNull())
        cursor = QCursor(icon_, 0, 0);
    control_.viewport()->setCursor(cursor);
}

// --- zoom and place ---------------------------------------------------------------------------

double ImgXView::Impl::ratio() const {
    return control_.devicePixelRatioF();
}

RealPoint ImgXView::Impl::devicePlace(const QPointF& canvas) const {
    return {canvas.x() * ratio(), canvas.y() * ratio()};
}

void ImgXView::Impl::arrange() {
    arrangedRatio_ = ratio();
    const QSizeF full = QSizeF(control_.contentsRect().size()) * arrangedRatio_;
    const double bar = control_.verticalScrollBar()->sizeHint().width() * arrangedRatio_;
    viewport_.setCanvas(
        {static_cast<int>(std::lround(full.width())), static_cast<int>(std::lround(full.height()))},
        static_cast<int>(std::lround(bar)));
    placeScrollBars();
}

// Which bars there are is settled here and at once: left to itself the scroll area would decide
// later and one bar after the other, and the canvas would have a wrong size meanwhile.
void ImgXView::Impl::placeScrollBars() {
    const bool nested = placing_;
    placing_ = true;
    const auto policy = [](bool on) { return on ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff; };
    control_.setHorizontalScrollBarPolicy(policy(viewport_.needsBarAcross()));
    control_.setVerticalScrollBarPolicy(policy(viewport_.needsBarDown()));
    const auto place = [](QScrollBar* bar, int end, int page, int value) {
        bar->setRange(0, end);
        bar->setPageStep(page);
        bar->setSingleStep(std::max(1, page / 20));
        bar->setValue(value);
    };
    const imaging::Point end = viewport_.furthest(), origin = viewport_.origin();
    place(control_.horizontalScrollBar(), end.x, viewport_.canvas().width, origin.x);
    place(control_.verticalScrollBar(), end.y, viewport_.canvas().height, origin.y);
    placing_ = nested;
}

void ImgXView::Impl::viewChanged(bool zoomed) {
    placeScrollBars();
    repaintLater();
    if (zoomed) emit control_.ZoomChanged();
}

void ImgXView::Impl::setZoom(double zoom) {
    const Size canvas = viewport_.canvas();
    zoomAt(zoom, wheelAnchor_.value_or(RealPoint{canvas.width / 2.0, canvas.height / 2.0}));
}

void ImgXView::Impl::scrollBarsMoved() {
    if (placing_) return;
    if (viewport_.scrollTo(control_.horizontalScrollBar()->value(),
                           control_.verticalScrollBar()->value()))
        repaintLater();
}

// --- region -----------------------------------------------------------------------------------

void ImgXView::Impl::reportRegion() {
    repaintLater();
    const Size size = pictureSize();
    const Rect rect = region_.isInForce(size) ? region_.clipped(size) : Rect{};
    emit control_.RegionChanged(rect.x, rect.y, rect.width, rect.height);
}

// Set again it is told again: listeners may have let go of a region that is still in force.
void ImgXView::Impl::setHasRegion(bool on) {
    if (!on && !region_.flag()) return;
    region_.setFlag(on);
    // A mere flag stands for the whole picture where a region is asked for, but it is no
    // selection to tell of: commands would take it for a rectangle that the user drew.
    if (!on || region_.hasRectangle()) reportRegion();
}

// Sides that are written before the flag say nothing yet.
void ImgXView::Impl::regionWritten() {
    if (region_.flag()) reportRegion();
}

// --- magnifier --------------------------------------------------------------------------------

void ImgXView::Impl::showMagnifier(bool on) {
    magnifierWanted_ = on;
    if (on && !magnifier_) {
        magnifier_ = std::make_unique<Magnifier>(
            Magnifier::Source{[this](imaging::Point centre, int rate, QSize size) {
                                  return painter_.magnified(centre, rate, size);
                              },
                              [this](imaging::Point pixel) {
                                  return painter_.picture().pixel(pixel.x, pixel.y);
                              }},
            control_.viewport());
        magnifier_->setRate(magnifierRate_);
    }
    if (magnifier_) magnifier_->setVisible(on && control_.viewport()->isVisible());
}

void ImgXView::Impl::setMagnifierRate(int rate) {
    magnifierRate_ = std::clamp(rate, Magnifier::smallestRate, Magnifier::largestRate);
    if (magnifier_) magnifier_->setRate(magnifierRate_);
}

// --- what the control calls --------------------------------------------------------------------

ImgXView::ImgXView(ImgX& control) : impl_(std::make_unique<Impl>(control)) {}
ImgXView::~ImgXView() = default;

void ImgXView::setPicture(const Raster& picture, const Rect& changed) {
    impl_->setPicture(picture, changed);
}
void ImgXView::releasePicture() {
    impl_->releasePicture();
}
void ImgXView::setAutoDisplay(bool on) {
    impl_->setAutoDisplay(on);
}
void ImgXView::setBackColor(quint32 value) {
    impl_->painter_.setBackColor({static_cast<quint8>(value), static_cast<quint8>(value >> 8),
                                  static_cast<quint8>(value >> 16)});
    impl_->repaintLater();
}
void ImgXView::setBackdrop(const Raster& tile) {
    impl_->painter_.setBackdrop(tile);
    impl_->repaintLater();
}
void ImgXView::setDoubleBuffer(bool on) {
    impl_->painter_.setBuffered(on);
}
void ImgXView::setAntialias(bool on) {
    impl_->painter_.setSmooth(on);
    impl_->repaintLater();
}
void ImgXView::setMousePointer(int pointer) {
    impl_->pointer_ = pointer;
    impl_->updateCursor();
}
void ImgXView::setMouseIcon(const QPixmap& picture) {
    impl_->icon_ = picture;
    impl_->updateCursor();
}
void ImgXView::refresh() {
    impl_->repaintNow();
}

double ImgXView::zoom() const {
    return impl_->viewport_.zoom();
}
void ImgXView::setZoom(double factor) {
    impl_->setZoom(factor);
}
void ImgXView::setFitEnabled(bool on) {
    impl_->fitEnabled_ = on;
}
void ImgXView::setZoomFit(int kind) {
    if (impl_->fitEnabled_) impl_->zoomAt(impl_->viewport_.fittingZoom(kind), {0, 0});
}
int ImgXView::scrollX() const {
    return impl_->viewport_.firstPixel().x;
}
int ImgXView::scrollY() const {
    return impl_->viewport_.firstPixel().y;
}

QPoint ImgXView::imageFromCanvas(const QPoint& canvas) const {
    const RealPoint place = impl_->devicePlace(canvas);
    const imaging::Point pixel = impl_->viewport_.imagePixel(static_cast<int>(std::floor(place.x)),
                                                             static_cast<int>(std::floor(place.y)));
    return {pixel.x, pixel.y};
}

bool ImgXView::hasRegion() const {
    return impl_->region_.isInForce(impl_->pictureSize());
}
void ImgXView::setHasRegion(bool on) {
    impl_->setHasRegion(on);
}
Rect ImgXView::region() const {
    return impl_->region_.clipped(impl_->pictureSize());
}
void ImgXView::setRegionLeft(int value) {
    impl_->region_.setLeft(value, impl_->pictureSize());
    impl_->regionWritten();
}
void ImgXView::setRegionTop(int value) {
    impl_->region_.setTop(value, impl_->pictureSize());
    impl_->regionWritten();
}
void ImgXView::setRegionWidth(int value) {
    impl_->region_.setWidth(value, impl_->pictureSize());
    impl_->regionWritten();
}
void ImgXView::setRegionHeight(int value) {
    impl_->region_.setHeight(value, impl_->pictureSize());
    impl_->regionWritten();
}

int ImgXView::toolMode() const {
    return impl_->toolMode_;
}
void ImgXView::setToolMode(int mode) {
    impl_->toolMode_ = mode;
}

void ImgXView::showZoomWindow() {
    impl_->showMagnifier(true);
}
void ImgXView::hideZoomWindow() {
    impl_->showMagnifier(false);
}
void ImgXView::setZoomRate(int rate) {
    impl_->setMagnifierRate(rate);
}

void ImgXView::record(const char* property, const QJsonArray& args) const {
    impl_->control_.record(property, args);
}

} // namespace kvn::engine::detail
