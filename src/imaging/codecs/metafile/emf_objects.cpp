// EMF records that make, choose and delete pens, brushes, fonts and palettes.
#include <algorithm>

#include "imaging/codecs/metafile/charsets.h"
#include "imaging/codecs/metafile/emf_record.h"

namespace kvn::imaging::metafile {

namespace {

constexpr std::uint32_t stockBit = 0x80000000;

// The objects that every device has, by number.
Object stockObject(std::uint32_t number) {
    const auto brush = [](int gray) {
        const auto v = static_cast<std::uint8_t>(gray);
        return Brush{.color = {v, v, v, 255}};
    };
    const auto font = [](const char* name, int pitch) {
        return FontFace{.pitchAndFamily = pitch, .name = name};
    };
    switch (number) {
    case 0:
    case 18:
        return brush(255);
    case 1:
        return brush(192);
    case 2:
        return brush(128);
    case 3:
        return brush(64);
    case 4:
        return brush(0);
    case 5:
        return Brush{.kind = Brush::Kind::Null};
    case 6:
        return Pen{.color = {255, 255, 255, 255}};
    case 7:
    case 19:
        return Pen{};
    case 8:
        return Pen{.style = penNull};
    case 10:
    case 11:
    case 16:
        return font("Courier New", 0x31);
    case 12:
    case 13:
    case 14:
    case 17:
        return font("Arial", 0x22);
    default:
        return {};
    }
}

void select(Drawing& d, const EmfRecord& r) {
    const std::uint32_t handle = r.u32(8);
    if (handle & stockBit)
        d.use(stockObject(handle & ~stockBit));
    else
        d.select(handle);
}

void createPen(Drawing& d, const EmfRecord& r) {
    Pen pen;
    pen.style = r.i32(12) & 15;
    pen.width = std::abs(double(r.i32(16)));
    pen.color = r.color(24, d);
    d.put(r.u32(8), pen);
}

void createExtendedPen(Drawing& d, const EmfRecord& r) {
    constexpr std::uint32_t geometric = 0x10000;
    constexpr std::uint32_t emptyBrush = 1;
    const std::uint32_t style = r.u32(28);
    Pen pen;
    pen.style = r.u32(36) == emptyBrush ? penNull : static_cast<int>(style & 15);
    pen.width = std::abs(double(r.i32(32)));
    pen.cosmetic = !(style & geometric);
    pen.cap = static_cast<int>(style >> 8 & 15);
    pen.join = static_cast<int>(style >> 12 & 15);
    pen.color = r.color(40, d);
    if (pen.style == penUserDashes) {
        constexpr std::uint32_t most = 16;
        const std::size_t count = r.countAt(52, std::min(r.u32(48), most), 4);
        std::vector<double> dashes;
        for (std::size_t i = 0; i < count; ++i)
            dashes.push_back(r.u32(52 + 4 * i));
        pen.dashes = std::make_shared<const std::vector<double>>(std::move(dashes));
    }
    d.put(r.u32(8), pen);
}

void createBrush(Drawing& d, const EmfRecord& r) {
    enum { solid = 0, none = 1, hatched = 2 };
    Brush brush;
    const std::uint32_t style = r.u32(12);
    brush.kind = style == none      ? Brush::Kind::Null
                 : style == hatched ? Brush::Kind::Hatch
                                    : Brush::Kind::Solid;
    brush.color = r.color(16, d);
    brush.hatch = r.i32(20);
    d.put(r.u32(8), brush);
}

void createPatternBrush(Drawing& d, const EmfRecord& r) {
    constexpr std::uint32_t monochrome = 93;
    Brush brush;
    brush.kind = Brush::Kind::Pattern;
    brush.dib = r.dib(16, r.u32(12));
    brush.mono = r.type == monochrome;
    d.put(r.u32(8), brush);
}

void createFont(Drawing& d, const EmfRecord& r) {
    FontFace font;
    font.height = r.i32(12);
    font.width = r.i32(16);
    font.escapement = r.i32(20) % 3600;
    font.weight = r.i32(28);
    const std::uint32_t flags = r.u32(32);
    font.italic = flags & 0xff;
    font.underline = flags >> 8 & 0xff;
    font.strikeOut = flags >> 16 & 0xff;
    font.charset = static_cast<int>(flags >> 24);
    font.pitchAndFamily = static_cast<int>(r.u32(36) >> 24);
    font.name = utf8Of(decodeUtf16(partOf(r.bytes, 40, 64)));
    d.put(r.u32(8), font);
}

Palette paletteAt(const EmfRecord& r, std::size_t at, std::size_t count) {
    std::vector<Rgba> colors;
    for (std::size_t i = 0; i < r.countAt(at, count, 4); ++i)
        colors.push_back(colorOf(r.u32(at + 4 * i) & 0xffffff, {}));
    return Palette(std::move(colors));
}

void setPaletteEntries(Drawing& d, const EmfRecord& r) {
    const Object* object = d.object(r.u32(8));
    if (!object || !std::holds_alternative<Palette>(*object)) return;
    Palette palette = std::get<Palette>(*object);
    const Palette fresh = paletteAt(r, 20, r.u32(16));
    for (std::size_t i = 0; i < fresh.size() && r.u32(12) + i < Palette::maxSize; ++i)
        palette.set(r.u32(12) + i, fresh[i]);
    d.put(r.u32(8), palette);
}

constexpr EmfEntry entries[] = {
    {37, select},
    {38, createPen},
    {39, createBrush},
    {40, [](Drawing& d, const EmfRecord& r) { d.remove(r.u32(8)); }},
    {48, select},
    {49, [](Drawing& d, const EmfRecord& r) { d.put(r.u32(8), paletteAt(r, 16, r.u16(14))); }},
    {50, setPaletteEntries},
    {82, createFont},
    {93, createPatternBrush},
    {94, createPatternBrush},
    {95, createExtendedPen},
};

} // namespace

std::span<const EmfEntry> emfObjectRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
