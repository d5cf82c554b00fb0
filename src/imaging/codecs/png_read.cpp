#include <cstring>
#include <memory>

#include <libdeflate.h>

#include "basic/error.h"
#include "imaging/codecs/png_chunks.h"
#include "imaging/codecs/png_filter.h"
#include "imaging/codecs/png_library.h"
#include "imaging/codecs/png_rows.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/orientation.h"

namespace kvn::imaging {

namespace {

[[noreturn]] void refuse(const std::string& why) {
    throw RuntimeError(errors::invalidPicture, "The PNG file cannot be read: " + why + ".",
                       "Import");
}

std::uint64_t filteredBytes(const PngHeader& header) {
    return (header.rowBytes() + 1) * static_cast<std::uint64_t>(header.height);
}

// Deflate packs 1032 bytes into one at best. A large picture in a file that cannot hold half of
// it is nothing but a claim, and would take memory and time for no picture.
void checkPlausible(const PngOutline& outline) {
    constexpr std::uint64_t alwaysFine = std::uint64_t{150} << 20, mostPacked = 1032;
    const std::uint64_t bytes = filteredBytes(*outline.header);
    if (bytes > alwaysFine && bytes / mostPacked / 2 > outline.dataBytes)
        refuse("it ends long before its picture of " + std::to_string(outline.header->width) +
               " x " + std::to_string(outline.header->height) + " pixels");
}

PngOutline checkedOutline(std::span<const std::uint8_t> file) {
    PngOutline outline = outlinePng(file);
    if (!outline.header) refuse("its header is damaged");
    if (outline.header->color == PngColor::Palette && outline.palette.empty())
        refuse("it has no palette");
    return outline;
}

// All IDAT chunks as one stream; no copy for a single chunk.
std::span<const std::uint8_t> joined(const PngOutline& outline, Bytes& storage) {
    if (outline.data.size() == 1) return outline.data.front();
    storage.reserve(outline.dataBytes);
    for (const auto& part : outline.data)
        storage.insert(storage.end(), part.begin(), part.end());
    return storage;
}

bool inflateAll(std::span<const std::uint8_t> stream, std::uint8_t* to, std::size_t size) {
    struct Free {
        void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
    };
    const std::unique_ptr<libdeflate_decompressor, Free> inflater(libdeflate_alloc_decompressor());
    if (!inflater) throw std::bad_alloc();
    return libdeflate_zlib_decompress(inflater.get(), stream.data(), stream.size(), to, size,
                                      nullptr) == LIBDEFLATE_SUCCESS;
}

// Unfilters inflated rows into the raster. False for a filter that there is not.
bool unfilterInto(const std::uint8_t* filtered, const PngHeader& header,
                  const PngRowConverter& converter, const View& view, Task& task) {
    const std::size_t size = header.rowBytes();
    Bytes spare[2] = {Bytes(size), Bytes(size)};
    const std::uint8_t* above = spare[1].data();
    for (int y = 0; y < header.height; ++y, filtered += size + 1) {
        std::uint8_t* row = converter.isDirect() ? view.row(y) : spare[y % 2].data();
        if (!unfilterPngRow(filtered[0], filtered + 1, above, row, size, header.pixelBytes()))
            return false;
        if (!converter.isDirect()) converter.convert(row, view.row(y));
        above = row;
        if (y % 64 == 0) task.report(0.7 + 0.3 * y / header.height);
    }
    return true;
}

// The whole picture in one go. False, with the raster in any state, for a damaged file.
bool readQuickly(const PngOutline& outline, const PngRowConverter& converter, Raster& raster,
                 Task& task) {
    constexpr std::uint64_t largest = std::uint64_t{1} << 30;
    const PngHeader& header = *outline.header;
    const std::uint64_t size = filteredBytes(header);
    if (!outline.intact || header.interlaced || size > largest) return false;
    Bytes storage;
    const auto stream = joined(outline, storage);
    PixelBuffer filtered(size, 1);
    std::uint8_t* data = filtered.detach();
    if (!inflateAll(stream, data, size)) return false;
    task.report(0.7);
    return unfilterInto(data, header, converter, raster.edit(), task);
}

// Bits behind the last pixel may be anything in a file.
void clearPadding(Raster& raster) {
    const int used = raster.width() % 8;
    if (raster.type() != ImageType::Bit1 || used == 0) return;
    const View view = raster.edit();
    for (int y = 0; y < view.height; ++y)
        view.row(y)[view.width / 8] &= static_cast<std::uint8_t>(0xff00 >> used);
}

void fillMissing(const View& view, const Palette& palette, int from) {
    int value = 0;
    if (hasPalette(view.type)) {
        value =
            palette.nearest({0, 0, 0, hasAlpha(view.type) ? std::uint8_t{0} : std::uint8_t{255}});
        if (view.type == ImageType::Bit1 && value == 1) value = 0xff;
    }
    for (int y = from; y < view.height; ++y)
        std::memset(view.row(y), value, rowBytes(view.type, view.width));
}

void readWithLibrary(std::span<const std::uint8_t> file, const PngOutline& outline,
                     const PngRowConverter& converter, Raster& raster,
                     std::vector<std::string>& warnings, Task& task) {
    const PngRawRows raw = readPngRows(file, *outline.header, task);
    if (raw.count == 0) refuse(raw.message.empty() ? "it has no pixels" : raw.message);
    const View view = raster.edit();
    for (int y = 0; y < raw.count; ++y)
        converter.convert(raw.rows.row(y), view.row(y));
    fillMissing(view, raster.palette(), raw.count);
    if (!raw.message.empty() || !outline.intact)
        warnings.push_back("The PNG file is damaged" +
                           (raw.message.empty() ? "." : ": " + raw.message + "."));
}

} // namespace

Picture readPng(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) {
    PngOutline outline = checkedOutline(file);
    const PngHeader& header = *outline.header;
    const PngRowConverter converter(outline);
    const int orientation = exifOrientation(outline.metadata.exif);
    limits.take(header.width, header.height, converter.type(), swapsSides(orientation));
    checkPlausible(outline);

    Picture picture;
    picture.type = FileType::Png;
    Raster raster = Raster::uninitialized(converter.type(), header.width, header.height);
    raster.setPalette(converter.palette());
    if (!readQuickly(outline, converter, raster, task))
        readWithLibrary(file, outline, converter, raster, picture.warnings, task);
    clearPadding(raster);
    raster = turnedUpright(raster, orientation, task);
    picture.pages.push_back(
        {std::move(raster), std::make_shared<Metadata>(std::move(outline.metadata)), {}});
    return picture;
}

std::vector<PageFacts> pngFacts(std::span<const std::uint8_t> file, ReadLimits limits) {
    const PngOutline outline = checkedOutline(file);
    const PngHeader& header = *outline.header;
    const ImageType type = pngImageType(outline);
    const bool turned = swapsSides(exifOrientation(outline.metadata.exif));
    limits.take(header.width, header.height, type, turned);
    PageFacts facts{header.width, header.height, type, header.bits()};
    if (turned) std::swap(facts.width, facts.height);
    return {facts};
}

} // namespace kvn::imaging
