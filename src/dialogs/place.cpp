#include "dialogs/place.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>

namespace kvn::dialogs {

namespace {

// Title bar and frame of the usual window managers, which cannot be asked before the first show.
constexpr int titleBar = 40;
constexpr int border = 8;

QRect roomOf(const QWidget& window) {
    const QWidget* owner = window.parentWidget() ? window.parentWidget()->window() : &window;
    const QScreen* screen = owner->screen() ? owner->screen() : QGuiApplication::primaryScreen();
    return screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
}

} // namespace

QSize availableSize(const QWidget& window) {
    return roomOf(window).size() - QSize(2 * border, titleBar + border);
}

void centreOnOwner(QWidget& window) {
    const QRect room = roomOf(window);
    const QWidget* owner = window.parentWidget() ? window.parentWidget()->window() : nullptr;
    const QRect middle = owner && owner->isVisible() ? owner->frameGeometry() : room;
    QRect place(QPoint(), window.size() + QSize(2 * border, titleBar + border));
    place.moveCenter(middle.center());
    place.moveLeft(std::max(room.left(), std::min(place.left(), room.right() - place.width() + 1)));
    place.moveTop(std::max(room.top(), std::min(place.top(), room.bottom() - place.height() + 1)));
    window.move(place.topLeft());
}

} // namespace kvn::dialogs
