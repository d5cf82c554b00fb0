#include "document/view.h"

#include <QFrame>
#include <QLabel>
#include <QPalette>
#include <algorithm>

#include "basic/numbers.h"
#include "basic/text.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/roles.h"

namespace kvn::document {
namespace {

constexpr double lowestPercent = 0.5, highestPercent = 1600;
constexpr double inStep = 1.25, outStep = 0.75;
constexpr double wheelNotch = 3, wheelStep = 0.1;
constexpr double lowestByWheel = 0.01, highestByWheel = 1000; // factors

bool isWithinLimits(double factor) {
    return factor * 100 >= lowestPercent && factor * 100 <= highestPercent;
}

QString readOut(int x, int y, const engine::Color& color, int depth) {
    const auto byte = [](quint8 value) { return padRight(QString::number(value), 3); };
    return QStringLiteral("X:") + padRight(QString::number(x), 4) + QStringLiteral("    Y:") +
           padRight(QString::number(y), 4) + QStringLiteral("    Pal:") +
           byte(color.PaletteIndex()) + QStringLiteral("   R:") + byte(color.Red()) +
           QStringLiteral("  G:") + byte(color.Green()) + QStringLiteral("  B:") +
           byte(color.Blue()) + QStringLiteral("  A:") + byte(color.Alpha()) +
           QStringLiteral("   ColorDepth: ") + QString::number(depth) + QStringLiteral("bpp");
}

} // namespace

void ZoomIn(frmMain& document) {
    const double zoom = document.ImgX->Zoom();
    if (zoom * 100 <= highestPercent) document.ImgX->setZoom(zoom * inStep);
}

void ZoomOut(frmMain& document) {
    const double zoom = document.ImgX->Zoom();
    if (zoom * 100 >= lowestPercent) document.ImgX->setZoom(zoom * outStep);
}

void ZoomType(frmMain& document, int kind) {
    if (kind == 0) {
        document.ImgX->setFitEnabled(false);
        return;
    }
    document.ImgX->setFitEnabled(true);
    document.ImgX->setZoomFit(kind);
    document.ImgX->setFitEnabled(false);
}

void SetZoomValue(frmMain& document, qint16 percent) {
    if (isWithinLimits(document.ImgX->Zoom())) document.ImgX->setZoom(percent / 100.0);
}

double Zoom(const frmMain& document) {
    return document.ImgX->Zoom();
}

void wheelZoom(frmMain& document, double distance) {
    const double factor = document.ImgX->Zoom() * (1 + distance / wheelNotch * wheelStep);
    if (!isWithinLimits(factor)) return;
    document.ImgX->setZoom(std::min(std::max(factor, lowestByWheel), highestByWheel));
}

void showTitle(frmMain& document, const QString& percent) {
    QString title = fileNameOf(document.FilePath) + u'@' + percent;
    // The placeholder of modified windows, which a file name may contain.
    title.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
    document.setWindowTitle(title);
}

void showZoomTitle(frmMain& document) {
    showTitle(document, QString::fromStdString(oneDecimalText(document.ImgX->Zoom() * 100)) + u'%');
}

void ShowPixelInfo(frmMain& document, int x, int y) {
    if (document.ImgX->IsEmpty()) return;
    const engine::Info info = document.ImgX->Info();
    const int width = info.Width(), height = info.Height();
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    const engine::Color color = info.GetPixel(x, y);
    QPalette palette = document.picPixelColor->palette();
    palette.setColor(QPalette::Window, QColor(color.Red(), color.Green(), color.Blue()));
    document.picPixelColor->setPalette(palette);
    document.lblStatus->setText(readOut(x, y, color, info.ColorDepth()));
    document.services().rules.UpdateStatus(QString::number(x), QString::number(y),
                                           QString::number(width), QString::number(height));
}

} // namespace kvn::document
