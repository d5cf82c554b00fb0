#include "imaging/codecs/bmp_header.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t fileHeaderSize = 14;

// The information header's sizes that mark a version of it.
constexpr std::uint32_t coreHeader = 12, windowsHeader = 40, alphaHeader = 56, os2Header = 64,
                        profileHeader = 124;

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

// Little-endian numbers by their place in a file; what lies behind the end of it reads as 0. The
// bytes may lack the file's first ones.
class Fields {
  public:
    explicit Fields(std::span<const std::uint8_t> bytes, std::size_t missing = 0)
        : bytes_(bytes), missing_(missing) {}
    std::uint32_t byte(std::size_t at) const {
        return at - missing_ < bytes_.size() ? bytes_[at - missing_] : 0;
    }
    std::uint32_t u16(std::size_t at) const { return byte(at) | byte(at + 1) << 8; }
    std::uint32_t u32(std::size_t at) const { return u16(at) | u16(at + 2) << 16; }

  private:
    std::span<const std::uint8_t> bytes_;
    std::size_t missing_;
};

struct Layout {
    std::uint32_t headerSize = 0;
    std::uint32_t compression = 0;
    std::uint32_t colorsUsed = 0;
    std::size_t masksEnd = 0; // where a palette would begin
};

bool isOs2(std::uint32_t headerSize) {
    return headerSize == os2Header || (headerSize > coreHeader && headerSize < windowsHeader);
}

// A negative height means that the first row is the top one.
void setSize(BmpHeader& header, std::int32_t width, std::int32_t height) {
    if (width < 1 || height == 0 || height == std::numeric_limits<std::int32_t>::min())
        refuse("The BMP file names a picture without pixels.");
    header.width = width;
    header.topDown = height < 0;
    header.height = height < 0 ? -height : height;
}

BmpPacking packingOf(const Layout& layout) {
    const bool os2 = isOs2(layout.headerSize);
    switch (layout.compression) {
    case 0:
        return BmpPacking::Plain;
    case 1:
        return BmpPacking::Rle8;
    case 2:
        return BmpPacking::Rle4;
    case 3:
        if (os2) refuse("BMP files with Huffman compression cannot be read.");
        return BmpPacking::Plain;
    case 4:
        return os2 ? BmpPacking::Rle24 : BmpPacking::Jpeg;
    case 5:
        return BmpPacking::Png;
    case 6:
        return BmpPacking::Plain;
    default:
        refuse("The BMP file has an unknown compression (" + std::to_string(layout.compression) +
               ").");
    }
}

void checkBits(const BmpHeader& header) {
    const int bits = header.bits;
    bool known =
        bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    if (header.packing == BmpPacking::Rle8) known = bits == 8;
    if (header.packing == BmpPacking::Rle4) known = bits == 4;
    if (header.packing == BmpPacking::Rle24) known = bits == 24;
    if (header.packing == BmpPacking::Jpeg || header.packing == BmpPacking::Png) known = true;
    if (!known) refuse("The BMP file has an unknown depth (" + std::to_string(bits) + " bits).");
}

// Masks stand in the header from its second version on, behind it in the first.
void setMasks(BmpHeader& header, Layout& layout, const Fields& fields) {
    if (header.bits == 16) header.masks = {0x7c00, 0x03e0, 0x001f, 0};
    if (header.bits == 32) header.masks = {0xff0000, 0xff00, 0xff, 0};
    header.spareByte = header.bits == 32;
    const bool masked = (layout.compression == 3 || layout.compression == 6) &&
                        (header.bits == 16 || header.bits == 32);
    if (!masked || isOs2(layout.headerSize)) return;
    const std::size_t at = fileHeaderSize + windowsHeader;
    const bool withAlpha = layout.headerSize >= alphaHeader || layout.compression == 6;
    for (std::size_t i = 0; i < (withAlpha ? 4u : 3u); ++i)
        header.masks[i] = fields.u32(at + 4 * i);
    header.spareByte = false;
    if (layout.headerSize == windowsHeader) layout.masksEnd += withAlpha ? 16 : 12;
    if (!(header.masks[0] | header.masks[1] | header.masks[2]))
        refuse("The BMP file has empty colour masks.");
}

void readOldHeader(BmpHeader& header, const Fields& fields) {
    setSize(header, static_cast<std::int32_t>(fields.u16(18)),
            static_cast<std::int16_t>(fields.u16(20)));
    header.bits = static_cast<int>(fields.u16(24));
}

// A whole number where the fraction is no more than the rounding to dots per metre.
double dpiOf(std::uint32_t perMetre) {
    const auto value = static_cast<std::int32_t>(perMetre);
    if (value <= 0) return 0;
    constexpr double inch = 0.0254;
    const double dpi = value * inch, whole = std::round(dpi);
    return whole > 0 && std::abs(dpi - whole) <= inch / 2 ? whole : dpi;
}

void readHeader(BmpHeader& header, Layout& layout, const Fields& fields) {
    setSize(header, static_cast<std::int32_t>(fields.u32(18)),
            static_cast<std::int32_t>(fields.u32(22)));
    header.bits = static_cast<int>(fields.u16(28));
    // Fields past the end of a short header are not there.
    if (layout.headerSize >= 20) layout.compression = fields.u32(30);
    if (layout.headerSize >= 32) {
        header.xDpi = dpiOf(fields.u32(38));
        header.yDpi = dpiOf(fields.u32(42));
    }
    if (layout.headerSize >= 36) layout.colorsUsed = fields.u32(46);
}

void setProfile(BmpHeader& header, const Layout& layout, const Fields& fields,
                std::span<const std::uint8_t> file) {
    constexpr std::uint32_t embedded = 0x4d424544; // "MBED"
    if (layout.headerSize < profileHeader || fields.u32(fileHeaderSize + 56) != embedded) return;
    const std::uint64_t at = std::uint64_t{fileHeaderSize} + fields.u32(fileHeaderSize + 112);
    const std::uint64_t size = fields.u32(fileHeaderSize + 116);
    if (size == 0 || at > file.size() || size > file.size() - at) return;
    header.profile = file.subspan(static_cast<std::size_t>(at), static_cast<std::size_t>(size));
}

Palette readPalette(std::span<const std::uint8_t> bytes, std::size_t entrySize) {
    std::vector<Rgba> colors;
    for (std::size_t at = 0; at + 3 <= bytes.size(); at += entrySize)
        colors.push_back({bytes[at + 2], bytes[at + 1], bytes[at], 255});
    return Palette(std::move(colors));
}

// The palette and the start of the pixels. An offset inside the palette shortens it; one that
// leaves it no room at all is wrong, and the pixels follow the palette.
void setPaletteAndPixels(BmpHeader& header, const Layout& layout, std::uint64_t offset,
                         std::span<const std::uint8_t> file) {
    const std::size_t start = std::min(layout.masksEnd, file.size());
    std::size_t end = start;
    if (header.bits >= 1 && header.bits <= 8) {
        const std::size_t entrySize = layout.headerSize == coreHeader ? 3 : 4;
        const std::uint32_t most = 1u << header.bits;
        const std::uint32_t count =
            layout.colorsUsed == 0 ? most : std::min(layout.colorsUsed, most);
        end = std::min(start + count * entrySize, file.size());
        if (offset > start && offset < end) end = static_cast<std::size_t>(offset);
        header.palette = readPalette(file.subspan(start, end - start), entrySize);
    }
    const bool usable = offset >= end && offset < file.size();
    header.pixels = file.subspan(usable ? static_cast<std::size_t>(offset) : end);
}

// What stands between the file header and the palette.
Layout readInformation(BmpHeader& header, const Fields& fields) {
    Layout layout;
    layout.headerSize = fields.u32(fileHeaderSize);
    layout.masksEnd = fileHeaderSize + layout.headerSize;
    if (layout.headerSize == coreHeader)
        readOldHeader(header, fields);
    else
        readHeader(header, layout, fields);
    header.packing = packingOf(layout);
    checkBits(header);
    setMasks(header, layout, fields);
    return layout;
}

// The first picture of an OS/2 file of several forms of one picture, any other file as it is.
std::span<const std::uint8_t> withoutArray(std::span<const std::uint8_t> file) {
    constexpr std::size_t arrayHeaderSize = 14;
    const bool isArray = file.size() > arrayHeaderSize && file[0] == 'B' && file[1] == 'A';
    return isArray ? file.subspan(arrayHeaderSize) : file;
}

} // namespace

bool isBmp(std::span<const std::uint8_t> file) {
    file = withoutArray(file);
    if (file.size() < 18 || file[0] != 'B' || file[1] != 'M') return false;
    const std::uint32_t size = Fields(file).u32(fileHeaderSize);
    return size == coreHeader || (size >= 16 && size <= 1024);
}

BmpHeader readBmpHeader(std::span<const std::uint8_t> file) {
    if (!isBmp(file) || withoutArray(file).size() < fileHeaderSize + coreHeader)
        refuse("The BMP file has no valid header.");
    const auto bitmap = withoutArray(file);
    const Fields fields(bitmap);
    BmpHeader header;
    const Layout layout = readInformation(header, fields);
    setProfile(header, layout, fields, bitmap);
    // Offsets count from the start of the file.
    const std::uint64_t offset = fields.u32(10), skipped = file.size() - bitmap.size();
    setPaletteAndPixels(header, layout, offset < skipped ? 0 : offset - skipped, bitmap);
    return header;
}

BmpHeader readBitmapHeader(std::span<const std::uint8_t> bitmap,
                           std::span<const std::uint8_t> pixels) {
    const Fields fields(bitmap, fileHeaderSize);
    const std::uint32_t size = fields.u32(fileHeaderSize);
    if ((size != coreHeader && (size < 16 || size > 1024)) || bitmap.size() < coreHeader)
        refuse("The bitmap has no valid header.");
    BmpHeader header;
    Layout layout = readInformation(header, fields);
    layout.masksEnd -= fileHeaderSize;
    setPaletteAndPixels(header, layout, 0, bitmap);
    if (!pixels.empty()) header.pixels = pixels;
    return header;
}

} // namespace kvn::imaging
