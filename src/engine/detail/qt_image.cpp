#include "engine/detail/qt_image.h"

#include <cstring>

#include "basic/error.h"
#include "imaging/convert.h"

namespace kvn::engine::detail {
namespace {

using imaging::ImageType;

QImage::Format qtFormat(ImageType type) {
    switch (type) {
    case ImageType::Bit1:
        return QImage::Format_Mono;
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return QImage::Format_Indexed8;
    case ImageType::Gray8:
        return QImage::Format_Grayscale8;
    case ImageType::Rgb24:
        return QImage::Format_RGB888;
    case ImageType::GrayAlpha16:
    case ImageType::Rgba32:
        break;
    }
    return QImage::Format_RGBA8888;
}

QVector<QRgb> colorTable(const imaging::Palette& palette, std::size_t least) {
    QVector<QRgb> table;
    for (std::size_t i = 0; i < std::max(palette.size(), least); ++i) {
        const imaging::Rgba c = palette[i];
        table.append(qRgba(c.r, c.g, c.b, c.a));
    }
    return table;
}

imaging::Palette paletteOf(const QVector<QRgb>& table) {
    std::vector<imaging::Rgba> colors;
    for (const QRgb c : table)
        colors.push_back({static_cast<std::uint8_t>(qRed(c)), static_cast<std::uint8_t>(qGreen(c)),
                          static_cast<std::uint8_t>(qBlue(c)),
                          static_cast<std::uint8_t>(qAlpha(c))});
    return imaging::Palette(std::move(colors));
}

imaging::Raster rowsOf(const QImage& image, ImageType type) {
    imaging::Raster raster = imaging::Raster::uninitialized(type, image.width(), image.height());
    const imaging::View view = raster.edit();
    for (int y = 0; y < view.height; ++y)
        std::memcpy(view.row(y), image.constScanLine(y), raster.rowBytes());
    if (imaging::hasPalette(type)) raster.setPalette(paletteOf(image.colorTable()));
    return raster;
}

bool clearEverywhere(const imaging::Raster& raster) {
    const imaging::ConstView view = raster.view();
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            if (view.row(y)[x * 4 + 3] != 0) return false;
    return true;
}

} // namespace

QImage toQImage(const imaging::Raster& raster) {
    if (raster.isEmpty()) return {};
    if (raster.type() == ImageType::GrayAlpha16) {
        imaging::Task task;
        return toQImage(imaging::convertType(raster, ImageType::Rgba32, task));
    }
    QImage image(raster.width(), raster.height(), qtFormat(raster.type()));
    if (image.isNull()) throw RuntimeError(errors::outOfMemory, "Out of memory.", "Image");
    if (imaging::hasPalette(raster.type()))
        image.setColorTable(colorTable(raster.palette(), raster.type() == ImageType::Bit1 ? 2 : 1));
    const imaging::ConstView view = raster.view();
    for (int y = 0; y < view.height; ++y)
        std::memcpy(image.scanLine(y), view.row(y), raster.rowBytes());
    return image;
}

imaging::Raster fromQImage(const QImage& image) {
    if (image.isNull()) return {};
    switch (image.format()) {
    case QImage::Format_Mono:
        return rowsOf(image, ImageType::Bit1);
    case QImage::Format_MonoLSB:
        return rowsOf(image.convertToFormat(QImage::Format_Mono), ImageType::Bit1);
    case QImage::Format_Indexed8: {
        const bool clear = paletteOf(image.colorTable()).hasTransparency();
        return rowsOf(image, clear ? ImageType::Indexed8Alpha : ImageType::Indexed8);
    }
    case QImage::Format_Grayscale8:
        return rowsOf(image, ImageType::Gray8);
    case QImage::Format_Grayscale16:
        return rowsOf(image.convertToFormat(QImage::Format_Grayscale8), ImageType::Gray8);
    default:
        break;
    }
    if (!image.hasAlphaChannel())
        return rowsOf(image.convertToFormat(QImage::Format_RGB888), ImageType::Rgb24);
    const imaging::Raster raster =
        rowsOf(image.convertToFormat(QImage::Format_RGBA8888), ImageType::Rgba32);
    if (!clearEverywhere(raster)) return raster;
    imaging::Task task;
    return imaging::convertType(raster, ImageType::Rgb24, task);
}

} // namespace kvn::engine::detail
