#include "shell/frmSplash.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

#include "dialogs/look.h"

namespace kvn::shell {

namespace {

constexpr int shownFor = 500; // milliseconds
constexpr int iconSize = 256; // pixels of what stands in for a missing picture

// Switching to another window is no wish to stop the program.
bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return true;
    default:
        return false;
    }
}

} // namespace

void centerOnScreen(QWidget& window) {
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        window.move(screen->availableGeometry().center() - QRect(QPoint(), window.size()).center());
}

frmSplash::frmSplash(const QString& picture)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint), Image1_(new QLabel(this)) {
    setObjectName(QStringLiteral("frmSplash"));
    setWindowTitle(QStringLiteral("OML Kestrel Vane"));
    Image1_->setObjectName(QStringLiteral("Image1"));
    Image1_->setAccessibleName(QStringLiteral("OML Kestrel Vane is starting"));
    const QPixmap pixmap = dialogs::splashPicture(picture, devicePixelRatioF());
    Image1_->setPixmap(pixmap.isNull() ? dialogs::applicationIcon().pixmap(iconSize) : pixmap);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(Image1_);
    setFixedSize(sizeHint());
    centerOnScreen(*this);
    Timer1_.setObjectName(QStringLiteral("Timer1"));
    Timer1_.setSingleShot(true);
    Timer1_.setTimerType(Qt::PreciseTimer);
    connect(&Timer1_, &QTimer::timeout, this, [this] {
        hide();
        emit elapsed();
    });
}

void frmSplash::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!event->spontaneous()) Timer1_.start(shownFor);
}

void frmSplash::keyPressEvent(QKeyEvent* event) {
    if (!isModifier(event->key())) close();
}

void frmSplash::closeEvent(QCloseEvent* event) {
    Timer1_.stop();
    QWidget::closeEvent(event);
    emit unloaded();
}

} // namespace kvn::shell
