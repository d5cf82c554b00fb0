#include "imaging/draw/surface.h"

#include <algorithm>
#include <cassert>

namespace kvn::imaging::draw {

namespace {

// Pixels that are worked on at a time.
constexpr int chunk = 1024;

// What things cost, in nanoseconds.
constexpr double perCrossing = 12, perPoint = 20, perSolidPixel = 1.5, perPaintedPixel = 12,
                 perMaskPixel = 3;

std::uint8_t mixed(int present, int fresh, int coverage) {
    // Divided by 255 and rounded, exactly.
    const int sum = present * (255 - coverage) + fresh * coverage + 128;
    return static_cast<std::uint8_t>((sum + (sum >> 8)) >> 8);
}

std::uint32_t packed(const std::uint8_t* p) {
    return std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16;
}

// The eight products of pattern, source and present colour that the code names.
std::uint32_t combined(unsigned code, std::uint32_t p, std::uint32_t s, std::uint32_t d) {
    std::uint32_t result = 0;
    for (unsigned bit = 0; bit < 8; ++bit)
        if (code >> bit & 1) result |= (bit & 4 ? p : ~p) & (bit & 2 ? s : ~s) & (bit & 1 ? d : ~d);
    return result;
}

void mix(std::uint8_t* to, Rgba color, int coverage) {
    to[0] = mixed(to[0], color.r, coverage);
    to[1] = mixed(to[1], color.g, coverage);
    to[2] = mixed(to[2], color.b, coverage);
}

// One colour, covered alike.
void blendRun(std::uint8_t* to, int count, int coverage, Rgba color) {
    const int c = mul255(coverage, color.a);
    for (int i = 0; i < count; ++i, to += 3) {
        if (c == 255) {
            to[0] = color.r;
            to[1] = color.g;
            to[2] = color.b;
        } else {
            mix(to, color, c);
        }
    }
}

void blendSolid(std::uint8_t* to, int count, const std::uint8_t* coverage, Rgba color) {
    for (int i = 0; i < count; ++i, to += 3)
        mix(to, color, mul255(coverage[i], color.a));
}

} // namespace

Surface::Surface(Raster& picture, Effort& effort)
    : view_(picture.edit()), effort_(effort), maskedClip_({}), patternRow_(chunk),
      sourceRow_(chunk), coverageRow_(static_cast<std::size_t>(view_.width)) {
    assert(view_.type == ImageType::Rgb24);
}

void Surface::fill(const Outline& outline, FillRule rule, const Ink& ink, const Clip& clip) {
    const Rect part = pixelsAround(boundsOf(outline), clip.bounds().intersected(rect()));
    double points = 0;
    for (const Polyline& line : outline)
        points += static_cast<double>(line.points.size());
    if (!effort_.spend(perPoint * points) || part.isEmpty()) return;
    ScanConverter scan(part);
    scan.add(outline);
    sweep(scan, rule, ink, clip);
}

void Surface::stroke(const Outline& outline, const StrokeStyle& style, const Affine& pen,
                     const Ink& ink, const Clip& clip) {
    Box box = boundsOf(outline);
    box.grow(style.width * std::max(1.0, style.miterLimit) *
             (std::abs(pen.xx) + std::abs(pen.xy) + std::abs(pen.yx) + std::abs(pen.yy)));
    const Rect part = pixelsAround(box, clip.bounds().intersected(rect()));
    if (part.isEmpty() || !effort_.spend(perPoint * strokeCost(outline, style, pen, part))) return;
    ScanConverter scan(part);
    strokeOutline(outline, style, pen, part,
                  [&scan](std::span<const PointD> polygon) { scan.add(polygon); });
    sweep(scan, FillRule::NonZero, ink, clip);
}

void Surface::sweep(ScanConverter& scan, FillRule rule, const Ink& ink, const Clip& clip) {
    if (!effort_.spend(perCrossing * static_cast<double>(scan.crossings()))) return;
    const Mask* mask = maskFor(clip);
    std::optional<Rgba> color;
    if (ink.code == Ink::patternAlone) color = ink.pattern->solid();
    const double perPixel = color ? perSolidPixel : perPaintedPixel;
    scan.sweep(rule, [&](int y, std::span<const Span> spans) {
        if (effort_.isSpent()) return;
        int pixels = 0;
        for (const Span& span : spans) {
            pixels += span.length;
            if (color && !mask)
                blendRun(at(span.x, y), span.length, span.coverage, *color);
            else
                paintSpan(y, span, ink, mask);
        }
        effort_.spend(perPixel * pixels);
    });
}

// The mask made last serves until another clip comes.
const Mask* Surface::maskFor(const Clip& clip) {
    if (clip.isRectangle()) return nullptr;
    if (maskedClip_.sameAs(clip)) return &mask_;
    const Rect& part = clip.bounds();
    double cost = 0;
    for (const auto& shape : clip.shapes()) {
        cost += perMaskPixel * part.width * part.height;
        for (const Polyline& line : shape->outline)
            for (std::size_t i = 1; i < line.points.size(); ++i) {
                const PointD step = line.points[i] - line.points[i - 1];
                cost += perCrossing * (1 + std::min(std::abs(step.x), double(part.width)) +
                                       std::min(std::abs(step.y), double(part.height)));
            }
    }
    mask_ = effort_.spend(cost) ? maskOf(clip) : Mask{};
    maskedClip_ = clip;
    return &mask_;
}

void Surface::paintSpan(int y, const Span& span, const Ink& ink, const Mask* mask) {
    const auto size = static_cast<std::size_t>(span.length);
    std::fill_n(coverageRow_.begin(), size, span.coverage);
    if (mask) {
        if (mask->values.empty()) return;
        const std::uint8_t* open = mask->row(y) + (span.x - mask->area.x);
        for (std::size_t i = 0; i < size; ++i)
            coverageRow_[i] = mul255(coverageRow_[i], open[i]);
    }
    for (int done = 0; done < span.length; done += chunk)
        blend(span.x + done, y, std::min(chunk, span.length - done),
              &coverageRow_[std::size_t(done)], ink);
}

void Surface::blend(int x, int y, int count, const std::uint8_t* coverage, const Ink& ink) {
    std::uint8_t* to = at(x, y);
    if (ink.code == Ink::patternAlone)
        if (const auto color = ink.pattern->solid()) return blendSolid(to, count, coverage, *color);
    const bool pattern = ink.usesPattern(), source = ink.usesSource();
    if (pattern) ink.pattern->fetch(x, y, count, patternRow_.data());
    if (source) ink.source->fetch(x, y, count, sourceRow_.data());
    const bool copies = ink.code == Ink::patternAlone || ink.code == Ink::sourceAlone;
    for (int i = 0; i < count; ++i, to += 3) {
        const Rgba p = pattern ? patternRow_[std::size_t(i)] : Rgba{};
        const Rgba s = source ? sourceRow_[std::size_t(i)] : Rgba{};
        const int c = mul255(coverage[i], mul255(p.a, s.a));
        if (c == 0) continue;
        const Rgba& first = pattern ? p : s;
        const std::uint32_t fresh =
            copies ? packed(&first.r) : combined(ink.code, packed(&p.r), packed(&s.r), packed(to));
        for (int k = 0; k < 3; ++k)
            to[k] = mixed(to[k], static_cast<std::uint8_t>(fresh >> 8 * k), c);
    }
}

} // namespace kvn::imaging::draw
