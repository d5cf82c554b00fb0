// WMF records that make, choose and delete pens, brushes, fonts, palettes and regions.
#include <algorithm>

#include "imaging/codecs/metafile/charsets.h"
#include "imaging/codecs/metafile/wmf_record.h"

namespace kvn::imaging::metafile {

namespace {

void createPen(Drawing& d, const WmfRecord& r) {
    Pen pen;
    const std::uint32_t style = r.u16(0);
    pen.style = static_cast<int>(style & 15);
    pen.cap = static_cast<int>(style >> 8 & 15);
    pen.join = static_cast<int>(style >> 12 & 15);
    pen.width = std::abs(r.i16(1));
    pen.color = r.color(3, d);
    d.putFirst(pen);
}

void createBrush(Drawing& d, const WmfRecord& r) {
    enum { none = 1, hatched = 2 };
    Brush brush;
    const std::uint32_t style = r.u16(0);
    brush.kind = style == none      ? Brush::Kind::Null
                 : style == hatched ? Brush::Kind::Hatch
                                    : Brush::Kind::Solid;
    brush.color = r.color(1, d);
    brush.hatch = r.i16(3);
    d.putFirst(brush);
}

void createDibBrush(Drawing& d, const WmfRecord& r) {
    Brush brush;
    brush.kind = Brush::Kind::Pattern;
    brush.dib = {r.from(2), {}, r.u16(1) == 1, 0};
    d.putFirst(brush);
}

void createOldBrush(Drawing& d, const WmfRecord& r) {
    Brush brush;
    brush.kind = Brush::Kind::Pattern;
    brush.oldBitmap = r.bytes;
    brush.mono = true;
    d.putFirst(brush);
}

void createFont(Drawing& d, const WmfRecord& r) {
    constexpr std::size_t nameAt = 18, nameSize = 32;
    FontFace font;
    font.height = r.i16(0);
    font.width = r.i16(1);
    font.escapement = r.i16(2) % 3600;
    font.weight = r.i16(4);
    font.italic = r.u16(5) & 0xff;
    font.underline = r.u16(5) >> 8;
    font.strikeOut = r.u16(6) & 0xff;
    font.charset = static_cast<int>(r.u16(6) >> 8);
    font.pitchAndFamily = static_cast<int>(r.u16(8) >> 8);
    auto name = partOf(r.bytes, nameAt, nameSize);
    name = name.first(static_cast<std::size_t>(std::ranges::find(name, 0) - name.begin()));
    font.name = utf8Of(decodeBytes(name, font.charset));
    d.putFirst(font);
}

Palette paletteAt(const WmfRecord& r, std::size_t word, std::size_t count) {
    std::vector<Rgba> colors;
    for (std::size_t i = 0; i < count && word + 2 <= r.words(); ++i, word += 2)
        colors.push_back(colorOf(r.u32(word) & 0xffffff, {}));
    return Palette(std::move(colors));
}

void setPaletteEntries(Drawing& d, const WmfRecord& r) {
    const Palette fresh = paletteAt(r, 2, r.u16(1));
    for (std::size_t i = 0; i < fresh.size() && r.u16(0) + i < Palette::maxSize; ++i)
        d.state().palette.set(r.u16(0) + i, fresh[i]);
}

// Strips from top to bottom, each with the left and right ends of its runs.
void createRegion(Drawing& d, const WmfRecord& r) {
    Region region;
    std::size_t at = 11;
    for (int scans = r.i16(5); scans > 0 && at + 4 <= r.words(); --scans) {
        const std::size_t count = r.u16(at);
        const double top = r.i16(at + 1), bottom = r.i16(at + 2);
        for (std::size_t i = 0; i + 1 < count && at + 4 + i < r.words(); i += 2)
            region.rects.push_back(
                {double(r.i16(at + 3 + i)), top, double(r.i16(at + 4 + i)), bottom});
        at += 4 + count;
    }
    d.putFirst(std::move(region));
}

constexpr WmfEntry entries[] = {
    {0x12d, [](Drawing& d, const WmfRecord& r) { d.select(r.u16(0)); }},
    {0x1f0, [](Drawing& d, const WmfRecord& r) { d.remove(r.u16(0)); }},
    {0x234, [](Drawing& d, const WmfRecord& r) { d.select(r.u16(0)); }},
    {0x2fa, createPen},
    {0x2fb, createFont},
    {0x2fc, createBrush},
    {0x142, createDibBrush},
    {0x1f9, createOldBrush},
    {0x0f7, [](Drawing& d, const WmfRecord& r) { d.putFirst(paletteAt(r, 2, r.u16(1))); }},
    {0x037, setPaletteEntries},
    {0x6ff, createRegion},
};

} // namespace

std::span<const WmfEntry> wmfObjectRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
