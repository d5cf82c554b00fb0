#include "imaging/operations/support/color_maps.h"

#include <atomic>
#include <cstring>

#include "imaging/convert.h"

namespace kvn::imaging {
namespace {

bool isGray(ImageType type) {
    return type == ImageType::Gray8 || type == ImageType::GrayAlpha16;
}

ImageType resultType(ImageType from, ResultForm form) {
    using enum ResultForm;
    const bool adds = form == WithAlpha || form == ColorWithAlpha;
    const bool drops = form == WithoutAlpha || form == ColorWithoutAlpha;
    const bool alpha = adds || (hasAlpha(from) && !drops);
    if (from == ImageType::Bit1 && !alpha) return from;
    if (hasPalette(from)) return alpha ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    const bool colors = form == Color || form == ColorWithAlpha || form == ColorWithoutAlpha;
    if (isGray(from) && !colors) return alpha ? ImageType::GrayAlpha16 : ImageType::Gray8;
    return alpha ? ImageType::Rgba32 : ImageType::Rgb24;
}

// The picture with palette type `to`; the bytes of both indexed types are the same.
Raster withType(const Raster& source, ImageType to, Task& task) {
    if (to == source.type()) return source;
    if (source.type() == ImageType::Bit1) return convertType(source, to, task);
    Raster result = Raster::uninitialized(to, source.width(), source.height());
    const View out = result.edit();
    for (int y = 0; y < source.height(); ++y)
        std::memcpy(out.row(y), source.view().row(y), source.rowBytes());
    return result;
}

// The palette as a row of RGBA pixels goes through the same kernel as the pixels of a picture.
Raster mapPalette(const Raster& source, ImageType to, Task& task, const RowKernel& kernel) {
    Palette palette = source.palette();
    if (source.type() == ImageType::Bit1 && palette.isEmpty()) palette = Palette::blackAndWhite();
    std::vector<std::uint8_t> in, out(palette.size() * 4);
    const auto alpha = [](ImageType type, std::uint8_t a) {
        return hasAlpha(type) ? a : std::uint8_t{255};
    };
    for (const Rgba& c : palette.colors())
        in.insert(in.end(), {c.r, c.g, c.b, alpha(source.type(), c.a)});
    kernel({in.data(), 4, out.data(), 4, static_cast<int>(palette.size())});
    for (std::size_t i = 0; i < palette.size(); ++i)
        palette.set(i, {out[i * 4], out[i * 4 + 1], out[i * 4 + 2], alpha(to, out[i * 4 + 3])});
    Raster result = withType(source, to, task);
    result.setPalette(std::move(palette));
    return result;
}

} // namespace

Raster mapRows(const Raster& source, ResultForm form, Task& task, const RowKernel& kernel) {
    const ImageType to = resultType(source.type(), form);
    if (hasPalette(source.type())) return mapPalette(source, to, task, kernel);
    Raster result = Raster::uninitialized(to, source.width(), source.height());
    const ConstView in = source.view();
    const View out = result.edit();
    const int inChannels = bytesPerPixel(in.type), outChannels = bytesPerPixel(to);
    parallelRows(in.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            kernel({in.row(y), inChannels, out.row(y), outChannels, in.width});
    });
    return result;
}

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
    const RowKernel kernel = [&](const PixelRow& row) {
        const auto pixels = static_cast<std::size_t>(row.count);
        const int channels = row.inChannels;
        if (channels == 1 || (channels == 3 && same))
            lookUp(row.in, row.out, pixels * static_cast<std::size_t>(channels), tables.red);
        else
            lookUpChannels(row.in, row.out, pixels, channels == 2 ? order + 2 : order, channels);
    };
    const Raster& pixels = isGray(source.type()) && !same ? promotedToColor(source, task) : source;
    return mapRows(pixels, ResultForm::SameType, task, kernel);
}

} // namespace kvn::imaging
