#include "imaging/convert.h"

#include <cstring>
#include <utility>
#include <vector>

#include "basic/error.h"
#include "imaging/convert_bilevel.h"
#include "imaging/convert_rows.h"
#include "imaging/quantize.h"
#include "imaging/quantize_colors.h"

namespace kvn::imaging {

namespace {

Palette opaque(const Palette& palette) {
    std::vector<Rgba> colors = palette.colors();
    for (Rgba& color : colors)
        color.a = 255;
    return Palette(std::move(colors));
}

// Any picture to a type that stores colours directly.
Raster toDirect(const Raster& source, ImageType type, Task& task) {
    Raster result = Raster::uninitialized(type, source.width(), source.height());
    const View to = result.edit();
    const RowReader reader(source, type);
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            reader.read(y, to.row(y));
    });
    return result;
}

// Pictures whose pixels can serve as palette indices: those of a palette, and grey without alpha.
Raster keepIndices(const Raster& source, ImageType type, Task& task) {
    Raster result = Raster::uninitialized(type, source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            if (from.type == ImageType::Bit1)
                expandBits(from.row(y), to.row(y), to.width);
            else if (hasPalette(from.type))
                std::memcpy(to.row(y), from.row(y), source.rowBytes());
            else
                convertRow(from.type, ImageType::Gray8, from.row(y), to.row(y), to.width);
        }
    });
    if (!hasPalette(source.type()))
        result.setPalette(Palette::grayRamp());
    else if (hasAlpha(source.type()))
        result.setPalette(hasAlpha(type) ? source.palette() : opaque(source.palette()));
    else
        result.setPalette(opaque(source.palette()));
    return result;
}

bool hasIndices(ImageType from, ImageType to) {
    return hasPalette(from) || from == ImageType::Gray8 ||
           (from == ImageType::GrayAlpha16 && to == ImageType::Indexed8);
}

Raster toIndexed(const Raster& source, ImageType type, Task& task) {
    if (hasIndices(source.type(), type)) return keepIndices(source, type, task);
    const bool withAlpha = hasAlpha(type);
    const auto colors = [&] {
        const Task::Stage stage(task, 0, 0.1);
        return collectColors(source, withAlpha, Palette::maxSize, task);
    }();
    if (colors) {
        const Task::Stage stage(task, 0.1, 1);
        std::vector<Rgba> entries;
        for (const std::uint32_t color : colors->colors())
            entries.push_back(unpacked(color));
        Raster result = placesOf(source, *colors, type, task);
        result.setPalette(Palette(std::move(entries)));
        return result;
    }
    const Palette palette = [&] {
        const Task::Stage stage(task, 0.1, 0.4);
        return choosePalette(source, Palette::maxSize, withAlpha, task);
    }();
    const Task::Stage stage(task, 0.4, 1);
    Raster result = mapToPalette(source, palette, true, task);
    // The mapped picture is of the plain kind if the palette happens to be opaque.
    return convertType(result, type, task);
}

} // namespace

Raster convertType(const Raster& source, ImageType type, Task& task) {
    if (source.isEmpty()) throw RuntimeError(errors::invalidCall, "There is no picture", "Imaging");
    if (source.type() == type) return source;
    switch (type) {
    case ImageType::Bit1:
        return toBilevel(source, task);
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return toIndexed(source, type, task);
    default:
        return toDirect(source, type, task);
    }
}

} // namespace kvn::imaging
