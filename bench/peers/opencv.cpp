#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/peers/peers.h"

namespace kvn::bench {
namespace {

using cv::Mat;
using Call = std::function<void(const Mat& source, Mat& target)>;

struct Row {
    const char* name;
    Call call;
    bool bands = false; // same type, and a band's rows depend on nothing but the rows around it
};

Mat matOf(const imaging::Raster& raster) {
    const imaging::ConstView view = raster.view();
    return Mat(view.height, view.width, CV_8UC3, const_cast<std::uint8_t*>(view.data), view.stride);
}

Mat byteCurve(double (*curve)(double)) {
    Mat table(1, 256, CV_8U);
    for (int v = 0; v < 256; ++v)
        table.at<std::uint8_t>(v) = cv::saturate_cast<std::uint8_t>(curve(v));
    return table;
}

Call lookup(double (*curve)(double)) {
    return [table = byteCurve(curve)](const Mat& s, Mat& t) { cv::LUT(s, table, t); };
}

// Where a work is done on grey, its result comes back as colour, as ours does.
std::vector<Row> pointRows() {
    return {
        {"copy", [](const Mat& s, Mat& t) { s.copyTo(t); }, true},
        {"invert", [](const Mat& s, Mat& t) { cv::bitwise_not(s, t); }, true},
        {"gamma", lookup([](double v) { return 255 * std::pow(v / 255, 1 / 1.5); })},
        {"brightness and contrast", [](const Mat& s, Mat& t) { s.convertTo(t, -1, 1.25, 19.125); },
         true},
        {"intensity", [](const Mat& s, Mat& t) { s.convertTo(t, -1, 1.25); }, true},
        {"posterize", lookup([](double v) { return std::round(v / 85) * 85; })},
        {"solarize", lookup([](double v) { return v < 128 ? v : 255 - v; })},
        {"threshold",
         [grey = Mat()](const Mat& s, Mat& t) mutable {
             cv::cvtColor(s, grey, cv::COLOR_RGB2GRAY);
             cv::threshold(grey, grey, 29, 255, cv::THRESH_BINARY);
             cv::cvtColor(grey, t, cv::COLOR_GRAY2RGB);
         }},
        {"saturation",
         [](const Mat& s, Mat& t) {
             Mat mix(3, 3, CV_32F);
             const float luma[] = {0.299f, 0.587f, 0.114f};
             for (int i = 0; i < 3; ++i)
                 for (int j = 0; j < 3; ++j)
                     mix.at<float>(i, j) = (i == j ? 1.5f : 0.0f) - 0.5f * luma[j];
             cv::transform(s, t, mix);
         },
         true},
        {"grey",
         [grey = Mat()](const Mat& s, Mat& t) mutable {
             cv::cvtColor(s, grey, cv::COLOR_RGB2GRAY);
             cv::cvtColor(grey, t, cv::COLOR_GRAY2RGB);
         }},
        {"hue, saturation, lightness",
         [hls = Mat(), table = Mat()](const Mat& s, Mat& t) mutable {
             if (table.empty()) {
                 table.create(1, 256, CV_8UC3);
                 for (int v = 0; v < 256; ++v)
                     table.at<cv::Vec3b>(v) = {cv::saturate_cast<uchar>((v + 14) % 180),
                                               cv::saturate_cast<uchar>(v + 10),
                                               cv::saturate_cast<uchar>(v + 30)};
             }
             cv::cvtColor(s, hls, cv::COLOR_RGB2HLS);
             cv::LUT(hls, table, hls);
             cv::cvtColor(hls, t, cv::COLOR_HLS2RGB);
         }},
        {"duotone",
         [grey = Mat(), inks = Mat(256, 1, CV_8UC3, cv::Scalar(160, 60, 20))](const Mat& s,
                                                                              Mat& t) mutable {
             cv::cvtColor(s, grey, cv::COLOR_RGB2GRAY);
             cv::applyColorMap(grey, t, inks);
         }},
        {"replace a colour",
         [mask = Mat()](const Mat& s, Mat& t) mutable {
             cv::inRange(s, cv::Scalar(109, 9, 0), cv::Scalar(211, 111, 71), mask);
             s.copyTo(t);
             t.setTo(cv::Scalar(0, 0, 0), mask);
         }},
        {"add alpha", [](const Mat& s, Mat& t) { cv::cvtColor(s, t, cv::COLOR_RGB2RGBA); }},
        {"swap red and blue", [](const Mat& s, Mat& t) { cv::cvtColor(s, t, cv::COLOR_RGB2BGR); },
         true},
        {"split into channels",
         [planes = std::vector<Mat>()](const Mat& s, Mat&) mutable { cv::split(s, planes); }},
        {"add to channels",
         [](const Mat& s, Mat& t) { cv::add(s, cv::Scalar(20, -10, 5), t, {}, CV_8U); }, true},
        {"histogram equalize",
         [planes = std::vector<Mat>()](const Mat& s, Mat& t) mutable {
             cv::split(s, planes);
             for (Mat& plane : planes)
                 cv::equalizeHist(plane, plane);
             cv::merge(planes, t);
         }},
        {"histogram stretch",
         [](const Mat& s, Mat& t) { cv::normalize(s, t, 0, 255, cv::NORM_MINMAX); }},
        {"mosaic 10 x 10",
         [small = Mat()](const Mat& s, Mat& t) mutable {
             cv::resize(s, small, {}, 0.1, 0.1, cv::INTER_AREA);
             cv::resize(small, t, s.size(), 0, 0, cv::INTER_NEAREST);
         }},
        {"Gaussian noise",
         [grain = Mat()](const Mat& s, Mat& t) mutable {
             grain.create(s.size(), CV_16SC3);
             cv::randn(grain, 0, 10);
             cv::add(s, grain, t, {}, CV_8U);
         }},
    };
}

// Through every second neighbour the coefficients of a line at 30 degrees.
Mat slantedLine() {
    Mat line = Mat::zeros(21, 21, CV_32F);
    for (int i = -10; i <= 10; ++i)
        line.at<float>(10 + static_cast<int>(std::lround(-0.5 * i)),
                       10 + static_cast<int>(std::lround(0.866 * i))) += 1.0f / 21;
    return line;
}

std::vector<Row> neighbourRows() {
    const auto gauss = [](double sigma) {
        return [sigma](const Mat& s, Mat& t) {
            cv::GaussianBlur(s, t, {}, sigma, sigma, cv::BORDER_REPLICATE);
        };
    };
    const auto median = [](int size) {
        return [size](const Mat& s, Mat& t) { cv::medianBlur(s, t, size); };
    };
    const auto square = [](int size) { return cv::getStructuringElement(0, {size, size}); };
    const auto table = [](const Mat& kernel) {
        return [kernel](const Mat& s, Mat& t) {
            cv::filter2D(s, t, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
        };
    };
    const auto unsharp = [](double sigma) {
        return [sigma, soft = Mat()](const Mat& s, Mat& t) mutable {
            cv::GaussianBlur(s, soft, {}, sigma, sigma, cv::BORDER_REPLICATE);
            cv::addWeighted(s, 2, soft, -1, 0, t);
        };
    };
    const auto morphology = [&](int operation, int size) {
        return [operation, element = square(size)](const Mat& s, Mat& t) {
            cv::morphologyEx(s, t, operation, element);
        };
    };
    const Mat sharpening = (cv::Mat_<float>(3, 3) << -1, -2, -1, -2, 20, -2, -1, -2, -1) / 8;
    const Mat five = (cv::Mat_<float>(5, 3) << 1, 2, 1, 2, 4, 2, 3, 6, 3, 2, 4, 2, 1, 2, 1) / 36;
    const Mat relief = (cv::Mat_<float>(3, 3) << -1, -1, 0, -1, 0, 1, 0, 1, 1);
    return {
        {"Gaussian blur, sigma 2", gauss(2), true},
        {"Gaussian blur, sigma 10", gauss(10), true},
        {"Gaussian blur, sigma 20", gauss(20), true},
        {"box blur 7 x 7",
         [](const Mat& s, Mat& t) {
             cv::blur(s, t, {7, 7}, {-1, -1}, cv::BORDER_REPLICATE);
         },
         true},
        {"median 3 x 3", median(3)},
        {"median 5 x 5", median(5)},
        {"median 9 x 9", median(9)},
        {"minimum 3 x 3", morphology(cv::MORPH_ERODE, 3), true},
        {"maximum 3 x 3", morphology(cv::MORPH_DILATE, 3), true},
        {"maximum 15 x 15", morphology(cv::MORPH_DILATE, 15), true},
        {"open 3 x 3", morphology(cv::MORPH_OPEN, 3)},
        {"top hat 3 x 3", morphology(cv::MORPH_TOPHAT, 3)},
        {"sharpen 3 x 3", table(sharpening), true},
        {"unsharp mask, radius 2.4", unsharp(2.4)},
        {"unsharp mask, radius 10", unsharp(10)},
        {"Sobel edges",
         [x = Mat(), y = Mat()](const Mat& s, Mat& t) mutable {
             cv::Sobel(s, x, CV_32F, 1, 0);
             cv::Sobel(s, y, CV_32F, 0, 1);
             cv::magnitude(x, y, x);
             x.convertTo(t, CV_8U);
         }},
        {"Canny edges",
         [grey = Mat(), soft = Mat()](const Mat& s, Mat& t) mutable {
             cv::cvtColor(s, grey, cv::COLOR_RGB2GRAY);
             cv::GaussianBlur(grey, soft, {}, 1.0);
             cv::Canny(soft, grey, 50, 100, 3, true);
             cv::cvtColor(grey, t, cv::COLOR_GRAY2RGB);
         }},
        {"emboss",
         [relief, grey = Mat(), lit = Mat()](const Mat& s, Mat& t) mutable {
             cv::cvtColor(s, grey, cv::COLOR_RGB2GRAY);
             cv::filter2D(grey, lit, -1, relief, {-1, -1}, 128, cv::BORDER_REPLICATE);
             cv::cvtColor(lit, t, cv::COLOR_GRAY2RGB);
         }},
        {"3 x 3 table", table(sharpening), true},
        {"3 x 5 table", table(five), true},
        {"motion blur, 10 px", table(slantedLine()), true},
    };
}

Call resizeTo(cv::Size size, int method) {
    return [=](const Mat& s, Mat& t) { cv::resize(s, t, size, 0, 0, method); };
}

// A map made anew each time, as a distortion with its own numbers needs it, row by row on both
// cores, then read through.
Call distortion(const std::function<cv::Point2f(float x, float y, const Mat& s)>& place) {
    return [place, map = Mat()](const Mat& s, Mat& t) mutable {
        map.create(s.size(), CV_32FC2);
        cv::parallel_for_({0, s.rows}, [&](const cv::Range& rows) {
            for (int y = rows.start; y < rows.end; ++y)
                for (int x = 0; x < s.cols; ++x)
                    map.at<cv::Vec2f>(y, x) =
                        cv::Vec2f(place(static_cast<float>(x), static_cast<float>(y), s));
        });
        cv::remap(s, t, map, {}, cv::INTER_CUBIC, cv::BORDER_REPLICATE);
    };
}

template <class Polar>
Call around(Polar polar) {
    return distortion([polar](float x, float y, const Mat& s) {
        const float cx = static_cast<float>(s.cols) / 2, cy = static_cast<float>(s.rows) / 2;
        const float dx = x - cx, dy = y - cy, r = std::sqrt(dx * dx + dy * dy);
        float scale = 1, turn = 0;
        if (r < 3000 && r > 0) polar(r, scale, turn);
        const float c = std::cos(turn) * scale, n = std::sin(turn) * scale;
        return cv::Point2f(cx + c * dx - n * dy, cy + n * dx + c * dy);
    });
}

std::vector<Row> shapeRows() {
    const cv::Size small{1500, 1000};
    return {
        {"to 1500 x 1000, box", resizeTo(small, cv::INTER_AREA)},
        {"to 1613 x 1075, box", resizeTo({1613, 1075}, cv::INTER_AREA)},
        {"flip across", [](const Mat& s, Mat& t) { cv::flip(s, t, 1); }, true},
        {"flip down", [](const Mat& s, Mat& t) { cv::flip(s, t, 0); }},
        {"rotate 90", [](const Mat& s, Mat& t) { cv::rotate(s, t, cv::ROTATE_90_CLOCKWISE); }},
        {"rotate 180", [](const Mat& s, Mat& t) { cv::rotate(s, t, cv::ROTATE_180); }},
        {"rotate 30, bicubic",
         [](const Mat& s, Mat& t) {
             Mat map = cv::getRotationMatrix2D({3000, 2000}, 30, 1);
             map.at<double>(0, 2) += 598;
             map.at<double>(1, 2) += 1232;
             cv::warpAffine(s, t, map, {7196, 6464}, cv::INTER_CUBIC);
         }},
        {"skew",
         [](const Mat& s, Mat& t) {
             const Mat map = (cv::Mat_<double>(2, 3) << 1, -0.25, 1000, 0, 1, 0);
             cv::warpAffine(s, t, map, {7000, 4000}, cv::INTER_CUBIC);
         }},
        {"perspective",
         [](const Mat& s, Mat& t) {
             const cv::Point2f from[] = {{0, 3999}, {0, 0}, {5999, 0}, {5999, 3999}};
             const cv::Point2f to[] = {{0, 3999}, {0, 0}, {5999, 1000}, {5999, 3000}};
             cv::warpPerspective(s, t, cv::getPerspectiveTransform(from, to), s.size(),
                                 cv::INTER_CUBIC);
         }},
        {"wider canvas",
         [](const Mat& s, Mat& t) {
             cv::copyMakeBorder(s, t, 100, 100, 100, 100, cv::BORDER_CONSTANT);
         }},
        {"waves", distortion([](float x, float y, const Mat& s) {
             return cv::Point2f(x + 20 * std::sin(50.26548f * y / static_cast<float>(s.rows)), y);
         })},
        {"ripple", around([](float r, float& scale, float&) {
             scale = (r + 20 * std::sin(50.26548f * r / 3000)) / r;
         })},
        {"spin", around([](float r, float&, float& turn) {
             const float u = r / 3000;
             turn = -1.5708f * (1 - 3 * u * u + 2 * u * u * u);
         })},
        {"pinch",
         around([](float r, float& scale, float&) { scale = std::pow(r / 3000, -0.2929f); })},
    };
}

std::vector<Row> enlargingRows() {
    const cv::Size large{6000, 4000};
    return {
        {"twice as large, bilinear", resizeTo(large, cv::INTER_LINEAR)},
        {"twice as large, bicubic", resizeTo(large, cv::INTER_CUBIC)},
        {"twice as large, Lanczos3", resizeTo(large, cv::INTER_LANCZOS4)},
    };
}

void add(Works& works, std::vector<Row> rows, const Mat& source) {
    for (Row& row : rows)
        works[row.name] = [call = row.call, source, target = Mat()]() mutable {
            cv::setNumThreads(threads);
            call(source, target);
        };
}

} // namespace

Works opencvWorks(const Pictures& pictures) {
    Works works;
    const Mat large = matOf(pictures.large);
    add(works, pointRows(), large);
    add(works, neighbourRows(), large);
    add(works, shapeRows(), large);
    add(works, enlargingRows(), matOf(pictures.half));
    return works;
}

Works opencvStripWorks(const Pictures& pictures) {
    Works works;
    const Mat source = matOf(pictures.large);
    for (const auto& rows : {pointRows(), neighbourRows(), shapeRows()})
        for (const Row& row : rows) {
            if (!row.bands) continue;
            works[row.name] = [call = row.call, source, target = Mat()]() mutable {
                cv::setNumThreads(threads);
                target.create(source.size(), source.type());
                constexpr int bands = 16;
                cv::parallel_for_({0, bands}, [&](const cv::Range& range) {
                    for (int band = range.start; band < range.end; ++band) {
                        const cv::Range part(source.rows * band / bands,
                                             source.rows * (band + 1) / bands);
                        Mat out = target.rowRange(part);
                        call(source.rowRange(part), out);
                    }
                });
            };
        }
    return works;
}

} // namespace kvn::bench
