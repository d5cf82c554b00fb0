// EMF records that set modes, the mapping and the clip.
#include <algorithm>
#include <optional>

#include "imaging/codecs/metafile/emf_record.h"

namespace kvn::imaging::metafile {

namespace {

using draw::Combine;

bool isScalable(const State& state) {
    return state.mapMode == mapIsotropic || state.mapMode == mapAnisotropic;
}

void setWindowExtent(Drawing& d, const EmfRecord& r) {
    if (isScalable(d.state())) d.state().windowExtent = r.point(8);
}
void setViewportExtent(Drawing& d, const EmfRecord& r) {
    if (isScalable(d.state())) d.state().viewportExtent = r.point(8);
}

void scale(PointD& extent, const EmfRecord& r) {
    const PointD x = r.point(8), y = r.point(16);
    if (x.y != 0) extent.x = std::clamp(extent.x * x.x / x.y, -1e9, 1e9);
    if (y.y != 0) extent.y = std::clamp(extent.y * y.x / y.y, -1e9, 1e9);
}
void scaleWindow(Drawing& d, const EmfRecord& r) {
    if (isScalable(d.state())) scale(d.state().windowExtent, r);
}
void scaleViewport(Drawing& d, const EmfRecord& r) {
    if (isScalable(d.state())) scale(d.state().viewportExtent, r);
}

void setWorld(Drawing& d, const EmfRecord& r) {
    if (const Affine map = r.affine(8); map.isUsable()) d.state().world = map;
}

void modifyWorld(Drawing& d, const EmfRecord& r) {
    enum { identity = 1, first = 2, last = 3, replace = 4 };
    Affine& world = d.state().world;
    const Affine map = r.affine(8);
    Affine changed = world;
    switch (r.u32(32)) {
    case identity:
        changed = {};
        break;
    case first:
        changed = world * map;
        break;
    case last:
        changed = map * world;
        break;
    case replace:
        changed = map;
        break;
    }
    if (changed.isUsable()) world = changed;
}

// Whole numbers by the book, floats in some files.
void setMiterLimit(Drawing& d, const EmfRecord& r) {
    const std::uint32_t value = r.u32(8);
    d.state().miterLimit = value > 0xffff ? r.f32(8) : value;
    if (!(d.state().miterLimit >= 1)) d.state().miterLimit = 1;
}

void intersectRect(Drawing& d, const EmfRecord& r) {
    d.clipTo(r.point(8), r.point(16), d.toCanvas(), Combine::And);
}
void excludeRect(Drawing& d, const EmfRecord& r) {
    d.clipTo(r.point(8), r.point(16), d.toCanvas(), Combine::Without);
}

// How a new clip meets the old one, by the file's number. One that replaces it meets what was
// there before all clips.
std::optional<Combine> combineOf(State& state, int mode) {
    constexpr int replace = 5;
    static constexpr Combine modes[] = {Combine::And, Combine::Or, Combine::Xor, Combine::Without,
                                        Combine::And};
    if (mode < 1 || mode > replace) return {};
    if (mode == replace) state.clip = state.metaClip;
    return modes[mode - 1];
}

// Regions are in the device's pixels; none means that all is open again.
void selectClipRegion(Drawing& d, const EmfRecord& r) {
    const auto how = combineOf(d.state(), r.i32(12));
    if (!how || r.u32(8) == 0) return;
    const Region region = r.region(16);
    if (region.rects.size() != 1) {
        draw::Outline outline = outlineOf(region, d.deviceToCanvas());
        return d.state().clip.add(std::move(outline), draw::FillRule::NonZero, *how);
    }
    const auto& [left, top, right, bottom] = region.rects.front();
    d.clipTo({left, top}, {right, bottom}, d.deviceToCanvas(), *how);
}

void selectClipPath(Drawing& d, const EmfRecord& r) {
    State& state = d.state();
    if (const auto how = combineOf(state, r.i32(8)))
        state.clip.add(d.path().flattened({}), state.fillRule, *how);
    d.path().clear();
}

constexpr EmfEntry entries[] = {
    {9, setWindowExtent},
    {10, [](Drawing& d, const EmfRecord& r) { d.state().windowOrigin = r.point(8); }},
    {11, setViewportExtent},
    {12, [](Drawing& d, const EmfRecord& r) { d.state().viewportOrigin = r.point(8); }},
    {13, [](Drawing& d, const EmfRecord& r) { d.state().brushOrigin = r.point(8); }},
    {17, [](Drawing& d, const EmfRecord& r) { d.setMapMode(r.i32(8)); }},
    {18, [](Drawing& d, const EmfRecord& r) { d.state().opaque = r.u32(8) == 2; }},
    {19,
     [](Drawing& d, const EmfRecord& r) {
         d.state().fillRule = r.u32(8) == 2 ? draw::FillRule::NonZero : draw::FillRule::EvenOdd;
     }},
    {20, [](Drawing& d, const EmfRecord& r) { d.state().rop2 = r.i32(8); }},
    {21, [](Drawing& d, const EmfRecord& r) { d.state().stretchMode = r.i32(8); }},
    {22, [](Drawing& d, const EmfRecord& r) { d.state().textAlign = r.i32(8); }},
    {24, [](Drawing& d, const EmfRecord& r) { d.state().textColor = r.color(8, d); }},
    {25, [](Drawing& d, const EmfRecord& r) { d.state().backColor = r.color(8, d); }},
    {26, [](Drawing& d, const EmfRecord& r) { d.moveClip(r.point(8)); }},
    {28, [](Drawing& d, const EmfRecord&) { d.state().metaClip = d.state().clip; }},
    {29, excludeRect},
    {30, intersectRect},
    {31, scaleViewport},
    {32, scaleWindow},
    {33, [](Drawing& d, const EmfRecord&) { d.save(); }},
    {34, [](Drawing& d, const EmfRecord& r) { d.restore(r.i32(8)); }},
    {35, setWorld},
    {36, modifyWorld},
    {57, [](Drawing& d, const EmfRecord& r) { d.state().clockwise = r.u32(8) == 2; }},
    {58, setMiterLimit},
    {67, selectClipPath},
    {75, selectClipRegion},
    {120,
     [](Drawing& d, const EmfRecord& r) {
         const int count = r.i32(12);
         d.state().breakExtra = count != 0 ? double(r.i32(8)) / count : 0;
     }},
};

} // namespace

std::span<const EmfEntry> emfStateRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
