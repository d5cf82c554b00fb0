#include "imaging/codecs/tiff_strips.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/codecs/deflate.h"
#include "imaging/codecs/packbits.h"
#include "imaging/codecs/tiff_handle.h"
#include "imaging/convert.h"

namespace kvn::imaging {

namespace {

std::uint16_t compressionOf(int option) {
    constexpr std::array<std::uint16_t, 7> list{
        COMPRESSION_NONE,     COMPRESSION_CCITTFAX3,     COMPRESSION_CCITTFAX4, COMPRESSION_JPEG,
        COMPRESSION_PACKBITS, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_LZW};
    const bool known = option >= 0 && option < static_cast<int>(list.size());
    return known ? list[static_cast<std::size_t>(option)] : list[0];
}

// Bits keep their values: white first, black first, or any two colours as a palette.
std::uint16_t bitPhotometric(const Palette& palette) {
    const Rgba black{0, 0, 0, 255}, white{255, 255, 255, 255};
    if (palette[0] == black && palette[1] == white) return PHOTOMETRIC_MINISBLACK;
    if (palette[0] == white && palette[1] == black) return PHOTOMETRIC_MINISWHITE;
    return PHOTOMETRIC_PALETTE;
}

std::uint16_t photometricOf(const TiffForm& form) {
    switch (form.raster.type()) {
    case ImageType::Bit1:
        return bitPhotometric(form.raster.palette());
    case ImageType::Indexed8:
        return PHOTOMETRIC_PALETTE;
    case ImageType::Gray8:
    case ImageType::GrayAlpha16:
        return PHOTOMETRIC_MINISBLACK;
    default:
        return form.compression == COMPRESSION_JPEG ? PHOTOMETRIC_YCBCR : PHOTOMETRIC_RGB;
    }
}

// Long strips pack better, short ones keep more cores busy.
int rowsPerStrip(const TiffForm& form) {
    constexpr std::size_t stripBytes = 512 << 10;
    constexpr int jpegBlock = 16;
    const auto rows =
        static_cast<int>(std::max<std::size_t>(1, stripBytes / form.raster.rowBytes()));
    if (form.compression != COMPRESSION_JPEG) return std::min(rows, form.raster.height());
    return (rows + jpegBlock - 1) / jpegBlock * jpegBlock;
}

// Rows without padding between them, and without whatever stands behind the last bit of a row.
void joinRows(const ConstView& view, int y0, int y1, Bytes& rows) {
    const std::size_t size = rowBytes(view.type, view.width);
    rows.resize(size * static_cast<std::size_t>(y1 - y0));
    for (int y = y0; y < y1; ++y) {
        std::uint8_t* to = rows.data() + size * static_cast<std::size_t>(y - y0);
        std::memcpy(to, view.row(y), size);
        if (view.type == ImageType::Bit1 && view.width % 8 != 0)
            to[size - 1] &= static_cast<std::uint8_t>(0xff00 >> view.width % 8);
    }
}

// From the end, so that each sample still finds its neighbour unchanged.
void storeDifferences(Bytes& rows, std::size_t rowSize, std::size_t samples) {
    for (std::size_t start = 0; start < rows.size(); start += rowSize) {
        std::uint8_t* row = rows.data() + start;
        for (std::size_t i = rowSize - 1; i >= samples; --i)
            row[i] = static_cast<std::uint8_t>(row[i] - row[i - samples]);
    }
}

Bytes packedBits(const Bytes& rows, std::size_t rowSize) {
    Bytes packed;
    packed.reserve(rows.size() + rows.size() / 64 + 2 * (rows.size() / rowSize + 1));
    for (std::size_t start = 0; start < rows.size(); start += rowSize)
        appendPackedBits({rows.data() + start, rowSize}, packed);
    return packed;
}

// The fields that tell the library's encoders what they need.
void setEncoder(const TiffWriter& writer, const TiffForm& form, int height) {
    writer.set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(form.raster.width()));
    writer.set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(height));
    writer.set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(height));
    writer.set(TIFFTAG_BITSPERSAMPLE, form.bits());
    writer.set(TIFFTAG_SAMPLESPERPIXEL, form.samples());
    writer.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    writer.set(TIFFTAG_PHOTOMETRIC, static_cast<int>(form.photometric));
    writer.set(TIFFTAG_COMPRESSION, static_cast<int>(form.compression));
    if (form.differences) writer.set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (form.compression != COMPRESSION_JPEG) return;
    writer.set(TIFFTAG_JPEGQUALITY, form.jpegQuality);
    if (form.photometric != PHOTOMETRIC_YCBCR) return;
    writer.set(TIFFTAG_YCBCRSUBSAMPLING, form.chromaStep, form.chromaStep);
    writer.set(TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

// One strip through the library, as a small file of its own in memory.
Bytes packedByLibrary(const TiffForm& form, Bytes& rows, int height, Bytes* jpegTables) {
    MemorySink sink;
    sink.bytes().reserve(rows.size() + rows.size() / 8);
    std::uint64_t at = 0, packed = 0;
    {
        const TiffWriter writer(sink, "w");
        setEncoder(writer, form, height);
        const auto size = static_cast<tmsize_t>(rows.size());
        writer.require(TIFFWriteEncodedStrip(writer.get(), 0, rows.data(), size) == size);
        at = TIFFGetStrileOffset(writer.get(), 0);
        packed = TIFFGetStrileByteCount(writer.get(), 0);
        if (jpegTables) {
            std::uint32_t count = 0;
            std::uint8_t* tables = nullptr;
            TIFFGetField(writer.get(), TIFFTAG_JPEGTABLES, &count, &tables);
            if (tables) jpegTables->assign(tables, tables + count);
        }
    }
    Bytes strip = std::move(sink.bytes());
    strip.erase(strip.begin(), strip.begin() + static_cast<std::ptrdiff_t>(at));
    strip.resize(packed);
    return strip;
}

} // namespace

TiffForm tiffFormOf(const Raster& page, const WriteOptions& options, Task& task) {
    TiffForm form;
    form.compression = compressionOf(options.tiffCompression);
    form.jpegQuality = std::clamp(options.jpegQuality, 1, 100);
    // The same step as in JPEG files.
    constexpr int fullChromaFrom = 90;
    if (form.jpegQuality >= fullChromaFrom) form.chromaStep = 1;
    const bool fax =
        form.compression == COMPRESSION_CCITTFAX3 || form.compression == COMPRESSION_CCITTFAX4;
    if (fax)
        form.raster = convertType(page, ImageType::Bit1, task);
    else if (page.type() == ImageType::Indexed8Alpha)
        form.raster = convertType(page, ImageType::Rgba32, task);
    else
        form.raster = page;
    const ImageType type = form.raster.type();
    if (form.compression == COMPRESSION_JPEG && type != ImageType::Gray8 &&
        type != ImageType::Rgb24)
        form.compression = COMPRESSION_ADOBE_DEFLATE;
    form.photometric = photometricOf(form);
    // The indices of neighbours say nothing of each other.
    form.differences =
        (form.compression == COMPRESSION_LZW || form.compression == COMPRESSION_ADOBE_DEFLATE) &&
        !hasPalette(type);
    form.rowsPerStrip = rowsPerStrip(form);
    return form;
}

Bytes tiffJpegTables(const TiffForm& form) {
    Bytes tables;
    if (form.compression != COMPRESSION_JPEG) return tables;
    const int height = std::min(16, form.raster.height());
    Bytes rows;
    joinRows(form.raster.view(), 0, height, rows);
    packedByLibrary(form, rows, height, &tables);
    return tables;
}

void packTiffStrip(const TiffForm& form, int strip, Bytes& packed) {
    const int y0 = strip * form.rowsPerStrip;
    const int y1 = std::min(y0 + form.rowsPerStrip, form.raster.height());
    joinRows(form.raster.view(), y0, y1, packed);
    if (form.compression == COMPRESSION_NONE) return;
    if (form.compression == COMPRESSION_PACKBITS) {
        packed = packedBits(packed, form.raster.rowBytes());
        return;
    }
    if (form.compression != COMPRESSION_ADOBE_DEFLATE) {
        packed = packedByLibrary(form, packed, y1 - y0, nullptr);
        return;
    }
    if (form.differences)
        storeDifferences(packed, form.raster.rowBytes(), static_cast<std::size_t>(form.samples()));
    packed = zlibStream(packed);
}

} // namespace kvn::imaging
