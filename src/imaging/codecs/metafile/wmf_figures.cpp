// WMF records that draw lines, figures, regions and text.
#include <algorithm>

#include "imaging/codecs/metafile/text.h"
#include "imaging/codecs/metafile/wmf_record.h"

namespace kvn::imaging::metafile {

namespace {

void polyPolygonRecord(Drawing& d, const WmfRecord& r) {
    const std::size_t count = std::min<std::size_t>(r.u16(0), r.words());
    std::size_t at = 1 + count;
    std::vector<std::vector<PointD>> figures;
    for (std::size_t i = 0; i < count; ++i) {
        figures.push_back(r.points(at, r.u16(1 + i)));
        at += 2 * figures.back().size();
    }
    polyPolygon(d, figures);
}

// Ends and starts stand before the box.
template <ArcKind Kind>
void arcRecord(Drawing& d, const WmfRecord& r) {
    arc(d, Kind, r.corners(4), r.point(2), r.point(0));
}

template <class T>
const T* objectOf(const Drawing& d, std::uint32_t index) {
    const Object* object = d.object(index);
    return object ? std::get_if<T>(object) : nullptr;
}

void fillRegionRecord(Drawing& d, const WmfRecord& r) {
    const auto* region = objectOf<Region>(d, r.u16(0));
    const auto* brush = objectOf<Brush>(d, r.u16(1));
    if (region) fillRegion(d, *region, brush ? *brush : d.state().brush, d.state().rop2);
}

void frameRegionRecord(Drawing& d, const WmfRecord& r) {
    const auto* region = objectOf<Region>(d, r.u16(0));
    const auto* brush = objectOf<Brush>(d, r.u16(1));
    if (region) frameRegion(d, *region, brush ? *brush : d.state().brush, r.point(2));
}

void invertRegionRecord(Drawing& d, const WmfRecord& r) {
    constexpr int invert = 6;
    if (const auto* region = objectOf<Region>(d, r.u16(0))) fillRegion(d, *region, Brush{}, invert);
}

void paintRegionRecord(Drawing& d, const WmfRecord& r) {
    if (const auto* region = objectOf<Region>(d, r.u16(0)))
        fillRegion(d, *region, d.state().brush, d.state().rop2);
}

// The text, padded to whole words, stands before its place.
void textOut(Drawing& d, const WmfRecord& r) {
    const std::size_t count = r.u16(0);
    TextLine line;
    line.text = decodeBytes(partOf(r.from(1), 0, count), d.state().font.charset);
    line.at = r.point(1 + (count + 1) / 2);
    drawText(d, line);
}

void extTextOut(Drawing& d, const WmfRecord& r) {
    const std::size_t count = r.u16(2);
    TextLine line;
    line.at = r.point(0);
    line.options = r.i16(3);
    std::size_t at = 4;
    if (line.options & (textOpaque | textClipped)) {
        draw::Box box;
        box.add(PointD{double(r.i16(4)), double(r.i16(5))});
        box.add(PointD{double(r.i16(6)), double(r.i16(7))});
        line.rect = box;
        at = 8;
    }
    line.text = decodeBytes(partOf(r.from(at), 0, count), d.state().font.charset);
    at += (count + 1) / 2;
    for (std::size_t i = 0; i < count && at + i < r.words(); ++i)
        line.advances.push_back(r.i16(at + i));
    drawText(d, line);
}

constexpr WmfEntry entries[] = {
    {0x213, [](Drawing& d, const WmfRecord& r) { lineTo(d, r.point(0)); }},
    {0x214, [](Drawing& d, const WmfRecord& r) { moveTo(d, r.point(0)); }},
    {0x324, [](Drawing& d, const WmfRecord& r) { polygon(d, r.points(1, r.u16(0))); }},
    {0x325, [](Drawing& d, const WmfRecord& r) { polyline(d, r.points(1, r.u16(0))); }},
    {0x418, [](Drawing& d, const WmfRecord& r) { ellipse(d, r.corners(0)); }},
    {0x41b, [](Drawing& d, const WmfRecord& r) { rectangle(d, r.corners(0)); }},
    {0x61c, [](Drawing& d, const WmfRecord& r) { roundRectangle(d, r.corners(2), r.point(0)); }},
    {0x41f, [](Drawing& d, const WmfRecord& r) { setPixel(d, r.point(2), r.color(0, d)); }},
    {0x538, polyPolygonRecord},
    {0x817, arcRecord<ArcKind::Arc>},
    {0x81a, arcRecord<ArcKind::Pie>},
    {0x830, arcRecord<ArcKind::Chord>},
    {0x228, fillRegionRecord},
    {0x429, frameRegionRecord},
    {0x12a, invertRegionRecord},
    {0x12b, paintRegionRecord},
    {0x521, textOut},
    {0xa32, extTextOut},
};

} // namespace

std::span<const WmfEntry> wmfFigureRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
