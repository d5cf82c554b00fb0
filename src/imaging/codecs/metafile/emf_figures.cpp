// EMF records that draw lines, figures, regions and slopes, and those of paths.
#include <algorithm>
#include <array>

#include "imaging/codecs/metafile/emf_record.h"

namespace kvn::imaging::metafile {

namespace {

// The records from 85 on are those from 2 on with coordinates of 16 bits.
constexpr std::uint32_t firstNarrow = 85;

template <auto Draw>
void points(Drawing& d, const EmfRecord& r) {
    Draw(d, r.points(28, r.u32(24), r.type >= firstNarrow));
}

template <auto Draw>
void pointLists(Drawing& d, const EmfRecord& r) {
    const bool narrow = r.type >= firstNarrow;
    const std::size_t lists = r.countAt(32, r.u32(24), 4);
    std::size_t at = 32 + 4 * lists;
    std::vector<std::vector<PointD>> all;
    for (std::size_t i = 0; i < lists; ++i) {
        all.push_back(r.points(at, r.u32(32 + 4 * i), narrow));
        at += all.back().size() * (narrow ? 4 : 8);
    }
    Draw(d, all);
}

void polyDrawRecord(Drawing& d, const EmfRecord& r) {
    const bool narrow = r.type >= firstNarrow;
    const auto list = r.points(28, r.u32(24), narrow);
    polyDraw(d, list, partOf(r.bytes, 28 + list.size() * (narrow ? 4 : 8), list.size()));
}

template <ArcKind Kind>
void arcRecord(Drawing& d, const EmfRecord& r) {
    arc(d, Kind, r.corners(8), r.point(24), r.point(32));
}

void angleArcRecord(Drawing& d, const EmfRecord& r) {
    const double start = r.f32(20), sweep = r.f32(24);
    if (!(std::abs(start) < 1e6 && std::abs(sweep) < 1e6)) return;
    angleArc(d, r.point(8), r.u32(16), start, std::clamp(sweep, -3600.0, 3600.0));
}

template <bool Filled, bool Stroked>
void paintPath(Drawing& d, const EmfRecord&) {
    if (d.isCollecting()) return;
    d.paint(d.path(), Filled, Stroked);
    d.path().clear();
}

Brush brushOf(const Drawing& d, std::uint32_t index) {
    const Object* object = d.object(index);
    const auto* brush = object ? std::get_if<Brush>(object) : nullptr;
    return brush ? *brush : d.state().brush;
}

void invertRegion(Drawing& d, const EmfRecord& r) {
    constexpr int invert = 6;
    fillRegion(d, r.region(28), Brush{}, invert);
}

void gradient(Drawing& d, const EmfRecord& r) {
    constexpr std::size_t vertexSize = 16;
    const std::size_t vertices = r.countAt(36, r.u32(24), vertexSize);
    const std::uint32_t mode = r.u32(32);
    const std::size_t corners = mode == 2 ? 3 : 2, meshAt = 36 + vertices * vertexSize;
    const auto vertex = [&](std::uint32_t index) {
        const std::size_t at = 36 + std::size_t{index} * vertexSize;
        const auto high = [&](std::size_t i) {
            return static_cast<std::uint8_t>(r.u16(at + i) >> 8);
        };
        return Vertex{r.point(at), {high(8), high(10), high(12), 255}};
    };
    for (std::size_t i = 0; i < r.countAt(meshAt, r.u32(28), 4 * corners); ++i) {
        std::array<std::uint32_t, 3> index{};
        for (std::size_t k = 0; k < corners; ++k)
            index[k] = r.u32(meshAt + 4 * (i * corners + k));
        if (std::ranges::any_of(index, [&](std::uint32_t n) { return n >= vertices; })) continue;
        if (mode == 2)
            gradientTriangle(d, {vertex(index[0]), vertex(index[1]), vertex(index[2])});
        else
            gradientRectangle(d, vertex(index[0]), vertex(index[1]), mode == 1);
    }
}

constexpr EmfEntry entries[] = {
    {2, points<bezier>},
    {3, points<polygon>},
    {4, points<polyline>},
    {5, points<curveStrip>},
    {6, points<lineStrip>},
    {7, pointLists<polyPolyline>},
    {8, pointLists<polyPolygon>},
    {15, [](Drawing& d, const EmfRecord& r) { setPixel(d, r.point(8), r.color(16, d)); }},
    {27, [](Drawing& d, const EmfRecord& r) { moveTo(d, r.point(8)); }},
    {41, angleArcRecord},
    {42, [](Drawing& d, const EmfRecord& r) { ellipse(d, r.corners(8)); }},
    {43, [](Drawing& d, const EmfRecord& r) { rectangle(d, r.corners(8)); }},
    {44, [](Drawing& d, const EmfRecord& r) { roundRectangle(d, r.corners(8), r.point(24)); }},
    {45, arcRecord<ArcKind::Arc>},
    {46, arcRecord<ArcKind::Chord>},
    {47, arcRecord<ArcKind::Pie>},
    {54, [](Drawing& d, const EmfRecord& r) { lineTo(d, r.point(8)); }},
    {55, arcRecord<ArcKind::ArcTo>},
    {56, polyDrawRecord},
    {59, [](Drawing& d, const EmfRecord&) { d.beginPath(); }},
    {60, [](Drawing& d, const EmfRecord&) { d.endPath(); }},
    {61, [](Drawing& d, const EmfRecord&) { closeFigure(d); }},
    {62, paintPath<true, false>},
    {63, paintPath<true, true>},
    {64, paintPath<false, true>},
    {68,
     [](Drawing& d, const EmfRecord&) {
         d.endPath();
         d.path().clear();
     }},
    {71,
     [](Drawing& d, const EmfRecord& r) {
         fillRegion(d, r.region(32), brushOf(d, r.u32(28)), d.state().rop2);
     }},
    {72,
     [](Drawing& d, const EmfRecord& r) {
         frameRegion(d, r.region(40), brushOf(d, r.u32(28)), r.point(32));
     }},
    {73, invertRegion},
    {74, [](Drawing& d,
            const EmfRecord& r) { fillRegion(d, r.region(28), d.state().brush, d.state().rop2); }},
    {85, points<bezier>},
    {86, points<polygon>},
    {87, points<polyline>},
    {88, points<curveStrip>},
    {89, points<lineStrip>},
    {90, pointLists<polyPolyline>},
    {91, pointLists<polyPolygon>},
    {92, polyDrawRecord},
    {118, gradient},
};

} // namespace

std::span<const EmfEntry> emfFigureRecords() {
    return entries;
}

} // namespace kvn::imaging::metafile
