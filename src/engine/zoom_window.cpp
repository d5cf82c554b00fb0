#include <QJsonArray>

#include "engine/detail/imgx_view.h"
#include "engine/imgx.h"

namespace kvn::engine {

void ZoomWindow::Show() {
    view_.record("ImgX.ZoomWindow.Show", {});
    view_.showZoomWindow();
}

void ZoomWindow::Hide() {
    view_.record("ImgX.ZoomWindow.Hide", {});
    view_.hideZoomWindow();
}

void ZoomWindow::setZoomRate(int rate) {
    view_.record("ImgX.ZoomWindow.ZoomRate", {rate});
    view_.setZoomRate(rate);
}

} // namespace kvn::engine
