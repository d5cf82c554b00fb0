#include "imaging/draw/stroke.h"

#include <algorithm>
#include <numbers>

namespace kvn::imaging::draw {

namespace {

PointD leftOf(PointD direction) {
    return {direction.y, -direction.x};
}

// The angle between the points of round joins and caps: less than a twentieth of a pixel off.
double arcStep(const StrokeStyle& style, const Affine& pen) {
    const double radius = std::max(style.width / 2 * pen.scale(), 0.2);
    return 2 * std::acos(1 - 0.04 / radius);
}

constexpr int mostArcParts = 128, mostDashes = 200'000;

// The pieces of line that a pen draws, in the pen's space.
class Stroker {
  public:
    Stroker(const StrokeStyle& style, const Affine& pen, const PolygonSink& sink)
        : style_(style), pen_(pen), sink_(sink), half_(style.width / 2),
          arcStep_(arcStep(style, pen)) {}

    void line(const std::vector<PointD>& points, bool closed) const {
        std::vector<PointD> clean;
        for (const PointD p : points)
            if (clean.empty() || length(p - clean.back()) > 1e-9) clean.push_back(p);
        if (closed && clean.size() > 1 && length(clean.back() - clean.front()) <= 1e-9)
            clean.pop_back();
        if (clean.size() == 1) return dot(clean.front());
        if (clean.size() < 2) return;
        const std::size_t segments = clean.size() - (closed ? 0 : 1);
        const auto at = [&](std::size_t i) { return clean[i % clean.size()]; };
        const auto direction = [&](std::size_t i) { return unit(at(i + 1) - at(i)); };
        for (std::size_t i = 0; i < segments; ++i) {
            segment(at(i), at(i + 1), direction(i));
            if (i + 1 < segments || closed)
                join(at(i + 1), direction(i), direction((i + 1) % clean.size()));
        }
        if (closed) return;
        cap(clean.front(), direction(0) * -1);
        cap(clean.back(), direction(segments - 1));
    }

  private:
    static PointD unit(PointD v) { return v * (1 / length(v)); }

    void polygon(std::initializer_list<PointD> points) const {
        points_ = points;
        send();
    }

    void send() const {
        std::vector<PointD>& points = points_;
        for (PointD& p : points)
            p = pen_.linear(p);
        // All pieces turn the same way, so that overlapping ones never cancel out.
        double area = 0;
        for (std::size_t i = 0; i < points.size(); ++i)
            area += cross(points[i] - points[0], points[(i + 1) % points.size()] - points[0]);
        if (area < 0) std::ranges::reverse(points);
        sink_(points);
    }

    void segment(PointD a, PointD b, PointD direction) const {
        const PointD side = leftOf(direction) * half_;
        polygon({a + side, b + side, b - side, a - side});
    }

    // The fan from `from` to `to` around the center, both at the pen's radius, the short way.
    void arc(PointD center, PointD from, double sweep) const {
        const int parts =
            std::clamp(static_cast<int>(std::ceil(std::abs(sweep) / arcStep_)), 1, mostArcParts);
        const double c = std::cos(sweep / parts), s = std::sin(sweep / parts);
        points_ = {center, center + from};
        for (int i = 0; i < parts; ++i) {
            from = {from.x * c - from.y * s, from.x * s + from.y * c};
            points_.push_back(center + from);
        }
        send();
    }

    void join(PointD at, PointD in, PointD out) const {
        const double turn = std::atan2(cross(in, out), draw::dot(in, out));
        if (std::abs(turn) < 1e-6) return;
        const PointD a = leftOf(in) * (turn > 0 ? half_ : -half_);
        const PointD b = leftOf(out) * (turn > 0 ? half_ : -half_);
        if (style_.join == LineJoin::Round) return arc(at, a, turn);
        const double miter = 1 / std::max(1e-9, std::cos(turn / 2)); // length in widths
        if (style_.join == LineJoin::Miter && miter <= style_.miterLimit)
            polygon({at, at + a, at + unit(a + b) * (half_ * miter), at + b});
        else
            polygon({at, at + a, at + b});
    }

    void cap(PointD at, PointD outwards) const {
        const PointD side = leftOf(outwards) * half_;
        if (style_.cap == LineCap::Round)
            arc(at, side, std::numbers::pi);
        else if (style_.cap == LineCap::Square)
            polygon(
                {at + side, at + side + outwards * half_, at - side + outwards * half_, at - side});
    }

    void dot(PointD at) const {
        if (style_.cap == LineCap::Flat) return;
        cap(at, {1, 0});
        cap(at, {-1, 0});
    }

    const StrokeStyle& style_;
    const Affine& pen_;
    const PolygonSink& sink_;
    double half_;
    double arcStep_;
    mutable std::vector<PointD> points_; // kept from piece to piece: there are a great many
};

// The share of the line a-b that lies in the box; empty if from > to.
struct Share {
    double from = 0;
    double to = 1;
};

Share shareInside(PointD a, PointD b, const Box& box) {
    Share share;
    const auto narrow = [&share](double start, double delta, double low, double high) {
        if (delta == 0) {
            if (start < low || start > high) share.to = -1;
            return;
        }
        const double t0 = (low - start) / delta, t1 = (high - start) / delta;
        share.from = std::max(share.from, std::min(t0, t1));
        share.to = std::min(share.to, std::max(t0, t1));
    };
    narrow(a.x, b.x - a.x, box.left, box.right);
    narrow(a.y, b.y - a.y, box.top, box.bottom);
    return share;
}

// A polyline as the runs of it that lie near the visible part, whole segments where it is in
// doubt. Each run knows how far along the line it begins.
struct Run {
    std::vector<PointD> points;
    double start = 0;
    bool closed = false;
};

std::vector<Run> visibleRuns(const Polyline& line, const Box& box, const Affine& toPen) {
    std::vector<Run> runs;
    const auto& points = line.points;
    const std::size_t count = points.size();
    if (count == 1) return {{points, 0, false}};
    const std::size_t segments = line.closed ? count : count - 1;
    double travelled = 0;
    bool whole = true, going = false;
    for (std::size_t i = 0; i < segments; ++i) {
        const PointD a = points[i], b = points[(i + 1) % count];
        const double full = length(toPen.linear(b - a));
        const Share share = shareInside(a, b, box);
        if (share.from <= share.to) {
            const bool cutStart = share.from > 0, cutEnd = share.to < 1;
            if (cutStart || !going)
                runs.push_back({{a + (b - a) * share.from}, travelled + full * share.from, false});
            runs.back().points.push_back(cutEnd ? a + (b - a) * share.to : b);
            going = !cutEnd;
            whole = whole && !cutStart && !cutEnd;
        } else {
            going = whole = false;
        }
        travelled += full;
    }
    if (!line.closed || runs.empty()) return runs;
    if (whole && runs.size() == 1) {
        runs.front().points.pop_back();
        runs.front().closed = true;
    } else if (going && runs.size() > 1 && runs.front().start == 0) {
        // The last run goes on in the first.
        auto& last = runs.back().points;
        last.insert(last.end(), runs.front().points.begin() + 1, runs.front().points.end());
        runs.erase(runs.begin());
    }
    return runs;
}

// Cuts a run, in the pen's space, into its dashes; past the last one allowed it goes on whole.
std::vector<Polyline> dashed(const Run& run, const std::vector<double>& dashes, int& allowed) {
    double period = 0;
    for (const double d : dashes)
        period += d;
    double left = std::fmod(run.start, period);
    std::size_t at = 0;
    while (left >= dashes[at]) {
        left -= dashes[at];
        at = (at + 1) % dashes.size();
    }
    left = dashes[at] - left;
    std::vector<Polyline> out;
    std::vector<PointD> points = run.points;
    if (run.closed) points.push_back(points.front());
    if (at % 2 == 0) out.push_back({{points.front()}, false});
    for (std::size_t i = 1; i < points.size(); ++i) {
        const PointD a = points[i - 1], b = points[i];
        const double full = length(b - a);
        double done = 0;
        while (full - done > left && allowed-- > 0) {
            done += left;
            const PointD p = a + (b - a) * (done / full);
            if (at % 2 == 0)
                out.back().points.push_back(p);
            else
                out.push_back({{p}, false});
            at = (at + 1) % dashes.size();
            left = dashes[at];
        }
        left -= full - done;
        if (at % 2 == 0) out.back().points.push_back(b);
    }
    return out;
}

// An even number of dashes and gaps that are long enough to be seen apart, or none.
std::vector<double> usableDashes(const StrokeStyle& style, double scale) {
    std::vector<double> dashes = style.dashes;
    if (dashes.size() % 2) dashes.insert(dashes.end(), style.dashes.begin(), style.dashes.end());
    double period = 0;
    for (const double d : dashes) {
        if (!(d >= 0) || d > 1e9) return {};
        period += d;
    }
    const bool tiny = period * scale < 0.5 * static_cast<double>(dashes.size());
    return tiny ? std::vector<double>{} : dashes;
}

} // namespace

void strokeOutline(const Outline& outline, const StrokeStyle& style, const Affine& pen,
                   const Rect& visible, const PolygonSink& sink) {
    const auto toPen = pen.inverse();
    if (!toPen || !(style.width > 0)) return;
    const double reach = style.width * std::max(1.0, style.miterLimit) *
                         std::max(std::hypot(pen.xx, pen.yx), std::hypot(pen.xy, pen.yy));
    Box box{double(visible.x), double(visible.y), double(visible.right()),
            double(visible.bottom())};
    box.grow(std::min(reach, 1e6) + 2);
    const std::vector<double> dashes = usableDashes(style, pen.scale());
    int dashesLeft = mostDashes;
    const Stroker stroker(style, pen, sink);
    for (const Polyline& line : outline) {
        if (line.points.empty()) continue;
        for (Run& run : visibleRuns(line, box, *toPen)) {
            for (PointD& p : run.points)
                p = toPen->linear(p);
            if (dashes.empty() || dashesLeft <= 0) {
                stroker.line(run.points, run.closed);
                continue;
            }
            for (const Polyline& dash : dashed(run, dashes, dashesLeft))
                stroker.line(dash.points, false);
        }
    }
}

double strokeCost(const Outline& outline, const StrokeStyle& style, const Affine& pen,
                  const Rect& visible) {
    const bool round = style.join == LineJoin::Round || style.cap == LineCap::Round;
    const double arc = round ? std::min(3.2 / arcStep(style, pen), double(mostArcParts)) : 0;
    const std::vector<double> dashes = usableDashes(style, pen.scale());
    double period = 0, pieces = 0;
    for (const double dash : dashes)
        period += dash * pen.scale();
    const double longest = std::hypot(visible.width, visible.height);
    for (const Polyline& line : outline) {
        pieces += static_cast<double>(line.points.size());
        for (std::size_t i = 1; period > 0 && i < line.points.size(); ++i)
            pieces += std::min(length(line.points[i] - line.points[i - 1]), longest) / period *
                      static_cast<double>(dashes.size() / 2);
    }
    return pieces * (8 + arc);
}

} // namespace kvn::imaging::draw
