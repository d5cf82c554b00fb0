#include "shell/frame_place.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QScreen>
#include <QWidget>

#include "basic/save_file.h"

namespace kvn::shell {

namespace {

constexpr int largestWidth = 1440, largestHeight = 960; // of a first start, in pixels
constexpr QSize smallScreen(1100, 700);                 // a smaller one is filled
constexpr qint64 largestFile = 4096;                    // bytes; ours has under a hundred

QString placeFile() {
    QString folder = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(folder)) folder = QDir::homePath() + QStringLiteral("/.local/state");
    return folder + QStringLiteral("/kestrelvane/frame");
}

void placeFirst(QWidget& frame) {
    const QRect room = frame.screen()->availableGeometry();
    if (room.width() < smallScreen.width() || room.height() < smallScreen.height())
        frame.setWindowState(frame.windowState() | Qt::WindowMaximized);
    const QSize size = QSize(room.width() * 85 / 100, room.height() * 85 / 100)
                           .boundedTo({largestWidth, largestHeight});
    frame.resize(size);
    frame.move(room.center() - QRect(QPoint(), size).center());
}

} // namespace

void restoreFramePlace(QWidget& frame) {
    QFile file(placeFile());
    const bool readable = file.open(QIODevice::ReadOnly);
    const QByteArray place =
        readable ? QByteArray::fromBase64(file.read(largestFile)) : QByteArray();
    if (place.isEmpty() || !frame.restoreGeometry(place)) placeFirst(frame);
}

void saveFramePlace(const QWidget& frame) {
    const QString path = placeFile();
    if (!QDir().mkpath(QFileInfo(path).path())) return;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(frame.saveGeometry().toBase64());
    commitWhole(file);
}

} // namespace kvn::shell
