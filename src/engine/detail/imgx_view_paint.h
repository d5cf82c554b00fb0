// Paints a control's canvas: the picture of the moment, at the viewport's zoom and place. Keeps a
// back image of what is on the screen, so that scrolling scales only what comes into sight.
#pragma once

#include <QImage>
#include <QRegion>
#include <optional>

#include "engine/detail/viewport.h"
#include "imaging/view/picture_view.h"

class QPainter;

namespace kvn::engine::detail {

class ViewPainter {
  public:
    // Gives the part of the picture that looks different, empty if nothing does.
    imaging::Rect setPicture(const imaging::Raster& picture, const imaging::Rect& changed);
    // Paints repeat what was shown until setPicture is called.
    void releasePicture();
    const imaging::Raster& picture() const { return view_.picture(); }
    // Gives back what can be made again.
    void dropCaches();

    void setBackColor(imaging::Rgba color);
    void setBackdrop(const imaging::Raster& tile);
    void setBuffered(bool on);
    void setSmooth(bool on);

    void invalidate() { dirty_ = QRegion(), shown_.reset(); }
    void invalidate(const imaging::Rect& canvasPart);

    // Paints `exposed` (canvas pixels) of a canvas of `size`. `ratio` is device pixels a canvas
    // pixel.
    void paint(QPainter& painter, const QRect& exposed, QSize size, double ratio,
               const Viewport& viewport);

    // The surroundings of one image pixel, `rate` pixels to the image pixel, that pixel in the
    // middle.
    QImage magnified(imaging::Point centre, int rate, QSize size);

  private:
    void paintBuffered(QPainter& painter, const QRect& devicePart, QSize deviceSize,
                       const Viewport& viewport);
    void bringUpToDate(QSize deviceSize, const Viewport& viewport);
    void scrollBack(int dx, int dy);
    void render(const imaging::CanvasScene& scene, const QRect& part, QImage& image);
    imaging::CanvasScene sceneFor(const Viewport& viewport) const;

    // What the back image shows.
    struct Shown {
        double zoom;
        imaging::Point origin;
    };

    imaging::PictureView view_;
    imaging::Rgba back_{192, 192, 192, 255};
    bool buffered_ = true, smooth_ = true, released_ = false;
    QImage image_;
    std::optional<Shown> shown_; // nothing in it is right
    QRegion dirty_;              // or these parts are not
};

} // namespace kvn::engine::detail
