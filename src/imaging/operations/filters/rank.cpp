#include "imaging/operations/filters/rank.h"

#include <opencv2/imgproc.hpp>

#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/filters/padded_rows.h"
#include "imaging/operations/filters/rank_kernels.h"
#include "imaging/operations/support/bands.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr int largestSize = 255;
constexpr int largestCounted = 15; // its 225 values are counted in a byte

constexpr Argument rankArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestSize, "px", "side of the window; made odd"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays"},
};

void copyAlpha(const std::uint8_t* pixels, std::uint8_t* out, int width, int channels) {
    for (int i = channels - 1; i < width * channels; i += channels)
        out[i] = pixels[i];
}

// `row(rows, out)` makes one row from the padded rows around it.
template <class Row>
Raster throughWindow(const Raster& picture, int size, bool keepAlpha, Task& task, const Row& row) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int radius = size / 2, channels = bytesPerPixel(from.type);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            PaddedRows rows(from, radius, radius, radius);
            std::vector<std::uint8_t> scratch(rowBytes(from.type, from.width + size));
            for (int y = y0; y < y1; ++y) {
                row(rows.around(y), scratch.data(), to.row(y), from);
                if (keepAlpha) copyAlpha(from.row(y), to.row(y), from.width, channels);
            }
        },
        std::max(16, size));
    return result;
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
    return throughWindow(source, size, keepAlpha, task,
                         [size](const std::uint8_t* const* rows, std::uint8_t*, std::uint8_t* out,
                                const ConstView& view) {
                             medianOfWindow(rows, size, bytesPerPixel(view.type), out,
                                            rowBytes(view.type, view.width));
                         });
}

Raster extreme(Extreme which, const Raster& source, const Arguments& arguments, Task& task) {
    const int size = oddSize(arguments.integer(0), largestSize);
    if (size == 1) return source;
    return throughWindow(source, size, arguments.boolean(1) && hasAlpha(source.type()), task,
                         [=](const std::uint8_t* const* rows, std::uint8_t* scratch,
                             std::uint8_t* out, const ConstView& view) {
                             extremeOfRows(which, rows, size, scratch,
                                           rowBytes(view.type, view.width + size - 1));
                             extremeAlong(which, scratch, out, rowBytes(view.type, view.width),
                                          size, bytesPerPixel(view.type));
                         });
}

Raster minimum(const Raster& source, const Arguments& arguments, Task& task) {
    return extreme(Extreme::Least, source, arguments, task);
}

Raster maximum(const Raster& source, const Arguments& arguments, Task& task) {
    return extreme(Extreme::Greatest, source, arguments, task);
}

} // namespace

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
