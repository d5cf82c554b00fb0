// Alpha that depends on the place: from a mask, and blurred.
#include <algorithm>
#include <cmath>
#include <vector>

#include "imaging/alpha_merge.h"
#include "imaging/convert.h"
#include "imaging/operations/channels/alpha.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/resample/resample.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/simd.h"
#include "imaging/operations/support/weighted_rows.h"

namespace kvn::imaging {
namespace {

constexpr Argument fromImageArguments[] = {
    {"mask", ArgumentKind::Image, 0, 0, "", "white is opaque, black is clear"},
    {"sizeToFit", ArgumentKind::Boolean, 0, 0, "", "the mask takes the size of the picture"},
    {"x", ArgumentKind::Integer, -100'000, 100'000, "px", "left edge of a mask of its own size"},
    {"y", ArgumentKind::Integer, -100'000, 100'000, "px", "top edge of it"},
    {"mergeType", ArgumentKind::Integer, 0, 8, "", "how it meets present alpha", false, true},
};

// The mask as one byte a pixel: its luma, times its alpha.
Raster maskValues(const Raster& mask, Task& task) {
    if (isOpaque(mask)) return convertType(mask, ImageType::Gray8, task);
    return mapPlanes(convertType(mask, ImageType::GrayAlpha16, task), ResultForm::WithoutAlpha,
                     task, [](ColorPlanes& planes) {
                         for (int i = 0; i < ColorPlanes::size; ++i)
                             planes.r[i] = mul255(planes.r[i], planes.a[i]);
                     });
}

template <AlphaMerge how>
inline __attribute__((always_inline)) void mergeLoop(std::uint8_t* alpha, const std::uint8_t* fresh,
                                                     int count) {
    for (int i = 0; i < count; ++i)
        alpha[i] = mergedAlpha(how, alpha[i], fresh[i]);
}

KVN_CLONES void mergeAlpha(AlphaMerge how, std::uint8_t* alpha, const std::uint8_t* fresh,
                           int count) {
    switch (how) {
    case AlphaMerge::Replace:
        return mergeLoop<AlphaMerge::Replace>(alpha, fresh, count);
    case AlphaMerge::MostOpaque:
        return mergeLoop<AlphaMerge::MostOpaque>(alpha, fresh, count);
    case AlphaMerge::MostTransparent:
        return mergeLoop<AlphaMerge::MostTransparent>(alpha, fresh, count);
    case AlphaMerge::Add:
        return mergeLoop<AlphaMerge::Add>(alpha, fresh, count);
    case AlphaMerge::Subtract:
        return mergeLoop<AlphaMerge::Subtract>(alpha, fresh, count);
    case AlphaMerge::And:
        return mergeLoop<AlphaMerge::And>(alpha, fresh, count);
    case AlphaMerge::Or:
        return mergeLoop<AlphaMerge::Or>(alpha, fresh, count);
    case AlphaMerge::Xor:
        return mergeLoop<AlphaMerge::Xor>(alpha, fresh, count);
    case AlphaMerge::KeepExisting:
        return;
    }
}

// Lays the mask over the picture with its corner at `at`; alpha outside of it stays.
Raster withMask(const Raster& source, const Raster& mask, Point at, AlphaMerge how, Task& task) {
    const Raster picture = promoted(source, task);
    const bool gray = bytesPerPixel(picture.type()) <= 2;
    Raster result = Raster::uninitialized(gray ? ImageType::GrayAlpha16 : ImageType::Rgba32,
                                          source.width(), source.height());
    const Rect part = Rect{at.x, at.y, mask.width(), mask.height()}.intersected(source.rect());
    const ConstView in = picture.view(), values = mask.view();
    const View out = result.edit();
    const std::ptrdiff_t inStep = bytesPerPixel(in.type), outStep = bytesPerPixel(out.type);
    parallelRows(in.height, task, [&](int y0, int y1) {
        ColorPlanes planes = {};
        for (int y = y0; y < y1; ++y)
            for (int x = 0; x < in.width; x += ColorPlanes::size) {
                const int count = std::min(ColorPlanes::size, in.width - x);
                const std::uint8_t* from = in.row(y) + x * inStep;
                std::uint8_t* to = out.row(y) + x * outStep;
                splitPlanes(in.type, from, count, planes);
                const auto inBytes = static_cast<std::size_t>(count * inStep);
                fetchAhead(from + inBytes, inBytes, to, static_cast<std::size_t>(count * outStep));
                const Rect covered = Rect{x, y, count, 1}.intersected(part);
                if (!covered.isEmpty())
                    mergeAlpha(how, planes.a + (covered.x - x),
                               values.row(y - at.y) + (covered.x - at.x), covered.width);
                mergePlanes(planes, count, out.type, to);
            }
    });
    return result;
}

Raster alphaFromImage(const Raster& source, const Arguments& arguments, Task& task) {
    const auto how = static_cast<AlphaMerge>(arguments.integer(4));
    if (how == AlphaMerge::KeepExisting) return source;
    const bool fits = arguments.boolean(1);
    Point at;
    if (!fits) at = {arguments.integer(2), arguments.integer(3)};
    Raster mask = maskValues(arguments.image(0), task);
    if (fits && mask.size() != source.size())
        mask = runOperation(
                   resizeOperation, mask,
                   {std::int64_t{source.width()}, std::int64_t{source.height()}, std::int64_t{0}},
                   task)
                   .front();
    return withMask(source, mask, at, how, task);
}

constexpr Argument antialiasArguments[] = {
    {"level", ArgumentKind::Number, 0, 100, "px", "standard deviation of the blur; clamped"},
};

// Blurred alpha; the colour of pixels that were in sight before.
void takeAlpha(const float* blurred, const std::uint8_t* before, std::uint8_t* out, int width,
               int channels) {
    unmultiplyRow(blurred, width, channels, out, before);
    for (int x = 0; x < width; ++x, out += channels, before += channels)
        if (before[channels - 1] != 0) std::copy(before, before + channels - 1, out);
}

Raster antialiasAlpha(const Raster& source, const Arguments& arguments, Task& task) {
    const double sigma = std::clamp(arguments.number(0), 0.0, 100.0);
    if (sigma < 0.01 || isOpaque(source)) return source;
    const Raster picture = promoted(source, task);
    Raster result = Raster::uninitialized(picture.type(), picture.width(), picture.height());
    const ConstView in = picture.view();
    const View out = result.edit();
    gaussRows(in, sigma, true, task, [&](int y, const float* row) {
        takeAlpha(row, in.row(y), out.row(y), in.width, bytesPerPixel(in.type));
    });
    return result;
}

} // namespace

const Operation alphaFromImageOperation = {
    .name = "Channels.AlphaFromImage",
    .undoName = "Alpha from Image",
    .arguments = fromImageArguments,
    .run = alphaFromImage,
    .alpha = AlphaRule::AlphaOnly,
    .types = TypeRule::Fixed,
    .note = "Takes alpha from a mask; grey becomes grey with alpha, all others 32-bit.",
};

const Operation antialiasAlphaOperation = {
    .name = "Channels.AntialiasAlpha",
    .undoName = "Antialias Alpha",
    .arguments = antialiasArguments,
    .run = antialiasAlpha,
    .border = -1,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Promotes,
    .note = "Blurs alpha; what comes into sight takes its colour from the visible pixels around.",
};

} // namespace kvn::imaging
