// The small window that shows what lies under the cursor, many pixels to the pixel, with the
// colour as a number. It takes no focus; it can be dragged out of the way.
#pragma once

#include <QImage>
#include <QWidget>
#include <functional>

#include "imaging/geometry.h"
#include "imaging/rgba.h"

namespace kvn::engine::detail {

class Magnifier : public QWidget {
  public:
    static constexpr int smallestRate = 1;
    static constexpr int largestRate = 64;

    // The surroundings of an image pixel in device pixels, and that pixel's colour; what a
    // magnifier asks its control for.
    struct Source {
        std::function<QImage(imaging::Point centre, int rate, QSize size)> picture;
        std::function<imaging::Rgba(imaging::Point)> color;
    };

    // `owner` is the canvas whose window it belongs to and at whose corner it shows.
    Magnifier(Source source, QWidget* owner);

    void setRate(int rate);
    void lookAt(imaging::Point pixel);

  protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    void paintPicture(QPainter& painter, const QRect& room);
    void paintReadOut(QPainter& painter, const QRect& room);

    Source source_;
    QWidget* owner_;
    int rate_ = 8;
    imaging::Point pixel_;
    QPoint grab_;
};

} // namespace kvn::engine::detail
