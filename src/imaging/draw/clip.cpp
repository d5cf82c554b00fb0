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

namespace {

std::uint8_t combined(Combine how, std::uint8_t open, std::uint8_t shape) {
    const std::uint8_t both = mul255(open, shape);
    switch (how) {
    case Combine::Or:
        return static_cast<std::uint8_t>(open + shape - both);
    case Combine::Xor:
        return static_cast<std::uint8_t>(std::max(0, open + shape - 2 * both));
    case Combine::Without:
        return static_cast<std::uint8_t>(open - both);
    default:
        return both;
    }
}

void addShape(Mask& mask, const Clip::Shape& shape) {
    const auto width = static_cast<std::size_t>(mask.area.width);
    std::vector<std::uint8_t> row(width);
    int done = mask.area.y;
    // A row where the shape is not counts as uncovered.
    const auto combineRow = [&](int y) {
        std::uint8_t* open = &mask.values[static_cast<std::size_t>(y - mask.area.y) * width];
        for (std::size_t x = 0; x < width; ++x)
            open[x] = combined(shape.how, open[x], row[x]);
    };
    const auto skipTo = [&](int y) {
        std::ranges::fill(row, 0);
        for (; done < y; ++done)
            if (shape.how == Combine::And) combineRow(done);
    };
    ScanConverter scan(mask.area);
    scan.add(shape.outline);
    scan.sweep(shape.rule, [&](int y, std::span<const Span> spans) {
        skipTo(y);
        for (const Span& span : spans)
            std::fill_n(row.begin() + (span.x - mask.area.x), span.length, span.coverage);
        combineRow(y);
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
