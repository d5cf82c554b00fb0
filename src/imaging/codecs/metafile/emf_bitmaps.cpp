// EMF records with bitmaps.
#include "imaging/codecs/metafile/bitmaps.h"
#include "imaging/codecs/metafile/emf_record.h"

namespace kvn::imaging::metafile {

namespace {

std::uint8_t codeAt(const EmfRecord& r, std::size_t at) {
    return static_cast<std::uint8_t>(r.u32(at) >> 16);
}

PointD sizeOf(const EmfRecord& r, std::size_t at) {
    return r.point(at);
}

// Bitmaps of the device have their first row on top; the source's corner counts from there.
Blit deviceBlit(const EmfRecord& r, PointD sourceSize) {
    Blit blit;
    blit.dib = r.dib(84, r.u32(80));
    const PointD from = r.point(44), size = sizeOf(r, 32);
    blit.setSource(from.x, from.y, sourceSize.x, sourceSize.y);
    blit.setPlace(r.point(24), size.x, size.y);
    return blit;
}

void stretched(Drawing& d, const EmfRecord& r, PointD sourceSize) {
    const PointD size = sizeOf(r, 32);
    Blit blit = deviceBlit(r, sourceSize);
    blit.code = codeAt(r, 40);
    if (blit.dib.isEmpty())
        drawPattern(d, r.point(24), size.x, size.y, blit.code);
    else
        drawBitmap(d, blit);
}

void bitBlt(Drawing& d, const EmfRecord& r) {
    stretched(d, r, sizeOf(r, 32));
}
void stretchBlt(Drawing& d, const EmfRecord& r) {
    stretched(d, r, sizeOf(r, 100));
}

void alphaBlend(Drawing& d, const EmfRecord& r) {
    Blit blit = deviceBlit(r, sizeOf(r, 100));
    const std::uint32_t blend = r.u32(40);
    blit.opacity = static_cast<int>(blend >> 16 & 0xff);
    blit.alpha = blend >> 24 & 1;
    drawBitmap(d, blit);
}

void transparentBlt(Drawing& d, const EmfRecord& r) {
    Blit blit = deviceBlit(r, sizeOf(r, 100));
    blit.clear = r.color(40, d);
    drawBitmap(d, blit);
}

void plgBlt(Drawing& d, const EmfRecord& r) {
    Blit blit;
    blit.dib = r.dib(96, r.u32(92));
    const PointD from = r.point(48), size = sizeOf(r, 56);
    blit.setSource(from.x, from.y, size.x, size.y);
    blit.corners = {r.point(24), r.point(32), r.point(40)};
    drawBitmap(d, blit);
}

// Where rows go upwards, the source's corner is the lower left one.
void stretchDib(Drawing& d, const EmfRecord& r) {
    Blit blit;
    blit.dib = r.dib(48, r.u32(64));
    blit.code = codeAt(r, 68);
    const DibFacts facts = factsOf(blit.dib);
    const PointD from = r.point(32), source = sizeOf(r, 40), size = sizeOf(r, 72);
    blit.setSource(from.x, facts.topDown ? from.y : facts.height - from.y - source.y, source.x,
                   source.y);
    blit.setPlace(r.point(24), size.x, size.y);
    if (blit.dib.isEmpty())
        drawPattern(d, r.point(24), size.x, size.y, blit.code);
    else
        drawBitmap(d, blit);
}

void setDibToDevice(Drawing& d, const EmfRecord& r) {
    Blit blit;
    blit.dib = r.dib(48, r.u32(64));
    const DibFacts facts = factsOf(blit.dib);
    setRows(blit, facts,
            {r.point(32), sizeOf(r, 40), r.point(24), double(r.u32(68)), double(r.u32(72))});
    drawBitmap(d, blit);
}

constexpr EmfEntry entries[] = {
    {76, bitBlt},         {77, stretchBlt}, {78, bitBlt},      {79, plgBlt},
    {80, setDibToDevice}, {81, stretchDib}, {114, alphaBlend}, {116, transparentBlt},
};

} // namespace

std::span<const EmfEntry> emfBitmapRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
