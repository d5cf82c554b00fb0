#include "dialogs/icons.h"

#include <QFile>
#include <QGuiApplication>
#include <QImageReader>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

#include "dialogs/look.h"

namespace kvn::dialogs {

namespace {

QColor ink(QIcon::Mode mode) {
    const QPalette palette = QGuiApplication::palette();
    switch (mode) {
    case QIcon::Disabled:
        return palette.color(QPalette::Disabled, QPalette::WindowText);
    case QIcon::Selected:
        return palette.color(QPalette::Active, QPalette::HighlightedText);
    default:
        return palette.color(QPalette::Active, QPalette::WindowText);
    }
}

QString cacheKey(const QString& file, const QSize& size, const QColor& color) {
    return QStringLiteral("kvn-ink %1 %2x%3 %4")
        .arg(file)
        .arg(size.width())
        .arg(size.height())
        .arg(color.rgba());
}

} // namespace

void InkIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
                          QIcon::State state) {
    const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
    painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
}

// `size` is in device pixels.
QPixmap InkIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) {
    const QColor color = ink(mode);
    QPixmap result;
    const QString key = cacheKey(file_, size, color);
    if (QPixmapCache::find(key, &result)) return result;
    QImageReader reader(file_);
    reader.setScaledSize(size);
    QImage image = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return {};
    QPainter painter(&image);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    painter.end();
    result = QPixmap::fromImage(image);
    QPixmapCache::insert(key, result);
    return result;
}

// Qt asks in device pixels up to 6.7, and in device independent ones from 6.8 on.
QPixmap InkIconEngine::scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                                    qreal scale) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    return pixmap((QSizeF(size) * scale).toSize(), mode, state);
#else
    Q_UNUSED(scale);
    return pixmap(size, mode, state);
#endif
}

QIcon icon(const QString& name) {
    const QString own = QStringLiteral(":/kvn/icons/%1.svg").arg(name);
    const bool ours = QFile::exists(own);
    // Tool icons come as one family: a theme that has a few of them would mix two hands.
    const bool family = name.startsWith(QLatin1String("tool-"));
    if (!family && QIcon::hasThemeIcon(name)) return QIcon::fromTheme(name);
    return ours ? QIcon(new InkIconEngine(own)) : QIcon();
}

} // namespace kvn::dialogs
