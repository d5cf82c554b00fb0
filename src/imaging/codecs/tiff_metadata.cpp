#include "imaging/codecs/tiff_metadata.h"

#include <algorithm>
#include <cstring>

#include "imaging/codecs/tiff_exif.h"
#include "imaging/metadata/orientation.h"
#include "imaging/metadata/photoshop.h"

namespace kvn::imaging {

namespace {

Bytes valueOf(const TiffDirectory& page, std::uint16_t tag) {
    const TiffEntry* entry = page.find(tag);
    return entry ? Bytes(entry->value.begin(), entry->value.end()) : Bytes{};
}

std::string textOf(const TiffDirectory& page, std::uint16_t tag) {
    const TiffEntry* entry = page.find(tag);
    return entry ? TiffStructure::text(*entry) : std::string{};
}

// A fraction of two 32-bit numbers, 0 if there is none.
double fractionOf(const TiffStructure& file, const TiffDirectory& page, std::uint16_t tag) {
    constexpr std::uint16_t rational = 5, longType = 4;
    const TiffEntry* entry = page.find(tag);
    if (!entry || entry->type != rational || entry->value.size() < 8) return 0;
    const auto part = [&](std::size_t at) {
        TiffEntry half{entry->tag, longType, 1, entry->value.subspan(at, 4)};
        return static_cast<double>(file.number(half));
    };
    return part(4) > 0 ? part(0) / part(4) : 0;
}

void readResolution(const TiffStructure& file, const TiffDirectory& page, const TiffLayout& layout,
                    Metadata& meta) {
    const TiffEntry* unit = page.find(TIFFTAG_RESOLUTIONUNIT);
    const std::uint64_t kind = unit ? file.number(*unit) : std::uint64_t{RESUNIT_INCH};
    if (kind != RESUNIT_INCH && kind != RESUNIT_CENTIMETER) return;
    const double scale = kind == RESUNIT_CENTIMETER ? 2.54 : 1;
    meta.xDpi = scale * fractionOf(file, page, TIFFTAG_XRESOLUTION);
    meta.yDpi = scale * fractionOf(file, page, TIFFTAG_YRESOLUTION);
    if (swapsSides(layout.orientation)) std::swap(meta.xDpi, meta.yDpi);
}

// Where the field is stored as 32-bit numbers, the last one is filled up with zeros.
Bytes iptcOf(const TiffDirectory& page) {
    Bytes iptc = valueOf(page, TIFFTAG_RICHTIFFIPTC);
    constexpr std::uint8_t marker = 0x1c;
    // Some writers put image resource blocks here too.
    if (!iptc.empty() && iptc.front() != marker) return iptcInPhotoshop(iptc);
    std::size_t end = 0;
    while (end + 5 <= iptc.size() && iptc[end] == marker) {
        const std::size_t length = std::size_t{iptc[end + 3]} << 8 | iptc[end + 4];
        if (length > 0x7fff || length > iptc.size() - end - 5) return iptc;
        end += 5 + length;
    }
    iptc.resize(end);
    return iptc;
}

void writeIptc(const TiffWriter& writer, const Bytes& iptc) {
    if (iptc.empty()) return;
    // Some versions of the library take 32-bit numbers and turn them into the file's byte order;
    // the bytes themselves must not be turned.
    const TIFFField* field = TIFFFieldWithTag(writer.get(), TIFFTAG_RICHTIFFIPTC);
    if (!field || TIFFFieldDataType(field) != TIFF_LONG) {
        writer.set(TIFFTAG_RICHTIFFIPTC, static_cast<std::uint32_t>(iptc.size()), iptc.data());
        return;
    }
    std::vector<std::uint32_t> words((iptc.size() + 3) / 4);
    std::memcpy(words.data(), iptc.data(), iptc.size());
    if (TIFFIsByteSwapped(writer.get()))
        TIFFSwabArrayOfLong(words.data(), static_cast<tmsize_t>(words.size()));
    writer.set(TIFFTAG_RICHTIFFIPTC, static_cast<std::uint32_t>(words.size()), words.data());
}

} // namespace

MetadataRef tiffMetadata(const TiffStructure& file, const TiffDirectory& page,
                         const TiffLayout& layout) {
    Metadata meta;
    readResolution(file, page, layout, meta);
    if (layout.color != TiffColor::Cmyk && layout.color != TiffColor::CieLab &&
        layout.color != TiffColor::IccLab)
        meta.icc = valueOf(page, TIFFTAG_ICCPROFILE);
    meta.xmp = valueOf(page, TIFFTAG_XMLPACKET);
    meta.photoshop = valueOf(page, TIFFTAG_PHOTOSHOP);
    meta.iptc = iptcOf(page);
    if (meta.iptc.empty()) meta.iptc = iptcInPhotoshop(meta.photoshop);
    meta.comment = textOf(page, TIFFTAG_IMAGEDESCRIPTION);
    meta.exif = exifOfTiffPage(file, page);
    return std::make_shared<const Metadata>(std::move(meta));
}

std::string tiffPageName(const TiffDirectory& page) {
    return textOf(page, TIFFTAG_PAGENAME);
}

void writeTiffMetadata(const TiffWriter& writer, const Metadata& meta) {
    if (meta.xDpi > 0 && meta.yDpi > 0) {
        writer.set(TIFFTAG_XRESOLUTION, meta.xDpi);
        writer.set(TIFFTAG_YRESOLUTION, meta.yDpi);
        writer.set(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    const auto setBytes = [&](std::uint32_t tag, const Bytes& bytes) {
        if (!bytes.empty()) writer.set(tag, static_cast<std::uint32_t>(bytes.size()), bytes.data());
    };
    setBytes(TIFFTAG_ICCPROFILE, meta.icc);
    setBytes(TIFFTAG_XMLPACKET, meta.xmp);
    setBytes(TIFFTAG_PHOTOSHOP, meta.photoshop);
    if (!meta.comment.empty()) writer.set(TIFFTAG_IMAGEDESCRIPTION, meta.comment.c_str());
    writeIptc(writer, meta.iptc);
}

} // namespace kvn::imaging
