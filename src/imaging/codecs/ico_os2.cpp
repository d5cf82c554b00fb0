#include "imaging/codecs/ico_os2.h"

#include <optional>
#include <tuple>

#include "basic/error.h"
#include "imaging/codecs/bmp_read.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/plausible.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t fileHeader = 14;

constexpr std::uint32_t mark(char first, char second) {
    return static_cast<std::uint32_t>(first | second << 8);
}
constexpr std::uint32_t array = mark('B', 'A'), icon = mark('I', 'C'), colorIcon = mark('C', 'I'),
                        pointer = mark('P', 'T'), colorPointer = mark('C', 'P');

bool isIconMark(std::uint32_t type) {
    return type == icon || type == colorIcon || type == pointer || type == colorPointer;
}

// The mask is twice as high as the picture: shown, its upper half says what is clear, its lower
// half which of two colours the rest has, if no colours follow.
struct Entry {
    BmpHeader mask;
    std::optional<BmpHeader> colors;

    int width() const { return mask.width; }
    int height() const { return mask.height / 2; }
    int bits() const { return colors ? colors->bits : 1; }
    auto rank() const { return std::tuple(std::int64_t{width()} * height(), bits()); }
};

// The bitmap whose file header stands at `at`; its pixels lie elsewhere in the file.
BmpHeader bitmapAt(std::span<const std::uint8_t> file, std::size_t at) {
    const LittleFields fields(file);
    const auto pixels = partOf(file, fields.u32(at + 10), ~0u);
    BmpHeader header = readBitmapHeader(partOf(file, at + fileHeader, ~0u), pixels);
    if (pixels.empty()) header.pixels = {};
    return header;
}

// Behind header and palette of the mask stands the file header of the colours.
std::size_t colorsAt(std::span<const std::uint8_t> file, std::size_t at) {
    const std::uint32_t size = LittleFields(file).u32(at + fileHeader);
    constexpr std::uint32_t oldHeader = 12, colors = 2;
    return at + fileHeader + size + colors * (size == oldHeader ? 3 : 4);
}

std::optional<Entry> entryAt(std::span<const std::uint8_t> file, std::size_t at) {
    const std::uint32_t type = LittleFields(file).u16(at);
    if (!isIconMark(type)) return {};
    try {
        Entry entry{bitmapAt(file, at), {}};
        if (type == colorIcon || type == colorPointer)
            entry.colors = bitmapAt(file, colorsAt(file, at));
        const auto plain = [](const BmpHeader& b) { return b.packing == BmpPacking::Plain; };
        const bool usable =
            entry.mask.bits == 1 && plain(entry.mask) && entry.height() > 0 &&
            (!entry.colors || (plain(*entry.colors) && entry.colors->width == entry.width() &&
                               entry.colors->height == entry.height()));
        return usable ? std::optional(entry) : std::nullopt;
    } catch (const RuntimeError&) {
        return {};
    }
}

Entry largestEntry(std::span<const std::uint8_t> file) {
    constexpr int mostEntries = 256;
    const LittleFields fields(file);
    std::optional<Entry> best;
    std::size_t at = 0;
    for (int i = 0; i < mostEntries; ++i) {
        const bool listed = fields.u16(at) == array;
        const auto entry = entryAt(file, listed ? at + fileHeader : at);
        if (entry && (!best || entry->rank() > best->rank())) best = entry;
        const std::size_t next = listed ? fields.u32(at + 6) : 0;
        if (next <= at) break;
        at = next;
    }
    if (!best)
        throw RuntimeError(errors::invalidPicture,
                           "The ICO file of OS/2 has no picture that can be read.", "Import");
    return *best;
}

void check(const Entry& entry, ReadLimits& limits) {
    limits.take(entry.width(), entry.height(), ImageType::Rgba32);
    const auto pixels = entry.colors ? entry.colors->pixels : entry.mask.pixels;
    requirePlausible(entry.width(), entry.height(), ImageType::Rgba32, pixels.size());
}

} // namespace

bool isOs2Icon(std::span<const std::uint8_t> file) {
    const LittleFields fields(file);
    const std::size_t at = fields.u16(0) == array ? fileHeader : 0;
    const std::uint32_t size = fields.u32(at + fileHeader);
    return isIconMark(fields.u16(at)) && (size == 12 || (size >= 16 && size <= 64)) &&
           fields.u32(at + 10) < file.size();
}

Raster readOs2Icon(std::span<const std::uint8_t> file, ReadLimits limits, Task& task,
                   std::vector<std::string>& warnings) {
    Entry entry = largestEntry(file);
    check(entry, limits);
    const Raster mask = readBmpPixels(entry.mask, ImageType::Bit1, task, warnings);
    Raster colors;
    if (entry.colors) {
        entry.colors->spareByte = false;
        colors = readBmpPixels(*entry.colors, bmpImageType(*entry.colors), task, warnings);
    }
    Raster raster(ImageType::Rgba32, entry.width(), entry.height());
    const View view = raster.edit();
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* to = view.row(y);
        for (int x = 0; x < view.width; ++x, to += 4) {
            const Rgba color = entry.colors ? colors.pixel(x, y) : mask.pixel(x, y + view.height);
            to[0] = color.r;
            to[1] = color.g;
            to[2] = color.b;
            to[3] = mask.index(x, y) ? 0 : 255;
        }
    }
    return raster;
}

PageFacts os2IconFacts(std::span<const std::uint8_t> file, ReadLimits limits) {
    const Entry entry = largestEntry(file);
    check(entry, limits);
    return {entry.width(), entry.height(), ImageType::Rgba32, entry.bits()};
}

} // namespace kvn::imaging
