// WMF records with bitmaps.
#include "imaging/codecs/metafile/bitmaps.h"
#include "imaging/codecs/metafile/wmf_record.h"

namespace kvn::imaging::metafile {

namespace {

std::uint8_t codeOf(const WmfRecord& r) {
    return static_cast<std::uint8_t>(r.u32(0) >> 16);
}

// height, width, then y, x
void place(Blit& blit, const WmfRecord& r, std::size_t word) {
    const PointD size = r.point(word);
    blit.setPlace(r.point(word + 2), size.x, size.y);
}

void patternAt(Drawing& d, const WmfRecord& r, std::size_t word) {
    const PointD size = r.point(word);
    drawPattern(d, r.point(word + 2), size.x, size.y, codeOf(r));
}

// A record that lacks its bitmap is as long as its number says, and has a spare word.
bool lacksBitmap(const WmfRecord& r) {
    return r.words() == (r.function >> 8);
}

// Bits that are 0 have the text's colour.
Raster oldBitmap(const Drawing& d, const WmfRecord& r, std::size_t word) {
    constexpr std::size_t header = 10;
    Raster raster = readOldBitmap(r.from(word), header);
    if (!raster.isEmpty()) raster.setPalette(Palette({d.state().textColor, d.state().backColor}));
    return raster;
}

template <bool Old>
void bitBlt(Drawing& d, const WmfRecord& r) {
    if (lacksBitmap(r)) return patternAt(d, r, 5);
    Blit blit;
    blit.code = codeOf(r);
    const PointD from = r.point(2), size = r.point(4);
    blit.setSource(from.x, from.y, size.x, size.y);
    place(blit, r, 4);
    if (Old)
        blit.raster = oldBitmap(d, r, 8);
    else
        blit.dib.header = r.from(8);
    if (!blit.raster.isEmpty() || !blit.dib.isEmpty()) drawBitmap(d, blit);
}

template <bool Old>
void stretchBlt(Drawing& d, const WmfRecord& r) {
    if (lacksBitmap(r)) return patternAt(d, r, 7);
    Blit blit;
    blit.code = codeOf(r);
    const PointD size = r.point(2), from = r.point(4);
    blit.setSource(from.x, from.y, size.x, size.y);
    place(blit, r, 6);
    if (Old)
        blit.raster = oldBitmap(d, r, 10);
    else
        blit.dib.header = r.from(10);
    if (!blit.raster.isEmpty() || !blit.dib.isEmpty()) drawBitmap(d, blit);
}

// Where rows go upwards, the source's corner is the lower left one.
void stretchDib(Drawing& d, const WmfRecord& r) {
    Blit blit;
    blit.code = codeOf(r);
    blit.dib.header = r.from(11);
    blit.dib.paletteIndices = r.u16(2) == 1;
    if (blit.dib.isEmpty()) return patternAt(d, r, 7);
    const DibFacts facts = factsOf(blit.dib);
    const PointD size = r.point(3), from = r.point(5);
    blit.setSource(from.x, facts.topDown ? from.y : facts.height - from.y - size.y, size.x, size.y);
    place(blit, r, 7);
    drawBitmap(d, blit);
}

// usage, rows, first row, then the source's corner, the size, the place.
void setDibToDevice(Drawing& d, const WmfRecord& r) {
    Blit blit;
    blit.dib.header = r.from(9);
    blit.dib.paletteIndices = r.u16(0) == 1;
    const DibFacts facts = factsOf(blit.dib);
    setRows(blit, facts, {r.point(3), r.point(5), r.point(7), double(r.u16(2)), double(r.u16(1))});
    drawBitmap(d, blit);
}

void patBlt(Drawing& d, const WmfRecord& r) {
    patternAt(d, r, 2);
}

constexpr WmfEntry entries[] = {
    {0x61d, patBlt},        {0x922, bitBlt<true>},      {0xb23, stretchBlt<true>},
    {0x940, bitBlt<false>}, {0xb41, stretchBlt<false>}, {0xd33, setDibToDevice},
    {0xf43, stretchDib},
};

} // namespace

std::span<const WmfEntry> wmfBitmapRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
