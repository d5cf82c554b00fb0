// Geometry.EmbossShape.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/art/art.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int highest = 100;
constexpr double softest = 1000;
constexpr double softnessPerPixel = 40;
constexpr float lampRise = 0.70710678f; // 45 degrees: its height and its length on the ground

constexpr Argument embossArguments[] = {
    {"depth", ArgumentKind::Integer, -highest, highest, "px", "height; below 0 sunk; clamped"},
    {"angle", ArgumentKind::Integer, 0, 360, "degrees", "of the lamp; 0 right, 90 above"},
    {"softness", ArgumentKind::Integer, 0, softest, "", "40 is a pixel of blur; clamped"},
    {"shadow", ArgumentKind::Color, 0, 0, "", "alpha is its strength"},
    {"highlight", ArgumentKind::Color, 0, 0, "", "alpha is its strength"},
};

// What stands out of the ground: the visible shape, or what is bright.
Raster shapeOf(const Raster& source, Task& task) {
    if (isOpaque(source)) return convertType(source, ImageType::Gray8, task);
    Raster shape = Raster::uninitialized(ImageType::Gray8, source.width(), source.height());
    const ConstView from = source.view();
    const View to = shape.edit();
    const int channels = bytesPerPixel(from.type);
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            for (int x = 0; x < from.width; ++x)
                to.row(y)[x] = from.row(y)[(x + 1) * channels - 1];
    });
    return shape;
}

// The blurred shape in 1/256 of a level, a pixel wider on both sides.
class Heights {
  public:
    Heights(const Raster& shape, double sigma, Task& task)
        : width_(shape.width()),
          rows_((static_cast<std::size_t>(shape.width()) + 2) * sizeof(std::uint16_t),
                shape.height()) {
        std::uint8_t* const memory = rows_.detach();
        gaussRows(shape.view(), sigma, false, task, [&](int y, const float* levels) {
            auto* row = reinterpret_cast<std::uint16_t*>(memory + rows_.stride() *
                                                                      static_cast<std::size_t>(y));
            for (int x = 0; x < width_; ++x)
                row[x + 1] =
                    static_cast<std::uint16_t>(std::clamp(levels[x], 0.0f, 255.0f) * 256 + 0.5f);
            row[0] = row[1];
            row[width_ + 1] = row[width_];
        });
    }

    const std::uint16_t* row(int y) const {
        return reinterpret_cast<const std::uint16_t*>(
            rows_.row(std::clamp(y, 0, rows_.rows() - 1)));
    }

  private:
    const int width_;
    PixelBuffer rows_;
};

// The lamp's place on the ground times the height of the relief, as factors of the differences
// between the heights on both sides of a pixel.
struct Lamp {
    float right, up, scale;
};

// Shares of highlight and shadow for a row, 0..1. Flat ground has neither.
KVN_CLONES void lightRow(const std::uint16_t* __restrict above,
                         const std::uint16_t* __restrict here,
                         const std::uint16_t* __restrict below, const Lamp lamp,
                         float* __restrict light, float* __restrict dark, int count) {
    for (int x = 0; x < count; ++x) {
        const float across = static_cast<float>(here[x] - here[x + 2]) * lamp.scale;
        const float upwards = static_cast<float>(below[x + 1] - above[x + 1]) * lamp.scale;
        const float scale = inverseRoot(across * across + upwards * upwards + 1);
        const float facing = (across * lamp.right + upwards * lamp.up + lampRise) * scale;
        const float lit = (facing - lampRise) / (1 - lampRise), unlit = 1 - facing / lampRise;
        light[x] = lit > 0 ? lit : 0;
        const float shade = unlit > 0 ? unlit : 0;
        dark[x] = shade < 1 ? shade : 1;
    }
}

struct Paint {
    float color[3];
    float strength;
};

Paint paintOf(const Rgba& color, bool gray) {
    const auto real = [](int v) { return static_cast<float>(v); };
    const float strength = real(color.a) / 255;
    if (gray) return {{real(luma(color.r, color.g, color.b))}, strength};
    return {{real(color.r), real(color.g), real(color.b)}, strength};
}

template <int channels, int colors>
void paintRow(const float* __restrict light, const float* __restrict dark, const Paint& highlight,
              const Paint& shadow, const std::uint8_t* __restrict in, std::uint8_t* __restrict out,
              int width) {
    for (int x = 0; x < width; ++x, in += channels, out += channels) {
        const float bright = light[x] * highlight.strength, dim = dark[x] * shadow.strength;
        for (int c = 0; c < colors; ++c) {
            const float v = in[c];
            out[c] = static_cast<std::uint8_t>(v + (highlight.color[c] - v) * bright +
                                               (shadow.color[c] - v) * dim + 0.5f);
        }
        if constexpr (colors < channels) out[colors] = in[colors];
    }
}

Raster embossShape(const Raster& picture, const Arguments& arguments, Task& task) {
    const int depth = std::clamp(arguments.integer(0), -highest, highest);
    const Rgba shadowColor = arguments.color(3), highlightColor = arguments.color(4);
    if (depth == 0 || (shadowColor.a == 0 && highlightColor.a == 0)) return picture;
    const Raster source = promoted(picture, task);
    const double sigma =
        std::max(0.3, std::clamp<double>(arguments.integer(2), 0, softest) / softnessPerPixel);
    const Heights heights(shapeOf(source, task), sigma, task);
    const double turn = std::fmod(arguments.integer(1), 360) * std::numbers::pi / 180;
    const Lamp lamp{lampRise * static_cast<float>(std::cos(turn)),
                    lampRise * static_cast<float>(std::sin(turn)),
                    static_cast<float>(depth / (2 * 65280.0))};
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    constexpr decltype(&paintRow<1, 1>) kernels[] = {paintRow<1, 1>, paintRow<2, 1>, paintRow<3, 3>,
                                                     paintRow<4, 3>};
    const int channels = bytesPerPixel(from.type);
    const Paint highlight = paintOf(highlightColor, channels < 3);
    const Paint shadow = paintOf(shadowColor, channels < 3);
    parallelRows(from.height, task, [&](int y0, int y1) {
        std::vector<float> light(static_cast<std::size_t>(from.width)), dark(light.size());
        for (int y = y0; y < y1; ++y) {
            lightRow(heights.row(y - 1), heights.row(y), heights.row(y + 1), lamp, light.data(),
                     dark.data(), from.width);
            kernels[channels - 1](light.data(), dark.data(), highlight, shadow, from.row(y),
                                  to.row(y), from.width);
        }
    });
    return result;
}

} // namespace

const Operation embossShapeOperation = {
    .name = "Geometry.EmbossShape",
    .undoName = "Emboss Shape",
    .arguments = embossArguments,
    .run = embossShape,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Raises the visible shape, or what is bright, out of the picture.",
};

} // namespace kvn::imaging
