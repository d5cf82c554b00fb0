// Pens: how wide, how dashed, and lines of one pixel that stay sharp.
#include <algorithm>

#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

namespace {

using draw::LineCap;
using draw::LineJoin;

// Dashes and gaps: in widths of the pen, longer ones for thin lines, or the pen's own in units.
std::vector<double> dashesOf(const Pen& pen, bool thin, double width, double unit) {
    static const std::vector<double> wide[] = {
        {}, {3, 1}, {1, 1}, {3, 1, 1, 1}, {3, 1, 1, 1, 1, 1}};
    static const std::vector<double> fine[] = {
        {}, {18, 6}, {3, 3}, {9, 6, 3, 6}, {9, 3, 3, 3, 3, 3}};
    std::vector<double> dashes;
    if (pen.style >= penDash && pen.style <= penDashDotDot)
        dashes = (thin ? fine : wide)[pen.style];
    else if (pen.style == penAlternate)
        dashes = {1, 1};
    const bool own = pen.style == penUserDashes && pen.dashes;
    if (own) dashes = *pen.dashes;
    for (double& dash : dashes)
        dash *= own ? unit : width;
    return dashes;
}

// Level and upright lines move to the middle of the pixels they run through.
void sharpen(draw::Outline& outline) {
    constexpr double straight = 1e-3;
    const auto middle = [](double v) { return std::floor(v) + 0.5; };
    for (draw::Polyline& line : outline) {
        const std::vector<PointD> old = line.points;
        const std::size_t count = old.size();
        for (std::size_t i = 0; i + 1 < count + (line.closed ? 1 : 0); ++i) {
            const std::size_t next = (i + 1) % count;
            const PointD step = old[next] - old[i];
            for (const std::size_t end : {i, next}) {
                if (std::abs(step.x) < straight) line.points[end].x = middle(old[end].x);
                if (std::abs(step.y) < straight) line.points[end].y = middle(old[end].y);
            }
        }
    }
}

LineCap capOf(int number) {
    return number == 1 ? LineCap::Square : number == 2 ? LineCap::Flat : LineCap::Round;
}

LineJoin joinOf(int number) {
    return number == 1 ? LineJoin::Bevel : number == 2 ? LineJoin::Miter : LineJoin::Round;
}

} // namespace

void Drawing::strokePath(const draw::Path& path) {
    if (!surface_) return;
    const Pen& pen = state_.pen;
    const PointD half = devicePixel() * 0.5;
    Affine map = toCanvas();
    draw::StrokeStyle style;
    style.width = pen.width;
    if (pen.cosmetic) style.width *= 2 * std::max(half.x, half.y);
    const bool thin = pen.width <= 0 || (pen.cosmetic ? style.width : pen.width * map.scale()) <= 1;
    if (thin) style.width = 1;
    const double unit = pen.cosmetic ? 2 * std::max(half.x, half.y) : thin ? map.scale() : 1;
    if (thin || pen.cosmetic) map = {};
    style.cap = capOf(pen.cap);
    style.join = joinOf(pen.join);
    style.miterLimit = std::clamp(state_.miterLimit, 1.0, 1000.0);
    style.dashes = dashesOf(pen, thin, style.width, unit);
    if (thin) {
        // Ends are whole pixels, which dashes take from their gaps.
        style.cap = LineCap::Square;
        for (std::size_t i = 0; i < style.dashes.size(); ++i)
            style.dashes[i] = std::max(0.0, style.dashes[i] + (i % 2 ? 1 : -1));
        style.join = LineJoin::Miter;
        style.miterLimit = 2;
    }
    draw::Outline outline = path.flattened(Affine::translation(half.x, half.y));
    if (style.width * map.scale() < 1.5) sharpen(outline);
    const draw::SolidPaint front(pen.color), back(state_.backColor);
    const std::uint8_t code = codeOfRop2(state_.rop2);
    if (!style.dashes.empty() && thin && state_.opaque && pen.style <= penDashDotDot) {
        draw::StrokeStyle whole = style;
        whole.dashes.clear();
        surface_->stroke(outline, whole, map, {&back, nullptr, code}, state_.clip);
    }
    surface_->stroke(outline, style, map, {&front, nullptr, code}, state_.clip);
}

} // namespace kvn::imaging::metafile
