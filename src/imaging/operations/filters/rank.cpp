#include "imaging/operations/filters/rank.h"

#include <opencv2/imgproc.hpp>

#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/filters/convolve_kernels.h"
#include "imaging/operations/filters/extremes.h"
#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/operations/filters/window_rows.h"
#include "imaging/operations/support/bands.h"
#include "imaging/operations/support/hidden_colors.h"

namespace kvn::imaging {
namespace {

constexpr int largestSize = 255;
constexpr int largestCounted = 15; // its 225 values are counted in a byte

constexpr Argument rankArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestSize, "px", "side of the window; made odd"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays"},
};

WindowSize windowOf(int size) {
    return {size / 2, size / 2, size / 2};
}

// Two channels are no case of the library's.
void medianBySliding(const cv::Mat& in, cv::Mat& out, int size) {
    if (in.channels() != 2) return cv::medianBlur(in, out, size);
    std::vector<cv::Mat> planes;
    cv::split(in, planes);
    for (cv::Mat& plane : planes) {
        cv::Mat filtered;
        cv::medianBlur(plane, filtered, size);
        plane = filtered;
    }
    cv::merge(planes, out);
}

Raster medianCut(const Raster& source, const Arguments& arguments, Task& task) {
    const int size = oddSize(arguments.integer(0), largestSize);
    if (size == 1) return source;
    const bool keepAlpha = arguments.boolean(1) && hasAlpha(source.type());
    if (size > largestCounted)
        return filterBands(
            source, size / 2, keepAlpha ? AlphaRule::ColorOnly : AlphaRule::EveryChannel, task,
            wholeBand([size](const cv::Mat& in, cv::Mat& out) { medianBySliding(in, out, size); }));
    return throughWindow(
        source, windowOf(size), keepAlpha, task,
        [size](const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) {
            medianOfWindow(rows, size, bytesPerPixel(view.type), out,
                           rowBytes(view.type, view.width));
        });
}

Raster extreme(Extreme which, const Raster& source, const Arguments& arguments, Task& task) {
    const int size = oddSize(arguments.integer(0), largestSize);
    if (size == 1) return source;
    return extremeOfWindows(which, source, size, arguments.boolean(1), task);
}

Raster minimum(const Raster& source, const Arguments& arguments, Task& task) {
    return extreme(Extreme::Least, source, arguments, task);
}

Raster maximum(const Raster& source, const Arguments& arguments, Task& task) {
    return extreme(Extreme::Greatest, source, arguments, task);
}

Raster despeckle(const Raster& source, const Arguments&, Task& task) {
    return throughWindow(
        source, windowOf(3), true, task,
        [](const std::uint8_t* const* rows, std::uint8_t* out, const ConstView& view) {
            limitByNeighbours(rows, bytesPerPixel(view.type), out, rowBytes(view.type, view.width));
        });
}

} // namespace

const Operation despeckleOperation = {
    .name = "Effects.Despeckle",
    .undoName = "Despeckle",
    .run = overVisibleColors<despeckle>,
    .border = 1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Removes specks of one or two pixels and leaves lines and edges.",
};

const Operation medianCutOperation = {
    .name = "Effects.MedianCut",
    .undoName = "Median Cut",
    .arguments = rankArguments,
    .run = medianCut,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .note = "The median of the square window around every pixel.",
};

const Operation minimumOperation = {
    .name = "Effects.Minimum",
    .undoName = "Minimum",
    .arguments = rankArguments,
    .run = minimum,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .note = "The least value of the square window around every pixel.",
};

const Operation maximumOperation = {
    .name = "Effects.Maximum",
    .undoName = "Maximum",
    .arguments = rankArguments,
    .run = maximum,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .note = "The greatest value of the square window around every pixel.",
};

} // namespace kvn::imaging
