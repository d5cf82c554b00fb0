#include "shell/splash.h"

#include <QGuiApplication>
#include <QLabel>

#include "dialogs/look.h"
#include "shell/frmSplash.h"

namespace kvn::shell {

Splash::Splash() = default;
Splash::~Splash() = default;

void Splash::open(const QString& path) {
    const QPixmap picture = dialogs::splashPicture(path, qGuiApp->devicePixelRatio());
    if (picture.isNull()) return;
    window_ = std::make_unique<QLabel>();
    window_->setWindowFlags(Qt::SplashScreen | Qt::FramelessWindowHint);
    window_->setObjectName(QStringLiteral("Splash1"));
    window_->setPixmap(picture);
    window_->adjustSize();
    centerOnScreen(*window_);
}

void Splash::show() {
    if (!window_) return;
    window_->show();
    window_->repaint();
}

void Splash::close() {
    window_.reset();
}

} // namespace kvn::shell
