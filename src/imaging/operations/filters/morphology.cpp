#include "imaging/operations/filters/morphology.h"

#include <algorithm>
#include <string>
#include <vector>

#include "basic/error.h"
#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/operations/filters/window_rows.h"

namespace kvn::imaging {
namespace {

constexpr int largestSide = 99;
enum Kind { Dilation, Erosion, Open, Close, TopHat };

// The neighbours that count, from the pixel, and how far they reach.
struct Element {
    std::vector<Point> offsets;
    int reach = 0;
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

Raster extremeIn(const Raster& source, Extreme which, const Element& element, Task& task) {
    const int reach = element.reach;
    const int sign = which == Extreme::Greatest ? -1 : 1;
    return throughWindow(
        source, {reach, reach, reach}, true, task,
        [=, &element, starts = std::vector<const std::uint8_t*>()](
            const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) mutable {
            starts.clear();
            for (const Point& p : element.offsets)
                starts.push_back(rows[reach + sign * p.y] +
                                 (reach + sign * p.x) * bytesPerPixel(view.type));
            extremeOfRows(which, starts.data(), static_cast<int>(starts.size()), out,
                          rowBytes(view.type, view.width));
        });
}

Raster extremeTwice(const Raster& source, Extreme first, const Element& element, Task& task) {
    const Extreme second = first == Extreme::Least ? Extreme::Greatest : Extreme::Least;
    Raster between;
    {
        const Task::Stage stage(task, 0, 0.45);
        between = extremeIn(source, first, element, task);
    }
    const Task::Stage stage(task, 0.45, 0.9);
    return extremeIn(between, second, element, task);
}

// The colours of the picture minus those of its opening, which are nowhere greater; written over
// the opening.
Raster topHat(const Raster& picture, const Element& element, Task& task) {
    const Raster source = promoted(picture, task);
    Raster opening = extremeTwice(source, Extreme::Least, element, task);
    const Task::Stage stage(task, 0.9, 1);
    const ConstView from = source.view();
    const View to = opening.edit();
    const int channels = bytesPerPixel(from.type);
    const std::size_t count = rowBytes(from.type, from.width);
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* __restrict own = from.row(y);
            std::uint8_t* __restrict out = to.row(y);
            for (std::size_t i = 0; i < count; ++i)
                out[i] = static_cast<std::uint8_t>(own[i] - out[i]);
            if (hasAlpha(from.type)) copyAlpha(own, out, from.width, channels);
        }
    });
    return opening;
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
        return extremeTwice(source, Extreme::Least, element, task);
    case Close:
        return extremeTwice(source, Extreme::Greatest, element, task);
    default:
        return topHat(source, element, task);
    }
}

} // namespace

const Operation morphologyOperation = {
    .name = "Effects.Morphology",
    .undoName = "Morphological Filter",
    .arguments = morphologyArguments,
    .run = morphology,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Grows or shrinks what is bright by a kernel.",
};

} // namespace kvn::imaging
