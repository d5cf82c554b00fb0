// The pictures that the program carries or finds beside itself.
#include <QFile>
#include <QImageReader>
#include <QSize>

#include "dialogs/look.h"

namespace kvn::dialogs {

namespace {

constexpr QSize splashSize(640, 400);

// A splash file is the program's own, but nothing keeps a user from exchanging it.
constexpr int splashMegabytes = 64;

} // namespace

QPixmap splashPicture(const QString& path, qreal devicePixelRatio) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    QImageReader reader(&file); // by content: the name says nothing
    reader.setAllocationLimit(splashMegabytes);
    const QSize pixels = (QSizeF(splashSize) * devicePixelRatio).toSize();
    reader.setScaledSize(pixels);
    QPixmap picture = QPixmap::fromImageReader(&reader);
    picture.setDevicePixelRatio(devicePixelRatio);
    return picture;
}

QIcon applicationIcon() {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/kvn/app/kestrelvane-%1.png").arg(size), QSize(size, size));
    return icon;
}

QByteArray customResource(const QString& name) {
    QFile file(QStringLiteral(":/kvn/custom/%1.png").arg(name.toLower()));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace kvn::dialogs
