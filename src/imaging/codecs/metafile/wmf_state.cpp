// WMF records that set modes, the mapping and the clip.
#include <algorithm>

#include "imaging/codecs/metafile/wmf_record.h"

namespace kvn::imaging::metafile {

namespace {

using draw::Combine;

// yDenominator, yNumerator, xDenominator, xNumerator.
void scale(PointD& extent, const WmfRecord& r) {
    if (r.i16(2) != 0) extent.x = std::clamp(extent.x * r.i16(3) / r.i16(2), -1e9, 1e9);
    if (r.i16(0) != 0) extent.y = std::clamp(extent.y * r.i16(1) / r.i16(0), -1e9, 1e9);
}

void selectClipRegion(Drawing& d, const WmfRecord& r) {
    State& state = d.state();
    const Object* object = d.object(r.u16(0));
    const auto* region = object ? std::get_if<Region>(object) : nullptr;
    state.clip.reset();
    if (region)
        state.clip.add(outlineOf(*region, d.deviceToCanvas()), draw::FillRule::NonZero,
                       Combine::And);
}

constexpr WmfEntry entries[] = {
    {0x01e, [](Drawing& d, const WmfRecord&) { d.save(); }},
    {0x127, [](Drawing& d, const WmfRecord& r) { d.restore(r.i16(0)); }},
    {0x102, [](Drawing& d, const WmfRecord& r) { d.state().opaque = r.u16(0) == 2; }},
    {0x103, [](Drawing& d, const WmfRecord& r) { d.setMapMode(r.i16(0)); }},
    {0x104, [](Drawing& d, const WmfRecord& r) { d.state().rop2 = r.i16(0); }},
    {0x106,
     [](Drawing& d, const WmfRecord& r) {
         d.state().fillRule = r.u16(0) == 2 ? draw::FillRule::NonZero : draw::FillRule::EvenOdd;
     }},
    {0x107, [](Drawing& d, const WmfRecord& r) { d.state().stretchMode = r.i16(0); }},
    {0x108, [](Drawing& d, const WmfRecord& r) { d.state().textExtra = r.i16(0); }},
    {0x12e, [](Drawing& d, const WmfRecord& r) { d.state().textAlign = r.i16(0); }},
    {0x201, [](Drawing& d, const WmfRecord& r) { d.state().backColor = r.color(0, d); }},
    {0x209, [](Drawing& d, const WmfRecord& r) { d.state().textColor = r.color(0, d); }},
    {0x20a,
     [](Drawing& d, const WmfRecord& r) {
         const int count = r.i16(0);
         d.state().breakExtra = count != 0 ? double(r.i16(1)) / count : 0;
     }},
    {0x20b, [](Drawing& d, const WmfRecord& r) { d.state().windowOrigin = r.point(0); }},
    {0x20c, [](Drawing& d, const WmfRecord& r) { d.state().windowExtent = r.point(0); }},
    {0x20d, [](Drawing& d, const WmfRecord& r) { d.state().viewportOrigin = r.point(0); }},
    {0x20e, [](Drawing& d, const WmfRecord& r) { d.state().viewportExtent = r.point(0); }},
    {0x20f,
     [](Drawing& d, const WmfRecord& r) {
         d.state().windowOrigin = d.state().windowOrigin + r.point(0);
     }},
    {0x211,
     [](Drawing& d, const WmfRecord& r) {
         d.state().viewportOrigin = d.state().viewportOrigin + r.point(0);
     }},
    {0x410, [](Drawing& d, const WmfRecord& r) { scale(d.state().windowExtent, r); }},
    {0x412, [](Drawing& d, const WmfRecord& r) { scale(d.state().viewportExtent, r); }},
    {0x220, [](Drawing& d, const WmfRecord& r) { d.moveClip(r.point(0)); }},
    {0x12c, selectClipRegion},
    {0x415,
     [](Drawing& d, const WmfRecord& r) {
         d.clipTo(r.corners(0).a, r.corners(0).b, d.toCanvas(), Combine::Without);
     }},
    {0x416,
     [](Drawing& d, const WmfRecord& r) {
         d.clipTo(r.corners(0).a, r.corners(0).b, d.toCanvas(), Combine::And);
     }},
};

} // namespace

std::span<const WmfEntry> wmfStateRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
