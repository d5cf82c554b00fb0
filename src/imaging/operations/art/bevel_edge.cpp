// Geometry.BevelEdge.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "imaging/operations/art/art.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr double largestPercent = 500;
constexpr double largestSmoothness = 500;

constexpr Argument bevelArguments[] = {
    {"size", ArgumentKind::Integer, 0, 1000, "px", "width of the slopes; clamped"},
    {"left", ArgumentKind::Integer, 0, largestPercent, "%", "brightness; clamped"},
    {"top", ArgumentKind::Integer, 0, largestPercent, "%", "brightness; clamped"},
    {"right", ArgumentKind::Integer, 0, largestPercent, "%", "brightness; clamped"},
    {"bottom", ArgumentKind::Integer, 0, largestPercent, "%", "brightness; clamped"},
    {"smoothness", ArgumentKind::Number, 0, largestSmoothness, "", "how the slopes fade; clamped"},
};

// How much brighter the slopes make the places of a picture.
class Slopes {
  public:
    Slopes(const Arguments& arguments, Size picture)
        : size_(std::clamp(arguments.integer(0), 0,
                           (std::min(picture.width, picture.height) + 1) / 2)),
          width_(picture.width), height_(picture.height) {
        for (int side = 0; side < 4; ++side)
            gains_[side] = std::clamp(static_cast<float>(
                                          arguments.integer(static_cast<std::size_t>(side) + 1)),
                                      0.0f, static_cast<float>(largestPercent)) /
                               100 -
                           1;
        const double smoothness = std::clamp(arguments.number(5), 0.0, largestSmoothness);
        mitre_ = std::max(1.0f, static_cast<float>(size_ * smoothness / largestSmoothness));
        for (int i = 0; i < steps; ++i) {
            const double depth = (i + 0.5) / steps;
            const double faded = smoothness > 0 ? std::pow(depth, 250 / smoothness) : 0;
            weights_[i] = static_cast<float>(1 - faded);
        }
    }

    bool isFlat() const {
        return size_ == 0 || std::ranges::all_of(gains_, [](float gain) { return gain == 0; });
    }
    int size() const { return size_; }

    // What the light at the pixel grows by, as a share.
    float gainAt(int x, int y) const {
        const bool right = 2 * x >= width_, lower = 2 * y >= height_;
        const int across = right ? width_ - 1 - x : x, down = lower ? height_ - 1 - y : y;
        const int depth = std::min(across, down);
        if (depth >= size_) return 0;
        const float ofSide = gains_[right ? 2 : 0], ofEnd = gains_[lower ? 3 : 1];
        const float share =
            std::clamp(0.5f + static_cast<float>(down - across) / mitre_, 0.0f, 1.0f);
        const auto step = static_cast<int>((depth + 0.5) / size_ * steps);
        return (ofEnd + (ofSide - ofEnd) * share) * weights_[step];
    }

  private:
    static constexpr int steps = 1024;
    const int size_, width_, height_;
    float gains_[4]; // left, top, right, bottom
    float mitre_;    // width of the change from slope to slope
    float weights_[steps];
};

void light(std::uint8_t* pixel, int colors, float gain) {
    for (int c = 0; c < colors; ++c) {
        const float v = pixel[c];
        const float lit = v + gain * (0.75f * v + 63.75f) + 0.5f;
        pixel[c] = static_cast<std::uint8_t>(std::clamp(lit, 0.0f, 255.0f));
    }
}

Raster bevelEdge(const Raster& picture, const Arguments& arguments, Task& task) {
    const Slopes slopes(arguments, picture.size());
    if (slopes.isFlat()) return picture;
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int width = from.width, size = slopes.size(), channels = bytesPerPixel(from.type);
    const int colors = channels - (hasAlpha(from.type) ? 1 : 0);
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            std::uint8_t* out = to.row(y);
            std::memcpy(out, from.row(y), rowBytes(from.type, width));
            const bool wholeRow = std::min(y, from.height - 1 - y) < size || 2 * size >= width;
            const int leftEnd = wholeRow ? width : size;
            for (int x = 0; x < leftEnd; ++x)
                light(out + x * channels, colors, slopes.gainAt(x, y));
            for (int x = std::max(leftEnd, width - size); x < width; ++x)
                light(out + x * channels, colors, slopes.gainAt(x, y));
        }
    });
    return result;
}

} // namespace

const Operation bevelEdgeOperation = {
    .name = "Geometry.BevelEdge",
    .undoName = "Bevel Edge",
    .arguments = bevelArguments,
    .run = bevelEdge,
    .alpha = AlphaRule::ColorOnly,
    .note = "Slopes the four edges of the picture, each with its own brightness.",
};

} // namespace kvn::imaging
