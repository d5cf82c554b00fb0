#include "imaging/codecs/psd_resources.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "imaging/codecs/fields.h"

namespace kvn::imaging {

namespace {

enum Resource : std::uint32_t {
    resolution = 1005,
    iptc = 1028,
    profile = 1039,
    colorCount = 1046,
    transparentIndex = 1047,
    exif = 1058,
    exifMore = 1059,
    xmp = 1060,
};

// Those that have a place of their own above, or that speak of what changes: names and kinds of
// channels, layer states, thumbnails, pixel digests, and measures in pixels.
constexpr std::uint32_t ownOrStale[] = {resolution, profile,  colorCount, transparentIndex,
                                        exif,       exifMore, xmp,        1000,
                                        1006,       1007,     1024,       1026,
                                        1032,       1033,     1036,       1045,
                                        1053,       1057,     1061,       1065,
                                        1067,       1069,     1072,       1077,
                                        1078};

bool isKept(std::uint32_t number) {
    return std::ranges::find(ownOrStale, number) == std::end(ownOrStale);
}

// `whole` is the block with its head, in even length.
using Visitor = std::function<void(std::uint32_t number, std::span<const std::uint8_t> content,
                                   std::span<const std::uint8_t> whole)>;

void visitBlocks(std::span<const std::uint8_t> section, const Visitor& visit) {
    constexpr std::uint32_t mark = 0x3842494d; // "8BIM"
    const BigFields fields(section);
    std::size_t at = 0;
    while (at + 12 <= section.size() && fields.u32(at) == mark) {
        const std::size_t name = (fields.byte(at + 6) + std::size_t{2}) & ~std::size_t{1};
        const std::size_t start = at + 6 + name + 4;
        if (start > section.size()) return;
        const std::size_t size = fields.u32(start - 4);
        if (size > section.size() - start) return;
        const std::size_t end = std::min(start + size + size % 2, section.size());
        visit(fields.u16(at + 4), section.subspan(start, size), section.subspan(at, end - at));
        at = end;
    }
}

void putBlock(Bytes& out, std::uint32_t number, std::span<const std::uint8_t> content) {
    constexpr std::array<std::uint8_t, 4> mark{'8', 'B', 'I', 'M'};
    out.insert(out.end(), mark.begin(), mark.end());
    putBig(out, number, 2);
    putBig(out, 0, 2); // no name
    putBig(out, content.size(), 4);
    out.insert(out.end(), content.begin(), content.end());
    if (content.size() % 2 != 0) out.push_back(0);
}

// Dots per inch as 16.16 bits.
std::uint64_t fixedDpi(double dpi) {
    return static_cast<std::uint64_t>(std::llround(std::clamp(dpi, 1.0, 32767.0) * 65536));
}

void putResolution(Bytes& out, const Metadata& meta) {
    if (meta.xDpi <= 0 || meta.yDpi <= 0) return;
    Bytes content;
    for (const double dpi : {meta.xDpi, meta.yDpi}) {
        putBig(content, fixedDpi(dpi), 4);
        putBig(content, 1, 2); // shown per inch
        putBig(content, 1, 2); // and the sides in inches
    }
    putBlock(out, resolution, content);
}

void putNumber(Bytes& out, std::uint32_t number, const std::optional<std::size_t>& value) {
    if (!value) return;
    Bytes content;
    putBig(content, *value, 2);
    putBlock(out, number, content);
}

} // namespace

PsdResources readPsdResources(std::span<const std::uint8_t> section) {
    PsdResources found;
    Metadata& meta = found.metadata;
    visitBlocks(section, [&](std::uint32_t number, auto content, auto whole) {
        const BigFields fields(content);
        const Bytes bytes(content.begin(), content.end());
        if (number == resolution && content.size() >= 12) {
            meta.xDpi = fields.u32(0) / 65536.0;
            meta.yDpi = fields.u32(8) / 65536.0;
        } else if (number == iptc) {
            meta.iptc = bytes;
        } else if (number == profile) {
            meta.icc = bytes;
        } else if (number == exif) {
            meta.exif = bytes;
        } else if (number == xmp) {
            meta.xmp = bytes;
        } else if (number == colorCount && content.size() >= 2) {
            found.colorCount = fields.u16(0);
        } else if (number == transparentIndex && content.size() >= 2) {
            found.transparentIndex = fields.u16(0);
        }
        if (isKept(number)) meta.photoshop.insert(meta.photoshop.end(), whole.begin(), whole.end());
    });
    return found;
}

Bytes psdResourcesOf(const Metadata& meta, const PsdResources& more) {
    Bytes out;
    putResolution(out, meta);
    bool withIptc = false;
    visitBlocks(meta.photoshop, [&](std::uint32_t number, auto content, auto) {
        if (!isKept(number)) return;
        const bool isIptc = number == iptc && !meta.iptc.empty();
        putBlock(out, number, isIptc ? std::span<const std::uint8_t>(meta.iptc) : content);
        withIptc = withIptc || number == iptc;
    });
    if (!meta.iptc.empty() && !withIptc) putBlock(out, iptc, meta.iptc);
    if (!meta.icc.empty()) putBlock(out, profile, meta.icc);
    if (!meta.exif.empty()) putBlock(out, exif, meta.exif);
    if (!meta.xmp.empty()) putBlock(out, xmp, meta.xmp);
    putNumber(out, colorCount, more.colorCount);
    putNumber(out, transparentIndex, more.transparentIndex);
    return out;
}

} // namespace kvn::imaging
