#include "imaging/operations/filters/morphology.h"

#include <algorithm>
#include <string>
#include <vector>

#include "basic/error.h"
#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/operations/filters/window_rows.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int largestSide = 99;
enum Kind { Dilation, Erosion, Open, Close, TopHat };

KVN_CLONES void subtractFrom(const std::uint8_t* __restrict from, std::uint8_t* __restrict out,
                             std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(from[i] - out[i]);
}

// The neighbours that count, from the pixel, and how far they reach.
struct Element {
    std::vector<Point> offsets;
    int reach = 0;
    bool isSquare() const {
        const auto side = static_cast<std::size_t>(2 * reach + 1);
        return offsets.size() == side * side;
    }
};

Element elementOf(const Matrix& kernel) {
    Element element;
    for (int row = 0; row < kernel.rows; ++row)
        for (int column = 0; column < kernel.columns; ++column) {
            if (kernel.at(row, column) == 0) continue;
            element.offsets.push_back({column - kernel.columns / 2, row - kernel.rows / 2});
        }
    for (const Point& p : element.offsets)
        element.reach = std::max({element.reach, std::abs(p.x), std::abs(p.y)});
    return element;
}

// Rows of extremes, made from the padded rows around each.
class ExtremeRow {
  public:
    ExtremeRow(Extreme which, const Element& element) : which_(which), element_(&element) {}

    void operator()(const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& shape) {
        const int step = bytesPerPixel(shape.type), reach = element_->reach;
        const std::size_t count = rowBytes(shape.type, shape.width);
        if (element_->isSquare()) {
            scratch_.resize(rowBytes(shape.type, shape.width + 2 * reach));
            extremeOfRows(which_, rows, 2 * reach + 1, scratch_.data(), scratch_.size());
            extremeAlong(which_, scratch_.data(), out, count, 2 * reach + 1, step);
            return;
        }
        const int sign = which_ == Extreme::Greatest ? -1 : 1;
        starts_.clear();
        for (const Point& p : element_->offsets)
            starts_.push_back(rows[reach + sign * p.y] + (reach + sign * p.x) * step);
        extremeOfRows(which_, starts_.data(), static_cast<int>(starts_.size()), out, count);
    }

  private:
    Extreme which_;
    const Element* element_;
    std::vector<std::uint8_t> scratch_;
    std::vector<const std::uint8_t*> starts_;
};

Raster extremeIn(const Raster& source, Extreme which, const Element& element, Task& task) {
    const int reach = element.reach;
    return throughWindow(source, {reach, reach, reach}, true, task, ExtremeRow(which, element));
}

// First one extreme, then the other of its rows, which are made as they are wanted. The top hat is
// the picture minus its opening, which is nowhere greater.
Raster extremeTwice(const Raster& picture, Extreme first, bool topHat, const Element& element,
                    Task& task) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int reach = element.reach;
    const std::size_t count = rowBytes(from.type, from.width);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            ExtremeRow inner(first, element);
            ExtremeRow outer(first == Extreme::Least ? Extreme::Greatest : Extreme::Least, element);
            PaddedRows rows(from, reach, reach, reach);
            PaddedRows between(from, reach, reach, reach,
                               [&](int y, std::uint8_t* row) { inner(rows.around(y), row, from); });
            for (int y = y0; y < y1; ++y) {
                std::uint8_t* const out = to.row(y);
                outer(between.around(y), out, from);
                if (topHat) subtractFrom(from.row(y), out, count);
                if (hasAlpha(from.type))
                    copyAlpha(from.row(y), out, from.width, bytesPerPixel(from.type));
            }
        },
        std::max(32, 8 * reach));
    return result;
}

constexpr Argument morphologyArguments[] = {
    {"kernel", ArgumentKind::Matrix, 0, 0, "", "entries other than 0 count; up to 99 x 99"},
    {"operation", ArgumentKind::Integer, 0, 4, "", "dilation, erosion, open, close, top hat"},
};

Raster morphology(const Raster& source, const Arguments& arguments, Task& task) {
    const Matrix& kernel = arguments.matrix(0);
    if (std::max(kernel.rows, kernel.columns) > largestSide) {
        const std::string name = "Effects.Morphology";
        throw RuntimeError(errors::invalidCall, name + ": the kernel is too large", name);
    }
    const Element element = elementOf(kernel);
    if (element.offsets.empty()) return source;
    switch (std::clamp(arguments.integer(1), 0, 4)) {
    case Dilation:
        return extremeIn(source, Extreme::Greatest, element, task);
    case Erosion:
        return extremeIn(source, Extreme::Least, element, task);
    case Open:
        return extremeTwice(source, Extreme::Least, false, element, task);
    case Close:
        return extremeTwice(source, Extreme::Greatest, false, element, task);
    default:
        return extremeTwice(source, Extreme::Least, true, element, task);
    }
}

} // namespace

const Operation morphologyOperation = {
    .name = "Effects.Morphology",
    .undoName = "Morphological Filter",
    .arguments = morphologyArguments,
    .run = overVisibleColors<morphology>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Grows or shrinks what is bright by a kernel.",
};

} // namespace kvn::imaging
