// The parts of a control's view and what binds them: settings to paint, input to gestures and
// events.
#pragma once

#include <QObject>
#include <optional>

#include "engine/detail/imgx_view.h"
#include "engine/detail/imgx_view_keys.h"
#include "engine/detail/imgx_view_magnifier.h"
#include "engine/detail/imgx_view_paint.h"
#include "engine/detail/imgx_view_tools.h"
#include "engine/detail/region.h"
#include "engine/detail/viewport.h"

namespace kvn::engine::detail {

class ImgXView::Impl final : public QObject, public GestureHost {
  public:
    explicit Impl(ImgX& control);
    ~Impl() override;

    // --- picture and looks ------------------------------------------------------
    void setPicture(const imaging::Raster& picture, const imaging::Rect& changed);
    void releasePicture();
    void setAutoDisplay(bool on);
    void repaintLater();
    void repaintNow();
    void updateCursor();
    imaging::Size pictureSize() const;

    // --- zoom and place ---------------------------------------------------------
    double ratio() const;
    RealPoint devicePlace(const QPointF& canvas) const;
    void arrange();
    void setZoom(double zoom);
    void scrollBarsMoved();
    bool scrollByKey(int key);

    // --- region -----------------------------------------------------------------
    void setHasRegion(bool on);
    void regionWritten();
    void reportRegion();

    // --- magnifier --------------------------------------------------------------
    void showMagnifier(bool on);
    void setMagnifierRate(int rate);

    // --- input ------------------------------------------------------------------
    void press(QMouseEvent* event, bool isDouble);
    void move(QMouseEvent* event);
    void release(QMouseEvent* event);
    void wheel(QWheelEvent* event);
    bool keyPress(QKeyEvent* event);
    bool keyRelease(QKeyEvent* event);
    bool eventFilter(QObject* watched, QEvent* event) override;
    void viewportShown(bool shown);

    void paint(QPaintEvent* event);

    // --- GestureHost --------------------------------------------------------------
    const Viewport& viewport() const override { return viewport_; }
    void scrollTo(std::int64_t x, std::int64_t y) override;
    void zoomAt(double zoom, RealPoint anchor) override;
    void zoomToBox(const imaging::Rect& box) override;
    void showFrame(const std::optional<imaging::Rect>& frame) override;
    void drawRegion(const imaging::Rect& region) override;
    void dropRegion() override;
    void finishRegion(imaging::Point from, imaging::Point to) override;

    ImgX& control_;
    Viewport viewport_;
    ViewPainter painter_;
    Region region_;
    std::optional<imaging::Rect> frame_;
    bool fitEnabled_ = false;
    int toolMode_ = 0;
    int pointer_ = 1;
    QPixmap icon_;

  private:
    void takePicture(const imaging::Raster& picture, const imaging::Rect& changed);
    void placeScrollBars();
    void viewChanged(bool zoomed);
    void endGesture();
    void reportPixel(QMouseEvent* event);

    // Frozen: the picture to show later, and what of it is new.
    struct Waiting {
        imaging::Raster picture; // empty if it was released again
        imaging::Size size;
        imaging::Rect changed;
        bool all = false;
    };
    bool frozen_ = false;
    std::optional<Waiting> waiting_;

    std::unique_ptr<Magnifier> magnifier_; // made when first shown
    bool magnifierWanted_ = false;
    int magnifierRate_ = 8;

    std::unique_ptr<Gesture> gesture_;
    Qt::MouseButton gestureButton_ = Qt::NoButton;
    WheelCounter wheelCounter_;
    std::optional<RealPoint> wheelAnchor_;
    std::optional<imaging::Point> lastReported_;
    bool handKey_ = false;
    bool placing_ = false; // scroll bars are being set, not moved
    bool painting_ = false;
    double arrangedRatio_ = 0;
};

} // namespace kvn::engine::detail
