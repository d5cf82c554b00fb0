#include "imaging/operations/filters/box_blend.h"

#include <algorithm>

#include "imaging/operations/filters/box_kernels.h"
#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

void copyTerms(const std::uint8_t* row, std::uint32_t* terms, std::size_t count) {
    std::copy(row, row + count, terms);
}

void copyAlpha(const std::uint8_t* pixels, std::uint8_t* out, int width, int channels) {
    for (int i = channels - 1; i < width * channels; i += channels)
        out[i] = pixels[i];
}

// Every byte alike.
void blendBytes(const ConstView& from, const View& to, int size, double share, bool keepAlpha,
                Task& task) {
    const auto keep = static_cast<float>(1 - share), gain = static_cast<float>(share / size / size);
    const std::size_t samples = rowBytes(from.type, from.width);
    const auto finish = [&](int y, const auto* sums) {
        blendSums(from.row(y), sums, to.row(y), samples, keep, gain);
        if (keepAlpha) copyAlpha(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
    };
    if (size <= 15) return boxSums16(from, size, task, finish);
    boxSums<std::uint32_t>(
        from, size, task,
        {[=](const std::uint8_t* row, std::uint32_t* terms) { copyTerms(row, terms, samples); },
         finish});
}

void weighTerms(const std::uint8_t* row, std::uint32_t* terms, int width, int channels) {
    for (int x = 0; x < width; ++x, row += channels, terms += channels) {
        const std::uint32_t alpha = row[channels - 1];
        for (int c = 0; c < channels - 1; ++c)
            terms[c] = row[c] * alpha;
        terms[channels - 1] = alpha;
    }
}

std::uint8_t level(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0) + 0.5);
}

// One row of colours weighed by alpha. Mixing goes on in proportion to what is visible of the
// pixel and of the mean.
struct WeightedBlend {
    double share, area;
    bool filterAlpha;
    int width, channels;

    void row(const std::uint8_t* pixels, const std::uint32_t* sums, std::uint8_t* out) const {
        for (int x = 0; x < width; ++x, pixels += channels, sums += channels, out += channels)
            filterAlpha ? mixed(pixels, sums, out) : kept(pixels, sums, out);
    }
    void mixed(const std::uint8_t* pixel, const std::uint32_t* sums, std::uint8_t* out) const {
        const double own = pixel[channels - 1] * (1 - share);
        const double alpha = own + sums[channels - 1] / area * share;
        out[channels - 1] = level(alpha);
        for (int c = 0; c < channels - 1; ++c)
            out[c] =
                alpha > 0 ? level((pixel[c] * own + sums[c] / area * share) / alpha) : pixel[c];
    }
    void kept(const std::uint8_t* pixel, const std::uint32_t* sums, std::uint8_t* out) const {
        const double all = sums[channels - 1];
        out[channels - 1] = pixel[channels - 1];
        for (int c = 0; c < channels - 1; ++c)
            out[c] = all > 0 ? level(pixel[c] + (sums[c] / all - pixel[c]) * share) : pixel[c];
    }
};

void blendWeighted(const ConstView& from, const View& to, int size, double share, bool filterAlpha,
                   Task& task) {
    const WeightedBlend blend{share, static_cast<double>(size) * size, filterAlpha, from.width,
                              bytesPerPixel(from.type)};
    boxSums<std::uint32_t>(
        from, size, task,
        {[&](const std::uint8_t* row, std::uint32_t* terms) {
             weighTerms(row, terms, blend.width, blend.channels);
         },
         [&](int y, const std::uint32_t* sums) { blend.row(from.row(y), sums, to.row(y)); }});
}

} // namespace

Raster boxBlend(const Raster& picture, int size, double share, BoxAlpha alpha, Task& task) {
    if (share == 0 || size == 1) return picture;
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const View to = result.edit();
    if (alpha != BoxAlpha::Ignored && !isOpaque(source))
        blendWeighted(source.view(), to, size, share, alpha == BoxAlpha::Mixed, task);
    else
        blendBytes(source.view(), to, size, share, hasAlpha(source.type()), task);
    return result;
}

} // namespace kvn::imaging
