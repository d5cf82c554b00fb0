#include "document/tools.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPolygonF>
#include <algorithm>
#include <iterator>

#include "dialogs/look.h"

namespace kvn::document {
namespace {

// Tools 1 to 4 are crossed with the modes of the canvas.
constexpr ToolLook looks[] = {
    {0, 0, ""},
    {1, 2, nullptr},
    {2, 1, nullptr},
    {3, 4, nullptr},
    {4, 3, nullptr},
    {5, 5, nullptr},
    {6, 6, nullptr},
    {7, 7, nullptr},
    {8, 8, nullptr},
    {9, 9, nullptr},
    {10, 10, nullptr},
    {11, 11, nullptr},
    {12, 12, nullptr},
    {15, 0, "kvn-tool-text"},
    {16, 0, "kvn-tool-pick-color"},
    {17, 0, "kvn-tool-flood-fill"},
};

constexpr int pointerSize = 32, iconSize = 20; // device independent pixels

void drawArrow(QPainter& painter) {
    const QPolygonF arrow(
        {{0.5, 0.5}, {0.5, 15.5}, {4, 12}, {6.5, 17.5}, {9, 16.5}, {6.5, 11}, {11.5, 11}});
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1));
    painter.setBrush(Qt::black);
    painter.drawPolygon(arrow);
}

} // namespace

const ToolLook* toolLook(int id) {
    const auto found = std::find_if(std::begin(looks), std::end(looks),
                                    [id](const ToolLook& look) { return look.id == id; });
    return found == std::end(looks) ? nullptr : found;
}

QPixmap pointerPicture(const QString& icon) {
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap picture(QSize(pointerSize, pointerSize) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawArrow(painter);
    const int corner = pointerSize - iconSize;
    if (!icon.isEmpty()) dialogs::icon(icon).paint(&painter, corner, corner, iconSize, iconSize);
    return picture;
}

} // namespace kvn::document
