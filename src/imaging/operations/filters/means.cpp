#include "imaging/operations/filters/means.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "imaging/operations/filters/box_blend.h"
#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/filters/mean_kernels.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr int largestSize = 101;
constexpr int largestArithmetic = 255;

double termOf(MeanKind kind, int v) {
    switch (kind) {
    case MeanKind::Geometric:
        return std::log(v) / std::log(255.0);
    case MeanKind::Harmonic:
        return 1.0 / v;
    case MeanKind::PowerPlus:
        return v * v / (255.0 * 255.0);
    default:
        return 1.0 / (v * v);
    }
}

// Terms as whole numbers that add up without rounding: the low bits hold the sum of the terms, the
// high ones count the zeros, whose term is infinite.
class Terms {
  public:
    Terms(MeanKind kind, int size, int heaviest)
        : weights_(static_cast<std::uint64_t>(size) * static_cast<std::uint64_t>(size) *
                   static_cast<std::uint64_t>(heaviest)),
          lowBits_(64 - std::bit_width(weights_)),
          unit_(std::ldexp(1.0, lowBits_ - 1) / static_cast<double>(weights_)) {
        for (int v = 1; v < 256; ++v)
            terms_[static_cast<std::size_t>(v)] =
                static_cast<std::uint64_t>(std::llround(termOf(kind, v) * unit_));
        terms_[0] = kind == MeanKind::PowerPlus ? 0 : std::uint64_t{1} << lowBits_;
    }

    std::uint64_t operator[](std::uint8_t v) const { return terms_[v]; }

    // The mean in 2^-30, below 0 if there were zeros, given the weight of all that was added.
    std::int32_t mean(std::uint64_t sum, double weight) const {
        if (sum >> lowBits_) return -1;
        return static_cast<std::int32_t>(static_cast<double>(sum) * (0x1p30 / unit_) / weight);
    }

  private:
    std::uint64_t weights_;
    int lowBits_;
    double unit_;
    std::array<std::uint64_t, 256> terms_{};
};

constexpr std::size_t piece = 256;

void meanOfAll(const ConstView& from, const View& to, MeanKind kind, int size, Task& task) {
    const Terms terms(kind, size, 1);
    const std::size_t samples = rowBytes(from.type, from.width);
    const int channels = bytesPerPixel(from.type);
    const double area = static_cast<double>(size) * size;
    boxSums<std::uint64_t>(from, size, task,
                           {[&](const std::uint8_t* row, std::uint64_t* out) {
                                for (std::size_t i = 0; i < samples; ++i)
                                    out[i] = terms[row[i]];
                            },
                            [&](int y, const std::uint64_t* sums) {
                                std::int32_t means[piece];
                                for (std::size_t i = 0; i < samples; i += piece) {
                                    const std::size_t count = std::min(piece, samples - i);
                                    for (std::size_t k = 0; k < count; ++k)
                                        means[k] = terms.mean(sums[i + k], area);
                                    valuesOfMeans(kind, means, to.row(y) + i, count);
                                }
                                if (!hasAlpha(from.type)) return;
                                for (std::size_t i = static_cast<std::size_t>(channels) - 1;
                                     i < samples; i += static_cast<std::size_t>(channels))
                                    to.row(y)[i] = from.row(y)[i];
                            }});
}

// Colours weighed by alpha: by all its bits in small windows; in large ones by its four highest,
// so that the terms keep theirs. The alpha channel's sums hold the weights above the alphas.
class WeightedMean {
  public:
    WeightedMean(const ConstView& from, MeanKind kind, int size)
        : kind_(kind), width_(from.width), channels_(bytesPerPixel(from.type)),
          area_(static_cast<double>(size) * size), divisor_(size <= 31 ? 1 : 17),
          terms_(kind, size, 255 / divisor_) {}

    void terms(const std::uint8_t* row, std::uint64_t* out) const {
        for (int x = 0; x < width_; ++x, row += channels_, out += channels_) {
            const std::uint64_t alpha = row[channels_ - 1];
            const std::uint64_t weight = (alpha + divisor_ - 1) / divisor_;
            for (int c = 0; c < channels_ - 1; ++c)
                out[c] = terms_[row[c]] * weight;
            out[channels_ - 1] = alpha | weight << 32;
        }
    }

    void finish(const std::uint8_t* pixels, const std::uint64_t* sums, std::uint8_t* out) const {
        for (int x = 0; x < width_; ++x, pixels += channels_, sums += channels_, out += channels_) {
            const std::uint64_t all = sums[channels_ - 1];
            const double weight = static_cast<double>(all >> 32);
            std::int32_t means[4] = {};
            for (int c = 0; c < channels_ - 1; ++c)
                means[c] = weight > 0 ? terms_.mean(sums[c], weight) : 0;
            std::uint8_t values[4];
            valuesOfMeans(kind_, means, values, 4);
            for (int c = 0; c < channels_ - 1; ++c)
                out[c] = weight > 0 ? values[c] : pixels[c];
            out[channels_ - 1] =
                static_cast<std::uint8_t>(static_cast<double>(all & 0xffffffff) / area_ + 0.5);
        }
    }

  private:
    MeanKind kind_;
    int width_, channels_;
    double area_;
    std::uint64_t divisor_;
    Terms terms_;
};

Raster meanFilter(const Raster& picture, MeanKind kind, int askedSize, bool ignoreAlpha,
                  Task& task) {
    const int size = oddSize(askedSize, largestSize);
    if (size == 1) return picture;
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    if (ignoreAlpha || isOpaque(source)) {
        meanOfAll(from, to, kind, size, task);
        return result;
    }
    const WeightedMean mean(from, kind, size);
    boxSums<std::uint64_t>(
        from, size, task,
        {[&](const std::uint8_t* row, std::uint64_t* terms) { mean.terms(row, terms); },
         [&](int y, const std::uint64_t* sums) { mean.finish(from.row(y), sums, to.row(y)); }});
    return result;
}

constexpr Argument arithmeticArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestArithmetic, "px", "side of the window"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays and does not count"},
};
constexpr Argument meanArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestSize, "px", "side of the window; clamped"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays and does not count"},
};
constexpr Argument ypArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestSize, "px", "side of the window; clamped"},
    {"remove positive outliers", ArgumentKind::Boolean, 0, 0, "", "bright specks, not dark ones"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays and does not count"},
};

Raster arithmeticMean(const Raster& source, const Arguments& arguments, Task& task) {
    return boxBlend(source, oddSize(arguments.integer(0), largestArithmetic), 1,
                    arguments.boolean(1) ? BoxAlpha::Ignored : BoxAlpha::Mixed, task);
}

Raster geometricMean(const Raster& source, const Arguments& arguments, Task& task) {
    return meanFilter(source, MeanKind::Geometric, arguments.integer(0), arguments.boolean(1),
                      task);
}

Raster harmonicMean(const Raster& source, const Arguments& arguments, Task& task) {
    return meanFilter(source, MeanKind::Harmonic, arguments.integer(0), arguments.boolean(1), task);
}

Raster ypMean(const Raster& source, const Arguments& arguments, Task& task) {
    return meanFilter(source, arguments.boolean(1) ? MeanKind::PowerMinus : MeanKind::PowerPlus,
                      arguments.integer(0), arguments.boolean(2), task);
}

} // namespace

const Operation arithmeticMeanOperation = {
    .name = "Effects.ArithmeticMean",
    .undoName = "Arithmetic Mean",
    .arguments = arithmeticArguments,
    .run = arithmeticMean,
    .border = -1,
    .note = "The average of the square window around every pixel.",
};

const Operation geometricMeanOperation = {
    .name = "Effects.GeometricMean",
    .undoName = "Geometric Mean",
    .arguments = meanArguments,
    .run = geometricMean,
    .border = -1,
    .note = "The geometric mean of the square window around every pixel.",
};

const Operation harmonicMeanOperation = {
    .name = "Effects.HarmonicMean",
    .undoName = "Harmonic Mean",
    .arguments = meanArguments,
    .run = harmonicMean,
    .border = -1,
    .note = "The harmonic mean of the square window around every pixel.",
};

const Operation ypMeanOperation = {
    .name = "Effects.YpMean",
    .undoName = "Yp Mean",
    .arguments = ypArguments,
    .run = ypMean,
    .border = -1,
    .note = "The power mean of the square window around every pixel.",
};

} // namespace kvn::imaging
