// The canvas of one engine control: what is shown, how large and from where, the region, the
// tool gestures, and the events that tell of them. It owns no picture: the control hands it the
// one to show. A control that is not visible keeps neither reduced copies nor a back image.
//
// Three spaces meet here. Canvas pixels are the viewport's device independent pixels, as mouse
// events have them. Device pixels are canvas pixels times the screen's ratio. Image pixels are
// device pixels divided by the zoom, so that 100 percent shows one image pixel on one pixel of
// the screen whatever its ratio. The picture's top left corner is the canvas's when nothing is
// scrolled, also where the picture is the smaller one.
#pragma once

#include <QPixmap>
#include <QPoint>
#include <memory>

#include "imaging/raster.h"

class QEvent;
class QJsonArray;
class QKeyEvent;
class QMouseEvent;
class QPaintEvent;
class QWheelEvent;

namespace kvn::engine {

class ImgX;

namespace detail {

class ImgXView {
  public:
    explicit ImgXView(ImgX& control);
    ~ImgXView();
    ImgXView(const ImgXView&) = delete;
    ImgXView& operator=(const ImgXView&) = delete;

    // --- the picture ----------------------------------------------------------
    // Shows `picture`, sharing its pixels; an empty one shows nothing. Where size and type are
    // those of the picture before, only `changed` is made anew. An empty `changed` means nothing
    // after releasePicture(), and everything if other pixels are handed over without that.
    void setPicture(const imaging::Raster& picture, const imaging::Rect& changed);
    // Gives up the share, so that the holder can write in place without a copy. To be followed by
    // setPicture; a paint in between repeats what was last shown.
    void releasePicture();

    // --- looks ----------------------------------------------------------------
    // Off freezes what is shown; on shows all that happened meanwhile with one paint.
    void setAutoDisplay(bool on);
    void setBackColor(quint32 value); // 24 bits, red in the low byte
    // A tile of screen pixels behind transparent parts, laid from the picture's top left corner;
    // an empty one shows the back colour there.
    void setBackdrop(const imaging::Raster& tile);
    void setDoubleBuffer(bool on);
    void setAntialias(bool on);
    void setMousePointer(int pointer);         // 1 arrow, 99 the icon
    void setMouseIcon(const QPixmap& picture); // hot spot at its top left corner
    void refresh();                            // paints before it returns

    // --- zoom and place -------------------------------------------------------
    double zoom() const;
    // Held within 0.001 and 1000. The canvas's centre stays where it is, during a wheel event the
    // point under the cursor.
    void setZoom(double factor);
    void setFitEnabled(bool on);
    void setZoomFit(int kind); // 1 best, 2 width, 3 height; acts once, if fitting is enabled
    int scrollX() const;       // image pixel at the canvas's top left
    int scrollY() const;

    // The image pixel shown at a canvas pixel; outside the picture too.
    QPoint imageFromCanvas(const QPoint& canvas) const;

    // --- region ---------------------------------------------------------------
    bool hasRegion() const;
    void setHasRegion(bool on);
    // Clipped to the picture; the picture's rectangle if no region is in force.
    imaging::Rect region() const;
    void setRegionLeft(int value);
    void setRegionTop(int value);
    void setRegionWidth(int value);
    void setRegionHeight(int value);

    // --- tools ----------------------------------------------------------------
    int toolMode() const;
    void setToolMode(int mode);

    // --- magnifier ------------------------------------------------------------
    void showZoomWindow();
    void hideZoomWindow();
    void setZoomRate(int rate); // 1..64 screen pixels an image pixel

    // --- what the control's event handlers hand over ----------------------------
    // True where the control's base class shall not see the event.
    bool viewportEvent(QEvent* event);
    void paintEvent(QPaintEvent* event);
    void resized();
    void scrolled();
    void mousePressed(QMouseEvent* event);
    void mouseMoved(QMouseEvent* event);
    void mouseReleased(QMouseEvent* event);
    void mouseDoubleClicked(QMouseEvent* event);
    void wheelTurned(QWheelEvent* event);
    bool keyPressed(QKeyEvent* event); // false: not a key of the canvas
    bool keyReleased(QKeyEvent* event);

    // Passes a call on to the control's trace.
    void record(const char* property, const QJsonArray& args) const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace detail
} // namespace kvn::engine
