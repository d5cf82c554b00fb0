#include "imaging/operations/support/bands.h"

#include <cmath>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

// Colours times alpha as floats, so that mixing neighbours weighs them by how visible they are.
cv::Mat premultiplied(const cv::Mat& in) {
    const int channels = in.channels();
    cv::Mat out(in.rows, in.cols, CV_MAKETYPE(CV_32F, channels));
    for (int y = 0; y < in.rows; ++y) {
        const std::uint8_t* from = in.ptr(y);
        float* to = out.ptr<float>(y);
        for (int x = 0; x < in.cols; ++x, from += channels, to += channels) {
            const float alpha = from[channels - 1];
            for (int c = 0; c < channels - 1; ++c)
                to[c] = static_cast<float>(from[c]) * alpha * (1.0f / 255.0f);
            to[channels - 1] = alpha;
        }
    }
    return out;
}

std::uint8_t toByte(float value) {
    return static_cast<std::uint8_t>(std::lrintf(std::min(255.0f, std::max(0.0f, value))));
}

// Back to straight bytes. Where nothing is visible the colour is the source's.
void unmultiply(const cv::Mat& in, const cv::Mat& source, cv::Mat& out) {
    const int channels = in.channels();
    for (int y = 0; y < out.rows; ++y) {
        const float* from = in.ptr<float>(y);
        const std::uint8_t* before = source.ptr(y);
        std::uint8_t* to = out.ptr(y);
        for (int x = 0; x < out.cols; ++x, from += channels, to += channels, before += channels) {
            const float alpha = from[channels - 1];
            to[channels - 1] = toByte(alpha);
            const float scale = alpha >= 0.5f ? 255.0f / alpha : 0.0f;
            for (int c = 0; c < channels - 1; ++c)
                to[c] = scale > 0 ? toByte(from[c] * scale) : before[c];
        }
    }
}

void copyAlpha(const cv::Mat& source, cv::Mat& out) {
    const int channels = out.channels();
    for (int y = 0; y < out.rows; ++y) {
        const std::uint8_t* from = source.ptr(y) + channels - 1;
        std::uint8_t* to = out.ptr(y) + channels - 1;
        for (int x = 0; x < out.cols; ++x, from += channels, to += channels)
            *to = *from;
    }
}

} // namespace

cv::Mat matOf(const ConstView& view) {
    return cv::Mat(view.height, view.width, CV_8UC(bytesPerPixel(view.type)),
                   const_cast<std::uint8_t*>(view.data), view.stride);
}

cv::Mat matOf(const View& view) {
    return cv::Mat(view.height, view.width, CV_8UC(bytesPerPixel(view.type)), view.data,
                   view.stride);
}

BandKernel wholeBand(std::function<void(const cv::Mat&, cv::Mat&)> filter) {
    return [filter = std::move(filter)](const cv::Mat& in, int top, cv::Mat& out) {
        if (in.rows == out.rows) return filter(in, out);
        cv::Mat all(in.rows, in.cols, in.type());
        filter(in, all);
        all.rowRange(top, top + out.rows).copyTo(out);
    };
}

Raster filterBands(const Raster& picture, int border, AlphaRule rule, Task& task,
                   const BandKernel& kernel) {
    const Raster source = promoted(picture, task);
    const bool alpha = hasAlpha(source.type());
    const bool weighted = rule == AlphaRule::Weighted && alpha && !isOpaque(source);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int height = source.height();
    const int minRows = std::max(32, border * 4);
    parallelRows(
        height, task,
        [&](int y0, int y1) {
            const int first = std::max(0, y0 - border), last = std::min(height, y1 + border);
            // A matrix of its own, not a part of the whole: filters must not look beyond it.
            const cv::Mat in =
                matOf(ConstView{from.row(first), from.stride, from.width, last - first, from.type});
            cv::Mat out = matOf(View{to.row(y0), to.stride, to.width, y1 - y0, to.type});
            const int top = y0 - first;
            const cv::Mat middle = in.rowRange(top, top + out.rows);
            if (weighted) {
                cv::Mat mixed(out.rows, out.cols, CV_MAKETYPE(CV_32F, out.channels()));
                kernel(premultiplied(in), top, mixed);
                return unmultiply(mixed, middle, out);
            }
            kernel(in, top, out);
            if (alpha && rule == AlphaRule::ColorOnly) copyAlpha(middle, out);
        },
        minRows);
    return result;
}

} // namespace kvn::imaging
