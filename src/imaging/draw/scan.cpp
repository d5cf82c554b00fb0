#include "imaging/draw/scan.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace kvn::imaging::draw {

namespace {

constexpr int one = 256;                     // parts of a pixel
constexpr std::int64_t full = 2 * one * one; // a whole pixel in the unit of areas

int coverageOf(std::int64_t area, FillRule rule) {
    std::int64_t value = std::abs(area);
    if (rule == FillRule::EvenOdd) {
        value %= 2 * full;
        if (value > full) value = 2 * full - value;
    }
    value = std::min(value, full);
    return static_cast<int>((value * 255 + full / 2) / full);
}

// To the nearest whole number; what is below -0.5 becomes some number below 1.
int rounded(double value) {
    return static_cast<int>(value + 0.5);
}

bool isNumber(PointD p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

PointD within(PointD p) {
    constexpr double far = 1e9;
    return {std::clamp(p.x, -far, far), std::clamp(p.y, -far, far)};
}

double xAt(PointD a, PointD b, double y) {
    return a.x + (b.x - a.x) * ((y - a.y) / (b.y - a.y));
}

double yAt(PointD a, PointD b, double x) {
    return a.y + (b.y - a.y) * ((x - a.x) / (b.x - a.x));
}

} // namespace

ScanConverter::ScanConverter(const Rect& clip) : clip_(clip) {
    clip_.width = std::clamp(clip_.width, 0, 0xffff);
    clip_.height = std::clamp(clip_.height, 0, 0xffff);
    cells_.resize(static_cast<std::size_t>(clip_.width));
    touched_.resize(cells_.size() / 64 + 1);
}

void ScanConverter::add(const Outline& outline) {
    for (const Polyline& line : outline)
        add(line.points);
}

void ScanConverter::add(std::span<const PointD> figure) {
    if (figure.size() < 2 || clip_.isEmpty()) return;
    const PointD corner{double(clip_.x), double(clip_.y)};
    PointD last = within(figure.back() - corner);
    for (const PointD p : figure) {
        if (!isNumber(p)) continue;
        const PointD next = within(p - corner);
        if (isNumber(last)) addEdge(last, next);
        last = next;
    }
}

// Cuts off what is above, below and right of the clip; what is left of it moves to its edge.
void ScanConverter::addEdge(PointD a, PointD b) {
    if (a.y == b.y) return;
    const int direction = a.y < b.y ? 1 : -1;
    if (direction < 0) std::swap(a, b);
    const double bottom = clip_.height, right = clip_.width;
    if (b.y <= 0 || a.y >= bottom || (a.x >= right && b.x >= right)) return;
    const PointD from = a, to = b;
    if (a.y < 0) a = {xAt(from, to, 0), 0};
    if (b.y > bottom) b = {xAt(from, to, bottom), bottom};
    // The heights at which the edge passes the left and the right side.
    double cuts[2];
    int count = 0;
    for (const double side : {0.0, right})
        if ((a.x < side) != (b.x < side)) cuts[count++] = std::clamp(yAt(from, to, side), a.y, b.y);
    if (count == 2 && cuts[0] > cuts[1]) std::swap(cuts[0], cuts[1]);
    for (int i = 0; i <= count; ++i) {
        const double y = i < count ? cuts[i] : b.y;
        const PointD end = i < count ? PointD{xAt(from, to, y), y} : b;
        if (y > a.y) addInside(a, end, direction);
        a = end;
    }
}

// A piece that lies wholly left of, in or right of the clip.
void ScanConverter::addInside(PointD a, PointD b, int direction) {
    const double right = clip_.width;
    const double middle = (a.x + b.x) / 2;
    if (middle >= right) return;
    a.x = middle < 0 ? 0 : std::clamp(a.x, 0.0, right);
    b.x = middle < 0 ? 0 : std::clamp(b.x, 0.0, right);
    Edge edge;
    edge.y0 = static_cast<int>(std::lround(a.y * one));
    edge.y1 = static_cast<int>(std::lround(b.y * one));
    if (edge.y0 >= edge.y1) return;
    edge.x0 = a.x * one;
    edge.slope = (b.x - a.x) * one / (edge.y1 - edge.y0);
    edge.direction = direction;
    edges_.push_back(edge);
    crossings_ += static_cast<std::uint64_t>((edge.y1 - edge.y0) / one + 1 + std::abs(b.x - a.x));
}

void ScanConverter::sweep(FillRule rule,
                          const std::function<void(int y, std::span<const Span>)>& row) {
    std::ranges::sort(edges_, {}, &Edge::y0);
    std::vector<Edge> active;
    std::size_t next = 0;
    for (int y = 0; y < clip_.height && (next < edges_.size() || !active.empty()); ++y) {
        if (active.empty()) y = std::max(y, edges_[next].y0 / one);
        while (next < edges_.size() && edges_[next].y0 < (y + 1) * one)
            active.push_back(edges_[next++]);
        for (const Edge& edge : active)
            accumulate(edge, y);
        std::erase_if(active, [y](const Edge& edge) { return edge.y1 <= (y + 1) * one; });
        spans_.clear();
        giveRow(rule);
        if (!spans_.empty()) row(clip_.y + y, spans_);
    }
    edges_.clear();
    crossings_ = 0;
}

void ScanConverter::accumulate(const Edge& edge, int row) {
    const int top = row * one;
    const int ya = std::max(edge.y0, top), yb = std::min(edge.y1, top + one);
    if (ya >= yb) return;
    const int right = clip_.width * one;
    const auto x = [&](int y) {
        return std::clamp(rounded(edge.x0 + (y - edge.y0) * edge.slope), 0, right);
    };
    addSlice(x(ya), ya, x(yb), yb, edge.direction);
}

// A piece within one row, cell by cell.
void ScanConverter::addSlice(int xa, int ya, int xb, int yb, int direction) {
    int cell = xa / one;
    const int last = xb / one;
    if (cell == last) return addCell(cell, (yb - ya) * direction, xa + xb - 2 * cell * one);
    const double rise = double(yb - ya) / (xb - xa);
    const int step = xb > xa ? 1 : -1;
    int x = xa, y = ya;
    for (; cell != last; cell += step) {
        const int border = (step > 0 ? cell + 1 : cell) * one;
        const int yBorder = ya + rounded((border - xa) * rise);
        addCell(cell, (yBorder - y) * direction, x + border - 2 * cell * one);
        x = border;
        y = yBorder;
    }
    addCell(last, (yb - y) * direction, x + xb - 2 * last * one);
}

void ScanConverter::addCell(int cell, int dy, int xSum) {
    if (dy == 0 || cell >= clip_.width) return;
    const auto at = static_cast<std::size_t>(cell);
    cells_[at].cover += dy;
    cells_[at].area += dy * xSum;
    touched_[at / 64] |= std::uint64_t{1} << at % 64;
}

// Touched cells one by one, what lies between them as one span.
void ScanConverter::giveRow(FillRule rule) {
    std::int64_t cover = 0;
    int x = 0;
    for (std::size_t word = 0; word < touched_.size(); ++word) {
        std::uint64_t bits = touched_[word];
        if (bits == 0) continue;
        touched_[word] = 0;
        for (; bits != 0; bits &= bits - 1) {
            const int cell = static_cast<int>(word * 64) + std::countr_zero(bits);
            giveSpan(x, cell - x, coverageOf(cover * 2 * one, rule));
            Cell& here = cells_[static_cast<std::size_t>(cell)];
            cover += here.cover;
            giveSpan(cell, 1, coverageOf(cover * 2 * one - here.area, rule));
            here = {};
            x = cell + 1;
        }
    }
    giveSpan(x, clip_.width - x, coverageOf(cover * 2 * one, rule));
}

void ScanConverter::giveSpan(int x, int length, int coverage) {
    if (length <= 0 || coverage == 0) return;
    x += clip_.x;
    if (!spans_.empty()) {
        Span& last = spans_.back();
        if (last.x + last.length == x && last.coverage == coverage) {
            last.length += length;
            return;
        }
    }
    spans_.push_back({x, length, static_cast<std::uint8_t>(coverage)});
}

} // namespace kvn::imaging::draw
