#include "imaging/operations/support/color_maps.h"

#include <atomic>

#include "imaging/convert.h"

namespace kvn::imaging {
namespace {

bool isGray(ImageType type) {
    return type == ImageType::Gray8 || type == ImageType::GrayAlpha16;
}

// The palette as a row of RGBA pixels goes through the same kernel as the pixels of a picture.
Raster mapPalette(const Raster& source, const ColorRow& row) {
    Palette palette = source.palette();
    if (source.type() == ImageType::Bit1 && palette.isEmpty()) palette = Palette::blackAndWhite();
    std::vector<std::uint8_t> in, out(palette.size() * 4);
    for (const Rgba& c : palette.colors())
        in.insert(in.end(), {c.r, c.g, c.b, c.a});
    row(in.data(), out.data(), static_cast<int>(palette.size()), 4);
    for (std::size_t i = 0; i < palette.size(); ++i)
        palette.set(i, {out[i * 4], out[i * 4 + 1], out[i * 4 + 2], in[i * 4 + 3]});
    Raster result = source;
    result.setPalette(std::move(palette));
    return result;
}

Raster mapRows(const Raster& source, Task& task, const ColorRow& row) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView in = source.view();
    const View out = result.edit();
    const int channels = bytesPerPixel(source.type());
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            row(in.row(y), out.row(y), in.width, channels);
    });
    return result;
}

} // namespace

Raster promoted(const Raster& source, Task& task) {
    if (!hasPalette(source.type())) return source;
    return convertType(source, hasAlpha(source.type()) ? ImageType::Rgba32 : ImageType::Rgb24,
                       task);
}

Raster promotedToColor(const Raster& source, Task& task) {
    return convertType(source, hasAlpha(source.type()) ? ImageType::Rgba32 : ImageType::Rgb24,
                       task);
}

bool isOpaque(const Raster& source) {
    if (!hasAlpha(source.type())) return true;
    if (hasPalette(source.type())) return !source.palette().hasTransparency();
    const ConstView view = source.view();
    const int channels = bytesPerPixel(source.type());
    std::atomic<bool> opaque{true};
    Task task;
    parallelRows(view.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1 && opaque.load(std::memory_order_relaxed); ++y) {
            const std::uint8_t* row = view.row(y) + channels - 1;
            std::uint8_t all = 255;
            for (int x = 0; x < view.width; ++x)
                all &= row[static_cast<std::size_t>(x) * channels];
            if (all != 255) opaque = false;
        }
    });
    return opaque;
}

Raster mapChannels(const Raster& source, const ColorTables& tables, Task& task) {
    const bool same = tables.red == tables.green && tables.green == tables.blue;
    static const ByteTable identity = identityTable();
    const ByteTable* const order[4] = {&tables.red, &tables.green, &tables.blue, &identity};
    const ColorRow row = [&](const std::uint8_t* in, std::uint8_t* out, int count, int channels) {
        const auto pixels = static_cast<std::size_t>(count);
        if (channels == 1 || (channels == 3 && same))
            lookUp(in, out, pixels * static_cast<std::size_t>(channels), tables.red);
        else
            lookUpChannels(in, out, pixels, channels == 2 ? order + 2 : order, channels);
    };
    if (hasPalette(source.type())) return mapPalette(source, row);
    if (isGray(source.type()) && !same) return mapRows(promotedToColor(source, task), task, row);
    return mapRows(source, task, row);
}

Raster mapColors(const Raster& source, Task& task, const ColorRow& row) {
    if (hasPalette(source.type())) return mapPalette(source, row);
    return mapRows(promotedToColor(source, task), task, row);
}

} // namespace kvn::imaging
