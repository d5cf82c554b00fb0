// Geometry.DropShadow.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "imaging/convert.h"
#include "imaging/operations/art/art.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/result_size.h"

namespace kvn::imaging {
namespace {

constexpr double levelsPerPixel = 25.5;
constexpr double largestLevel = 2550;
constexpr double seenDeviations = 2.5; // beyond, half a percent of the shadow is left
constexpr Rgba plainShadow{0, 0, 0, 160};

constexpr Argument shadowArguments[] = {
    {"offset x", ArgumentKind::Integer, -1000, 1000, "px", "to the right"},
    {"offset y", ArgumentKind::Integer, -1000, 1000, "px", "downwards"},
    {"colour", ArgumentKind::Color, 0, 0, "", "nothing is black at 160", true},
    {"blur level", ArgumentKind::Number, 0, largestLevel, "", "25.5 is a pixel; clamped"},
    {"increase canvas", ArgumentKind::Boolean, 0, 0, "", "makes room for the shadow"},
};

struct Shadow {
    double x, y;
    Rgba color;
    double sigma;
    bool grows;
};

// Everything in coordinates of the canvas.
struct Layout {
    Size canvas;
    Point picture; // where its pixel 0, 0 lies
    Rect kept;     // what is left of it
};

Layout layoutFor(const Shadow& shadow, const Raster& source, bool opaque) {
    const double spread = std::ceil(seenDeviations * shadow.sigma);
    if (shadow.grows) {
        const double left = std::max(0.0, spread - shadow.x);
        const double top = std::max(0.0, spread - shadow.y);
        const double right = std::max(0.0, spread + shadow.x);
        const double bottom = std::max(0.0, spread + shadow.y);
        const Size canvas = checkedResultSize(
            left + source.width() + right, top + source.height() + bottom, "Geometry.DropShadow");
        const Point at{static_cast<int>(left), static_cast<int>(top)};
        return {canvas, at, {at.x, at.y, source.width(), source.height()}};
    }
    Rect kept = source.rect();
    const auto room = [&](double offset, int side) {
        const double wanted = offset == 0 ? 0 : std::abs(offset) + std::ceil(shadow.sigma);
        return static_cast<int>(std::min(wanted, side / 2.0));
    };
    if (opaque) {
        const int across = room(shadow.x, kept.width), down = room(shadow.y, kept.height);
        kept = {shadow.x < 0 ? across : 0, shadow.y < 0 ? down : 0, kept.width - across,
                kept.height - down};
    }
    return {source.size(), {0, 0}, kept};
}

// The share of a blurred bar from `begin` to `end` that is left at every pixel.
std::vector<float> blurredBar(double begin, double end, double sigma, int count) {
    std::vector<float> shares(static_cast<std::size_t>(count));
    const double scale = 1 / (std::max(sigma, 0.1) * std::numbers::sqrt2);
    for (int i = 0; i < count; ++i)
        shares[static_cast<std::size_t>(i)] = static_cast<float>(
            (std::erf((i + 0.5 - begin) * scale) - std::erf((i + 0.5 - end) * scale)) / 2);
    return shares;
}

template <int channels>
void setShadow(std::uint8_t* out, const Rgba& color, float alpha) {
    if constexpr (channels == 4) {
        out[1] = color.g;
        out[2] = color.b;
    }
    out[0] = color.r;
    out[channels - 1] = static_cast<std::uint8_t>(alpha + 0.5f);
}

// Pixels from begin to end of a row, of which nothing lies above the shadow. Where it cannot be
// seen either, they are clear black.
template <int channels>
void fillShadow(std::uint8_t* row, int begin, int end, const Rgba& color, const float* shares,
                float strength) {
    for (int x = begin; x < end; ++x) {
        const float alpha = shares[x] * strength;
        setShadow<channels>(row + x * channels, alpha < 0.5f ? Rgba{} : color, alpha);
    }
}

// The rectangle `kept` of the picture over the shadow of that rectangle.
template <int channels>
Raster overItsRectangle(const Raster& source, const Layout& layout, const Shadow& shadow,
                        Task& task) {
    Raster result = Raster::uninitialized(source.type(), layout.canvas.width, layout.canvas.height);
    const ConstView from = source.view();
    const View to = result.edit();
    const Rect& kept = layout.kept;
    const double left = kept.x + shadow.x, top = kept.y + shadow.y;
    const auto across = blurredBar(left, left + kept.width, shadow.sigma, to.width);
    const auto down = blurredBar(top, top + kept.height, shadow.sigma, to.height);
    const int right = static_cast<int>(kept.right()), bottom = static_cast<int>(kept.bottom());
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const float strength = down[static_cast<std::size_t>(y)] * shadow.color.a;
            const bool covered = y >= kept.y && y < bottom;
            const int begin = covered ? kept.x : to.width, end = covered ? right : to.width;
            fillShadow<channels>(to.row(y), 0, begin, shadow.color, across.data(), strength);
            if (!covered) continue;
            std::memcpy(to.row(y) + begin * channels,
                        from.row(y - layout.picture.y) + (begin - layout.picture.x) * channels,
                        static_cast<std::size_t>(end - begin) * channels);
            fillShadow<channels>(to.row(y), end, to.width, shadow.color, across.data(), strength);
        }
    });
    return result;
}

// The picture's alpha, moved by the offset, on the canvas with `margin` around it.
Raster movedAlpha(const Raster& source, const Layout& layout, const Shadow& shadow, int margin,
                  Task& task) {
    Raster mask = Raster::uninitialized(ImageType::Gray8, layout.canvas.width + 2 * margin,
                                        layout.canvas.height + 2 * margin);
    const ConstView from = source.view();
    const View to = mask.edit();
    const int channels = bytesPerPixel(from.type);
    const double left = margin + layout.picture.x + shadow.x;
    const double top = margin + layout.picture.y + shadow.y;
    const int begin = static_cast<int>(std::clamp(left, 0.0, double(to.width)));
    const int end = static_cast<int>(std::clamp(left + from.width, 0.0, double(to.width)));
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            std::memset(to.row(y), 0, static_cast<std::size_t>(to.width));
            if (y < top || y >= top + from.height || begin >= end) continue;
            const std::uint8_t* alpha = from.row(y - static_cast<int>(top)) + channels - 1;
            const int skipped = begin - static_cast<int>(left);
            for (int x = begin; x < end; ++x)
                to.row(y)[x] = alpha[(x - begin + skipped) * channels];
        }
    });
    return mask;
}

// One row of the picture over a shadow of alphas 0..255. `pixels` lies over the canvas from
// `begin` to `end`.
template <int channels>
void overShadow(const std::uint8_t* pixels, int begin, int end, const Rgba& color,
                const float* shares, std::uint8_t* out) {
    const std::uint8_t own[3] = {color.r, color.g, color.b};
    const float strength = static_cast<float>(color.a) / 255;
    for (int x = begin; x < end; ++x, pixels += channels) {
        std::uint8_t* to = out + x * channels;
        const float above = static_cast<float>(pixels[channels - 1]) / 255;
        const float below = shares[x] / 255 * strength * (1 - above), alpha = above + below;
        const float scale = alpha > 0 ? 1 / alpha : 0;
        for (int c = 0; c < channels - 1; ++c)
            to[c] = static_cast<std::uint8_t>(
                (pixels[c] * above + static_cast<float>(own[c]) * below) * scale + 0.5f);
        to[channels - 1] = static_cast<std::uint8_t>(alpha * 255 + 0.5f);
    }
}

template <int channels>
Raster overItsShape(const Raster& source, const Layout& layout, const Shadow& shadow, Task& task) {
    const int margin = static_cast<int>(std::ceil(3 * shadow.sigma)) + 1;
    const Raster mask = movedAlpha(source, layout, shadow, margin, task);
    Raster result = Raster::uninitialized(source.type(), layout.canvas.width, layout.canvas.height);
    const ConstView from = source.view();
    const View to = result.edit();
    const Rgba& color = shadow.color;
    const int begin = layout.picture.x, end = begin + from.width;
    gaussRows(mask.view(), std::max(shadow.sigma, 0.1), false, task,
              [&](int maskRow, const float* shares) {
                  const int y = maskRow - margin, sourceRow = y - layout.picture.y;
                  if (y < 0 || y >= to.height) return;
                  const float* here = shares + margin;
                  const float strength = static_cast<float>(color.a) / 255;
                  const bool covered = sourceRow >= 0 && sourceRow < from.height;
                  const int first = covered ? begin : to.width, last = covered ? end : to.width;
                  fillShadow<channels>(to.row(y), 0, first, color, here, strength);
                  if (covered)
                      overShadow<channels>(from.row(sourceRow), first, last, color, here,
                                           to.row(y));
                  fillShadow<channels>(to.row(y), last, to.width, color, here, strength);
              });
    return result;
}

Raster dropShadow(const Raster& picture, const Arguments& arguments, Task& task) {
    const Shadow shadow{
        static_cast<double>(arguments.integer(0)), static_cast<double>(arguments.integer(1)),
        arguments.isNothing(2) ? plainShadow : arguments.color(2),
        std::clamp(arguments.number(3), 0.0, largestLevel) / levelsPerPixel, arguments.boolean(4)};
    if (shadow.color.a == 0) return picture;
    const bool opaque = isOpaque(picture);
    const Layout layout = layoutFor(shadow, picture, opaque);
    const bool gray =
        (picture.type() == ImageType::Gray8 || picture.type() == ImageType::GrayAlpha16) &&
        shadow.color.r == shadow.color.g && shadow.color.g == shadow.color.b;
    const Raster source =
        convertType(picture, gray ? ImageType::GrayAlpha16 : ImageType::Rgba32, task);
    if (gray)
        return opaque ? overItsRectangle<2>(source, layout, shadow, task)
                      : overItsShape<2>(source, layout, shadow, task);
    return opaque ? overItsRectangle<4>(source, layout, shadow, task)
                  : overItsShape<4>(source, layout, shadow, task);
}

} // namespace

const Operation dropShadowOperation = {
    .name = "Geometry.DropShadow",
    .undoName = "Drop Shadow",
    .arguments = shadowArguments,
    .run = dropShadow,
    .border = -1,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "Lays the picture over its blurred shadow. Grey with alpha or 32-bit.",
};

} // namespace kvn::imaging
