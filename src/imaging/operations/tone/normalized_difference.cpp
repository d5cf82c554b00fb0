#include <algorithm>

#include "basic/error.h"
#include "imaging/convert.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/simd.h"
#include "imaging/operations/tone/color_mixes.h"

namespace kvn::imaging {
namespace {

constexpr Argument differenceArguments[] = {
    {"second", ArgumentKind::Image, 0, 0, "", "what is taken away; of the same size"},
    {"flag", ArgumentKind::Integer, 0, 1, "", "not looked at"},
    {"scale", ArgumentKind::Number, -100, 100, "", "factor of the difference; clamped"},
    {"offset", ArgumentKind::Number, -100, 100, "", "is added to it; clamped"},
};

KVN_CLONES void differences(const std::uint8_t* a, const std::uint8_t* b,
                            std::uint8_t* __restrict out, std::size_t count, float scale,
                            float middle) {
    for (std::size_t i = 0; i < count; ++i) {
        const int difference = a[i] - b[i], sum = a[i] + b[i];
        const float share = static_cast<float>(difference) / static_cast<float>(std::max(sum, 1));
        const int value = static_cast<int>(share * scale + middle + 0.5f);
        out[i] = static_cast<std::uint8_t>(std::min(255, std::max(0, value)));
    }
}

void copyAlpha(const std::uint8_t* in, std::uint8_t* out, int width, int channels) {
    for (int x = 0; x < width; ++x)
        out[x * channels + channels - 1] = in[x * channels + channels - 1];
}

Raster normalizedDifference(const Raster& source, const Arguments& arguments, Task& task) {
    if (arguments.image(0).size() != source.size())
        throw RuntimeError(errors::invalidCall, "The two pictures must have the same size",
                           "Effects.NormalizedDifference");
    const Raster first = promoted(source, task);
    const Raster second = convertType(arguments.image(0), first.type(), task);
    const auto scale = static_cast<float>(std::clamp(arguments.number(2), -100.0, 100.0) * 127.5);
    const auto middle =
        static_cast<float>(std::clamp(arguments.number(3), -100.0, 100.0) * 127.5 + 127.5);
    Raster result = Raster::uninitialized(first.type(), first.width(), first.height());
    const ConstView a = first.view(), b = second.view();
    const View out = result.edit();
    const std::size_t count = first.rowBytes();
    parallelRows(a.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            differences(a.row(y), b.row(y), out.row(y), count, scale, middle);
            if (hasAlpha(a.type)) copyAlpha(a.row(y), out.row(y), a.width, bytesPerPixel(a.type));
        }
    });
    return result;
}

} // namespace

const Operation normalizedDifferenceOperation = {
    .name = "Effects.NormalizedDifference",
    .undoName = "Normalized Difference",
    .arguments = differenceArguments,
    .run = normalizedDifference,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Promotes,
    .note = "The difference of two pictures over their sum; equal ones give the middle grey.",
};

} // namespace kvn::imaging
