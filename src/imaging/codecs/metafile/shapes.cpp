#include "imaging/codecs/metafile/shapes.h"

#include <algorithm>
#include <numbers>

namespace kvn::imaging::metafile {

namespace {

std::vector<PointD> mapped(const Drawing& drawing, std::span<const PointD> points) {
    const Affine map = drawing.toCanvas();
    std::vector<PointD> out;
    out.reserve(points.size());
    for (const PointD p : points)
        out.push_back(map(p));
    return out;
}

// Lines that go on from the current position. Within a path they join the figure there.
void continueFigure(Drawing& drawing, PointD end, const auto& add) {
    State& state = drawing.state();
    if (drawing.isCollecting()) {
        if (drawing.path().isEmpty()) drawing.path().moveTo(drawing.toCanvas()(state.position));
        add(drawing.path());
    } else {
        draw::Path path;
        path.moveTo(drawing.toCanvas()(state.position));
        add(path);
        drawing.paint(path, false, true);
    }
    state.position = end;
}

} // namespace

void moveTo(Drawing& drawing, PointD to) {
    drawing.state().position = to;
    if (drawing.isCollecting()) drawing.path().moveTo(drawing.toCanvas()(to));
}

void lineTo(Drawing& drawing, PointD to) {
    lineStrip(drawing, {&to, 1});
}

void lineStrip(Drawing& drawing, std::span<const PointD> points) {
    if (points.empty()) return;
    const auto line = mapped(drawing, points);
    continueFigure(drawing, points.back(), [&](draw::Path& path) {
        for (const PointD p : line)
            path.lineTo(p);
    });
}

void curveStrip(Drawing& drawing, std::span<const PointD> points) {
    points = points.first(points.size() / 3 * 3);
    if (points.empty()) return;
    const auto line = mapped(drawing, points);
    continueFigure(drawing, points.back(), [&](draw::Path& path) {
        for (std::size_t i = 0; i + 2 < line.size(); i += 3)
            path.curveTo(line[i], line[i + 1], line[i + 2]);
    });
}

void polyline(Drawing& drawing, std::span<const PointD> points) {
    draw::Path path;
    path.addPolyline(mapped(drawing, points), false);
    drawing.figure(path, false, true);
}

void polygon(Drawing& drawing, std::span<const PointD> points) {
    draw::Path path;
    path.addPolyline(mapped(drawing, points), true);
    drawing.figure(path, true, true);
}

void bezier(Drawing& drawing, std::span<const PointD> points) {
    const auto line = mapped(drawing, points);
    if (line.size() < 4) return;
    draw::Path path;
    path.moveTo(line.front());
    for (std::size_t i = 1; i + 2 < line.size(); i += 3)
        path.curveTo(line[i], line[i + 1], line[i + 2]);
    drawing.figure(path, false, true);
}

void polyPolyline(Drawing& drawing, const std::vector<std::vector<PointD>>& lines) {
    draw::Path path;
    for (const auto& line : lines)
        path.addPolyline(mapped(drawing, line), false);
    drawing.figure(path, false, true);
}

void polyPolygon(Drawing& drawing, const std::vector<std::vector<PointD>>& figures) {
    draw::Path path;
    for (const auto& figure : figures)
        path.addPolyline(mapped(drawing, figure), true);
    drawing.figure(path, true, true);
}

void polyDraw(Drawing& drawing, std::span<const PointD> points,
              std::span<const std::uint8_t> kinds) {
    constexpr int closes = 1, line = 2, curve = 4, begins = 6;
    const auto all = mapped(drawing, points);
    draw::Path path;
    path.moveTo(drawing.toCanvas()(drawing.state().position));
    for (std::size_t i = 0; i < all.size() && i < kinds.size(); ++i) {
        const int kind = kinds[i] & ~closes;
        if (kind == begins) path.moveTo(all[i]);
        if (kind == line) path.lineTo(all[i]);
        if (kind == curve && i + 2 < all.size() && i + 2 < kinds.size()) {
            path.curveTo(all[i], all[i + 1], all[i + 2]);
            i += 2;
        }
        if (kinds[i] & closes) path.close();
    }
    if (!points.empty()) drawing.state().position = points.back();
    drawing.figure(path, false, true);
}

void closeFigure(Drawing& drawing) {
    drawing.path().close();
}

// --- boxes -----------------------------------------------------------------------------------

namespace {

// Where a figure in a box is built: in canvas pixels if the axes run along them, so that the
// last row and column can be left out as on the device, else in logical units.
struct Bench {
    PointD a, b;   // a is the upper left corner
    Affine points; // logical to here
    Affine map;    // from here to the canvas
    PointD center() const { return (a + b) * 0.5; }
    double rx() const { return (b.x - a.x) / 2; }
    double ry() const { return (b.y - a.y) / 2; }
};

Bench benchFor(const Drawing& drawing, const Corners& box) {
    const Affine map = drawing.toCanvas();
    const bool turned = map.xy != 0 || map.yx != 0;
    Bench bench;
    (turned ? bench.map : bench.points) = map;
    const PointD p = bench.points(box.a), q = bench.points(box.b);
    bench.a = {std::min(p.x, q.x), std::min(p.y, q.y)};
    bench.b = {std::max(p.x, q.x), std::max(p.y, q.y)};
    const Pen& pen = drawing.state().pen;
    if (turned || pen.style == penNull) return bench;
    const PointD pixel = drawing.devicePixel();
    bench.b = {std::max(bench.a.x, bench.b.x - pixel.x), std::max(bench.a.y, bench.b.y - pixel.y)};
    if (pen.style == penInsideFrame && pen.width * map.scale() > 1.5) {
        const PointD in{std::min(pen.width * std::abs(map.xx) / 2, bench.rx()),
                        std::min(pen.width * std::abs(map.yy) / 2, bench.ry())};
        bench.a = bench.a + in;
        bench.b = bench.b - in;
    }
    return bench;
}

void figureOn(Drawing& drawing, const Bench& bench, const draw::Path& built, bool filled) {
    draw::Path path;
    path.append(built, bench.map);
    drawing.figure(path, filled, true);
}

} // namespace

void rectangle(Drawing& drawing, const Corners& box) {
    const Bench bench = benchFor(drawing, box);
    draw::Path path;
    path.addRectangle(bench.a, bench.b);
    figureOn(drawing, bench, path, true);
}

void roundRectangle(Drawing& drawing, const Corners& box, PointD corner) {
    const Bench bench = benchFor(drawing, box);
    draw::Path path;
    path.addRoundRectangle(bench.a, bench.b, corner.x / 2 * std::abs(bench.points.xx),
                           corner.y / 2 * std::abs(bench.points.yy));
    figureOn(drawing, bench, path, true);
}

void ellipse(Drawing& drawing, const Corners& box) {
    const Bench bench = benchFor(drawing, box);
    draw::Path path;
    path.addEllipse(bench.center(), bench.rx(), bench.ry());
    figureOn(drawing, bench, path, true);
}

void arc(Drawing& drawing, ArcKind kind, const Corners& box, PointD from, PointD to) {
    const Bench bench = benchFor(drawing, box);
    const PointD center = bench.center();
    if (!(bench.rx() > 0 && bench.ry() > 0)) return;
    const auto angleOf = [&](PointD p) {
        const PointD ray = bench.points(p) - center;
        return std::atan2(ray.y / bench.ry(), ray.x / bench.rx());
    };
    // Anticlockwise on the screen, where y runs down.
    const bool clockwise = drawing.state().clockwise != (bench.map.determinant() < 0);
    const double start = angleOf(from);
    double sweep = angleOf(to) - start;
    constexpr double turn = 2 * std::numbers::pi;
    if (clockwise && sweep <= 1e-12) sweep += turn;
    if (!clockwise && sweep >= -1e-12) sweep -= turn;
    draw::Path path;
    if (kind == ArcKind::Pie) path.moveTo(center);
    path.addArc(center, bench.rx(), bench.ry(), start, sweep);
    if (kind == ArcKind::Pie || kind == ArcKind::Chord) path.close();
    if (kind != ArcKind::ArcTo) return figureOn(drawing, bench, path, kind != ArcKind::Arc);
    const auto back = bench.points.inverse();
    const PointD end = back ? (*back)(path.current()) : drawing.state().position;
    continueFigure(drawing, end, [&](draw::Path& figure) { figure.join(path, bench.map); });
}

void angleArc(Drawing& drawing, PointD center, double radius, double start, double sweep) {
    constexpr double degree = std::numbers::pi / 180;
    draw::Path arc;
    arc.addArc(center, radius, radius, -start * degree, -sweep * degree);
    const PointD end = arc.current();
    const Affine map = drawing.toCanvas();
    continueFigure(drawing, end, [&](draw::Path& figure) { figure.join(arc, map); });
}

// --- areas -----------------------------------------------------------------------------------

draw::Outline outlineOf(const Region& region, const Affine& map) {
    draw::Path path;
    for (const auto& [left, top, right, bottom] : region.rects)
        path.addRectangle({left, top}, {right, bottom});
    return path.flattened(map);
}

namespace {

void fillOutline(Drawing& drawing, const draw::Outline& outline, const Brush& brush, int rop2) {
    if (drawing.rehearse(boundsOf(outline))) return;
    State& state = drawing.state();
    const draw::FillRule rule = state.fillRule;
    state.fillRule = draw::FillRule::NonZero;
    drawing.fillWith(outline, brush, rop2);
    state.fillRule = rule;
}

} // namespace

void fillRegion(Drawing& drawing, const Region& region, const Brush& brush, int rop2) {
    fillOutline(drawing, outlineOf(region, drawing.toCanvas()), brush, rop2);
}

// The borders of each rectangle, inwards; those inside a region of several show too.
void frameRegion(Drawing& drawing, const Region& region, const Brush& brush, PointD width) {
    Region frame;
    for (const auto& [left, top, right, bottom] : region.rects) {
        const double x = std::min(std::abs(width.x), (right - left) / 2);
        const double y = std::min(std::abs(width.y), (bottom - top) / 2);
        frame.rects.push_back({left, top, right, top + y});
        frame.rects.push_back({left, bottom - y, right, bottom});
        frame.rects.push_back({left, top + y, left + x, bottom - y});
        frame.rects.push_back({right - x, top + y, right, bottom - y});
    }
    fillRegion(drawing, frame, brush, drawing.state().rop2);
}

void setPixel(Drawing& drawing, PointD at, Rgba color) {
    const PointD p = drawing.toCanvas()(at);
    const PointD corner{std::floor(p.x), std::floor(p.y)};
    draw::Path path;
    path.addRectangle(corner, corner + PointD{1, 1});
    const draw::Outline outline = path.flattened({});
    if (!drawing.rehearse(boundsOf(outline))) drawing.colorArea(outline, color);
}

void gradientRectangle(Drawing& drawing, const Vertex& a, const Vertex& b, bool upright) {
    const Affine map = drawing.toCanvas();
    draw::Path path;
    path.addRectangle(a.at, b.at);
    const draw::Outline outline = path.flattened(map);
    if (drawing.rehearse(boundsOf(outline))) return;
    const PointD across = upright ? PointD{b.at.x, a.at.y} : PointD{a.at.x, b.at.y};
    const PointD along = upright ? PointD{a.at.x, b.at.y} : PointD{b.at.x, a.at.y};
    const PointD corners[] = {map(a.at), map(along), map(across)};
    const Rgba colors[] = {a.color, b.color, a.color};
    const draw::GradientPaint paint(corners, colors);
    drawing.area(outline, {&paint, nullptr, draw::Ink::patternAlone});
}

void gradientTriangle(Drawing& drawing, const std::array<Vertex, 3>& corners) {
    const Affine map = drawing.toCanvas();
    const PointD points[] = {map(corners[0].at), map(corners[1].at), map(corners[2].at)};
    const Rgba colors[] = {corners[0].color, corners[1].color, corners[2].color};
    draw::Path path;
    path.addPolyline(points, true);
    const draw::Outline outline = path.flattened({});
    if (drawing.rehearse(boundsOf(outline))) return;
    const draw::GradientPaint paint(points, colors);
    drawing.area(outline, {&paint, nullptr, draw::Ink::patternAlone});
}

} // namespace kvn::imaging::metafile
