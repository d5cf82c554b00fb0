#include "imaging/codecs/metafile/dib.h"

#include <algorithm>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/bmp_read.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/plausible.h"

namespace kvn::imaging::metafile {

namespace {

void takeIndexedPalette(BmpHeader& bitmap, const Dib& dib, const Palette& logical) {
    const LittleFields fields(dib.header);
    const std::uint32_t size = fields.u32(0), most = 1u << bitmap.bits;
    const std::uint32_t used = size >= 36 ? fields.u32(32) : 0;
    const std::uint32_t count = used == 0 ? most : std::min(used, most);
    std::vector<Rgba> colors;
    for (std::uint32_t i = 0; i < count; ++i)
        colors.push_back(logical[fields.u16(std::size_t{size} + 2 * i)]);
    bitmap.palette = Palette(std::move(colors));
    if (dib.pixels.empty())
        bitmap.pixels = partOf(dib.header, std::uint64_t{size} + 2 * count, ~0u);
}

BmpHeader headerOf(const Dib& dib, const Palette& logical) {
    BmpHeader bitmap = readBitmapHeader(dib.header, dib.pixels);
    if (dib.paletteIndices && bitmap.bits >= 1 && bitmap.bits <= 8)
        takeIndexedPalette(bitmap, dib, logical);
    if (dib.rows > 0) bitmap.height = std::min(bitmap.height, dib.rows);
    return bitmap;
}

const Codec* embeddedCodec(const BmpHeader& bitmap) {
    if (bitmap.packing == BmpPacking::Jpeg) return &jpegCodec();
    return bitmap.packing == BmpPacking::Png ? &pngCodec() : nullptr;
}

} // namespace

DibFacts factsOf(const Dib& dib) {
    try {
        BmpHeader bitmap = readBitmapHeader(dib.header, dib.pixels);
        bitmap.spareByte = false;
        return {bitmap.width, bitmap.height, bitmap.bits, bitmap.topDown, bmpImageType(bitmap)};
    } catch (const RuntimeError&) {
        return {};
    }
}

Raster decodeDib(const Dib& dib, const Palette& logical, bool alpha, ReadLimits limits, Task& task,
                 std::vector<std::string>& warnings) {
    BmpHeader bitmap = headerOf(dib, logical);
    if (const Codec* codec = embeddedCodec(bitmap))
        return std::move(codec->read(bitmap.pixels, limits, task).pages.front().raster);
    if (bitmap.spareByte) {
        bitmap.spareByte = false;
        bitmap.masks[3] = alpha ? 0xff000000 : 0;
    }
    const ImageType type = bmpImageType(bitmap);
    limits.take(bitmap.width, bitmap.height, type);
    requirePlausible(bitmap.width, bitmap.height, type, bitmap.pixels.size());
    return readBmpPixels(bitmap, type, task, warnings);
}

Raster readDib(const Dib& dib, const Palette& logical, bool alpha, draw::Effort& effort) {
    constexpr double perPixel = 8; // nanoseconds
    constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30;
    const DibFacts facts = factsOf(dib);
    if (!effort.spend(perPixel * facts.width * facts.height)) return {};
    try {
        ReadLimits limits;
        limits.pixelBytes = mostBytes;
        Task task;
        std::vector<std::string> warnings;
        return decodeDib(dib, logical, alpha, limits, task, warnings);
    } catch (const RuntimeError&) {
        return {};
    }
}

void divideByAlpha(Raster& raster) {
    if (raster.type() != ImageType::Rgba32) return;
    const View view = raster.edit();
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* p = view.row(y);
        for (int x = 0; x < view.width; ++x, p += 4)
            for (int c = 0; c < 3 && p[3] != 0 && p[3] != 255; ++c)
                p[c] = static_cast<std::uint8_t>(std::min(255, (p[c] * 255 + p[3] / 2) / p[3]));
    }
}

// Type, width, height, bytes a row, planes, bits a pixel, then rows from the top.
Raster readOldBitmap(std::span<const std::uint8_t> bitmap, std::size_t start) {
    const LittleFields fields(bitmap);
    const auto width = static_cast<std::int16_t>(fields.u16(2));
    const auto height = static_cast<std::int16_t>(fields.u16(4));
    const std::size_t stride = fields.u16(6);
    if (width < 1 || height < 1 || fields.byte(8) != 1 || fields.byte(9) != 1) return {};
    Raster raster(ImageType::Bit1, width, height);
    const View view = raster.edit();
    for (int y = 0; y < height; ++y) {
        const auto row = partOf(bitmap, start + stride * static_cast<std::size_t>(y), stride);
        std::memcpy(view.row(y), row.data(), std::min(row.size(), raster.rowBytes()));
    }
    return raster;
}

} // namespace kvn::imaging::metafile
