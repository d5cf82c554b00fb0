#include "engine/detail/imgx_view_paint.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

namespace kvn::engine::detail {

using imaging::CanvasScene;
using imaging::Raster;
using imaging::Rect;

namespace {

// More pieces than this are cheaper to render as one.
constexpr int mostPieces = 8;

Rect toRect(const QRect& rect) {
    return {rect.x(), rect.y(), rect.width(), rect.height()};
}

} // namespace

Rect ViewPainter::setPicture(const Raster& picture, const Rect& changed) {
    const Raster& old = view_.picture();
    if (released_) {
        released_ = false;
        return view_.setPicture(picture, changed);
    }
    // A share was held meanwhile: nobody can have written to these pixels.
    if (!picture.isEmpty() && picture.sharesPixelsWith(old) && picture.palette() == old.palette())
        return {};
    return view_.setPicture(picture, changed.isEmpty() ? picture.rect() : changed);
}

void ViewPainter::releasePicture() {
    if (!view_.picture().isEmpty()) released_ = true;
    view_.releasePicture();
}

void ViewPainter::dropCaches() {
    view_.dropCopies();
    image_ = {};
    invalidate();
}

void ViewPainter::setBackColor(imaging::Rgba color) {
    back_ = color;
    invalidate();
}

void ViewPainter::setBackdrop(const Raster& tile) {
    view_.setBackdrop(tile);
    invalidate();
}

void ViewPainter::setBuffered(bool on) {
    buffered_ = on;
    image_ = {};
    invalidate();
}

void ViewPainter::setSmooth(bool on) {
    smooth_ = on;
    invalidate();
}

void ViewPainter::invalidate(const Rect& part) {
    dirty_ += QRect(part.x, part.y, part.width, part.height);
    if (dirty_.rectCount() > mostPieces) dirty_ = dirty_.boundingRect();
}

CanvasScene ViewPainter::sceneFor(const Viewport& viewport) const {
    return {viewport.zoom(), viewport.origin().x, viewport.origin().y, smooth_, back_};
}

// Without memory for the reduced copies the nearest pixels are shown, which needs none.
void ViewPainter::render(const CanvasScene& scene, const QRect& part, QImage& image) {
    const imaging::ScreenView out{reinterpret_cast<std::uint32_t*>(image.bits()),
                                  static_cast<std::size_t>(image.bytesPerLine()) / 4, image.width(),
                                  image.height()};
    try {
        view_.render(scene, toRect(part), out);
    } catch (const std::exception&) {
        CanvasScene simple = scene;
        simple.smooth = false;
        view_.render(simple, toRect(part), out);
    }
}

void ViewPainter::scrollBack(int dx, int dy) {
    const int width = image_.width(), height = image_.height();
    if (std::abs(dx) >= width || std::abs(dy) >= height) {
        shown_.reset();
        return;
    }
    const auto bytes = static_cast<std::size_t>(width - std::abs(dx)) * 4;
    const int rows = height - std::abs(dy);
    uchar* data = image_.bits();
    const qsizetype stride = image_.bytesPerLine();
    for (int i = 0; i < rows; ++i) {
        const int to = dy > 0 ? height - 1 - i : i, from = to - dy;
        std::memmove(data + to * stride + std::max(dx, 0) * 4,
                     data + from * stride + std::max(-dx, 0) * 4, bytes);
    }
    dirty_.translate(dx, dy);
    dirty_ += QRegion(image_.rect()) - image_.rect().translated(dx, dy);
}

void ViewPainter::bringUpToDate(QSize deviceSize, const Viewport& viewport) {
    if (image_.size() != deviceSize) {
        image_ = QImage(deviceSize, QImage::Format_RGB32);
        shown_.reset();
    }
    if (image_.isNull()) return;
    const imaging::Point origin = viewport.origin();
    if (shown_ && shown_->zoom != viewport.zoom()) shown_.reset();
    if (shown_ && shown_->origin != origin)
        scrollBack(shown_->origin.x - origin.x, shown_->origin.y - origin.y);
    if (!shown_) dirty_ = image_.rect();
    shown_ = {viewport.zoom(), origin};
    const QRegion wanted = dirty_ & image_.rect();
    dirty_ = {};
    for (const QRect& part : wanted)
        render(sceneFor(viewport), part, image_);
}

void ViewPainter::paintBuffered(QPainter& painter, const QRect& devicePart, QSize deviceSize,
                                const Viewport& viewport) {
    if (!released_) bringUpToDate(deviceSize, viewport);
    const QRect part = devicePart & image_.rect();
    if (!part.isEmpty()) painter.drawImage(part.topLeft(), image_, part);
}

void ViewPainter::paint(QPainter& painter, const QRect& exposed, QSize size, double ratio,
                        const Viewport& viewport) {
    const auto up = [ratio](int length) { return static_cast<int>(std::ceil(length * ratio)); };
    const QSize deviceSize(up(size.width()), up(size.height()));
    const QRectF scaled(exposed.x() * ratio, exposed.y() * ratio, exposed.width() * ratio,
                        exposed.height() * ratio);
    const QRect part = scaled.toAlignedRect() & QRect(QPoint(), deviceSize);
    if (part.isEmpty()) return;
    painter.save();
    // Device pixels from here on, so that none is ever resampled.
    painter.scale(1 / ratio, 1 / ratio);
    if (buffered_) {
        paintBuffered(painter, part, deviceSize, viewport);
    } else if (!released_) {
        CanvasScene scene = sceneFor(viewport);
        scene.originX += part.x();
        scene.originY += part.y();
        QImage image(part.size(), QImage::Format_RGB32);
        if (!image.isNull()) render(scene, image.rect(), image);
        painter.drawImage(part.topLeft(), image);
    }
    painter.restore();
}

QImage ViewPainter::magnified(imaging::Point centre, int rate, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull() || released_) return {};
    const auto start = [rate](int middle, int length) {
        return static_cast<int>(std::clamp<std::int64_t>(
            std::int64_t{middle} * rate + rate / 2 - length / 2, -1'000'000'000, 1'000'000'000));
    };
    const CanvasScene scene{static_cast<double>(rate), start(centre.x, size.width()),
                            start(centre.y, size.height()), false, back_};
    render(scene, image.rect(), image);
    return image;
}

} // namespace kvn::engine::detail
