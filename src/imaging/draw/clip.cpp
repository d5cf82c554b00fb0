#include "imaging/draw/clip.h"

#include <algorithm>

#include "imaging/rgba.h"

namespace kvn::imaging::draw {

Rect pixelsAround(const Box& box, const Rect& limit) {
    if (limit.isEmpty() || !(box.left < limit.right() && box.right > limit.x &&
                             box.top < limit.bottom() && box.bottom > limit.y))
        return {};
    const auto low = [](double value, int least) {
        return value > least ? static_cast<int>(std::floor(value)) : least;
    };
    const auto high = [](double value, std::int64_t most) {
        return value < double(most) ? static_cast<int>(std::ceil(value)) : static_cast<int>(most);
    };
    const int x = low(box.left, limit.x), y = low(box.top, limit.y);
    return {x, y, high(box.right, limit.right()) - x, high(box.bottom, limit.bottom()) - y};
}

Outline outlineOf(const Rect& rect) {
    const double left = rect.x, top = rect.y, right = double(rect.right()),
                 bottom = double(rect.bottom());
    return {{{{left, top}, {right, top}, {right, bottom}, {left, bottom}}, true}};
}

void Clip::reset() {
    bounds_ = whole_;
    shapes_.clear();
}

void Clip::add(const Rect& rect, Combine how) {
    if (how == Combine::And) {
        bounds_ = bounds_.intersected(rect);
    } else if (how == Combine::Replace) {
        reset();
        bounds_ = whole_.intersected(rect);
    } else if (!rect.intersected(whole_).isEmpty()) {
        add(outlineOf(rect), FillRule::NonZero, how);
    }
}

void Clip::add(Outline outline, FillRule rule, Combine how) {
    const Rect box = pixelsAround(boundsOf(outline), whole_);
    if (how == Combine::Replace) {
        reset();
        how = Combine::And;
    }
    if (shapes_.size() >= mostShapes) return;
    if (how == Combine::Or || how == Combine::Xor) {
        // The mask must close what the rectangle alone closed so far.
        if (bounds_ != whole_)
            shapes_.push_back(std::make_shared<const Shape>(
                Shape{outlineOf(bounds_), FillRule::NonZero, Combine::And}));
        bounds_ = bounds_.united(box);
    } else if (how == Combine::And) {
        bounds_ = bounds_.intersected(box);
    } else if (box.intersected(bounds_).isEmpty()) {
        return;
    }
    shapes_.push_back(std::make_shared<const Shape>(Shape{std::move(outline), rule, how}));
}

void Clip::move(PointD by) {
    if (bounds_ == whole_ && shapes_.empty()) return;
    const auto whole = [](double v) {
        constexpr double far = 1e6;
        return static_cast<int>(std::lround(std::clamp(v, -far, far)));
    };
    bounds_.x += whole(by.x);
    bounds_.y += whole(by.y);
    bounds_ = bounds_.intersected(whole_);
    for (auto& shape : shapes_) {
        Shape moved = *shape;
        for (Polyline& line : moved.outline)
            for (PointD& p : line.points)
                p = p + by;
        shape = std::make_shared<const Shape>(std::move(moved));
    }
}

namespace {

void combineRow(Combine how, std::uint8_t* open, const std::vector<std::uint8_t>& shape) {
    const auto each = [&](auto&& merged) {
        for (std::size_t x = 0; x < shape.size(); ++x)
            open[x] = static_cast<std::uint8_t>(merged(open[x], shape[x]));
    };
    switch (how) {
    case Combine::Or:
        return each([](int p, int q) { return p + q - mul255(p, q); });
    case Combine::Xor:
        return each([](int p, int q) { return std::max(0, p + q - 2 * mul255(p, q)); });
    case Combine::Without:
        return each([](int p, int q) { return p - mul255(p, q); });
    default:
        return each([](int p, int q) { return mul255(p, q); });
    }
}

void addShape(Mask& mask, const Clip::Shape& shape) {
    const auto width = static_cast<std::size_t>(mask.area.width);
    std::vector<std::uint8_t> row(width);
    int done = mask.area.y;
    // A row where the shape is not counts as uncovered.
    const auto combine = [&](int y) {
        combineRow(shape.how, &mask.values[static_cast<std::size_t>(y - mask.area.y) * width], row);
    };
    const auto skipTo = [&](int y) {
        std::ranges::fill(row, 0);
        for (; done < y; ++done)
            if (shape.how == Combine::And) combine(done);
    };
    ScanConverter scan(mask.area);
    scan.add(shape.outline);
    scan.sweep(shape.rule, [&](int y, std::span<const Span> spans) {
        skipTo(y);
        for (const Span& span : spans)
            std::fill_n(row.begin() + (span.x - mask.area.x), span.length, span.coverage);
        combine(y);
        done = y + 1;
    });
    skipTo(static_cast<int>(mask.area.bottom()));
}

} // namespace

Mask maskOf(const Clip& clip) {
    Mask mask{clip.bounds(), {}};
    mask.values.assign(static_cast<std::size_t>(mask.area.width) *
                           static_cast<std::size_t>(mask.area.height),
                       255);
    for (const auto& shape : clip.shapes())
        addShape(mask, *shape);
    return mask;
}

} // namespace kvn::imaging::draw
