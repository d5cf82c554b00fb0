#include "imaging/operations/filters/gauss.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/operations/filters/gauss_kernels.h"
#include "imaging/operations/support/weighted_rows.h"

namespace kvn::imaging {
namespace {

using Row = std::vector<float>;
constexpr std::size_t slack = 4; // the pixel kernels read and write four channels at a time
// Where colours count by alpha, faint ones may lie at the far end of the kernel: it is cut farther
// out and brought to the coarse grid only where that does not alias.
double directLimit(bool weighted) {
    return weighted ? 3 : 2.6;
}
double cutAt(bool weighted) {
    return weighted ? 4.2 : 3.5;
}

Row normalised(Row weights) {
    double sum = 0;
    for (const float w : weights)
        sum += w;
    for (float& w : weights)
        w = static_cast<float>(w / sum);
    return weights;
}

Row gaussWeights(double sigma, double cut) {
    const int radius = std::max(1, static_cast<int>(std::ceil(cut * sigma)));
    Row weights;
    for (int i = -radius; i <= radius; ++i)
        weights.push_back(static_cast<float>(std::exp(-0.5 * i * i / (sigma * sigma))));
    return normalised(std::move(weights));
}

double cubicSpline(double x) {
    x = std::abs(x);
    if (x < 1) return 2.0 / 3 - x * x + x * x * x / 2;
    return x < 2 ? (2 - x) * (2 - x) * (2 - x) / 6 : 0;
}

// The splines down to the coarse grid and back up, each with the weights `spline`, leave this of a
// kernel: its spectrum over theirs, back as weights of coarse samples.
Row restWeights(double sigma, int factor, const Row& spline, double cut) {
    constexpr int points = 64;
    const int middle = static_cast<int>(spline.size()) / 2;
    double spectrum[points];
    for (int j = 0; j < points; ++j) {
        const double turn = (j + 0.5) * std::numbers::pi / points / factor;
        double once = 0;
        for (int i = -middle; i <= middle; ++i)
            once += static_cast<double>(spline[static_cast<std::size_t>(i + middle)]) *
                    std::cos(i * turn);
        spectrum[j] = std::exp(-0.5 * sigma * sigma * turn * turn) / (once * once);
    }
    const int radius = static_cast<int>(std::ceil(cut * sigma / factor));
    Row weights;
    for (int i = -radius; i <= radius; ++i) {
        double weight = 0;
        for (int j = 0; j < points; ++j)
            weight += spectrum[j] * std::cos(i * (j + 0.5) * std::numbers::pi / points);
        weights.push_back(static_cast<float>(weight));
    }
    return normalised(std::move(weights));
}

std::size_t sizeOf(int count) {
    return static_cast<std::size_t>(count);
}

// Sums of picture rows around a middle one. Where colours have to be multiplied by their alpha,
// the last rows that were are kept, as the next sum needs most of them again.
class RowSums {
  public:
    RowSums(const ConstView& view, const Row& weights, bool weighted)
        : view_(view), weights_(weights), weighted_(weighted), bytes_(weights.size()),
          floats_(weights.size()) {
        if (!weighted) return;
        kept_.resize(weights.size());
        keptY_.assign(weights.size(), -1);
    }

    void sum(int middle, float* out) {
        const int taps = static_cast<int>(weights_.size());
        const std::size_t count = rowBytes(view_.type, view_.width);
        for (int k = 0; k < taps; ++k) {
            const int y = std::clamp(middle - taps / 2 + k, 0, view_.height - 1);
            if (weighted_)
                floats_[sizeOf(k)] = multiplied(y);
            else
                bytes_[sizeOf(k)] = view_.row(y);
        }
        if (weighted_)
            sumRows(floats_.data(), weights_.data(), taps, out, count);
        else
            sumRows(bytes_.data(), weights_.data(), taps, out, count);
    }

  private:
    const float* multiplied(int y) {
        const std::size_t place = sizeOf(y) % kept_.size();
        Row& row = kept_[place];
        if (keptY_[place] != y) {
            row.resize(rowBytes(view_.type, view_.width));
            premultiplyRow(view_.row(y), view_.width, bytesPerPixel(view_.type), row.data());
            keptY_[place] = y;
        }
        return row.data();
    }

    const ConstView view_;
    const Row& weights_;
    const bool weighted_;
    std::vector<const std::uint8_t*> bytes_;
    std::vector<const float*> floats_;
    std::vector<Row> kept_;
    std::vector<int> keptY_;
};

// Repeats the first and the last of `width` pixels, which begin at pixel `before` of the row.
template <class T>
void repeatEnds(T* row, int before, int width, int after, int channels) {
    T* first = row + static_cast<std::ptrdiff_t>(before) * channels;
    T* last = first + static_cast<std::ptrdiff_t>(width - 1) * channels;
    for (int i = 0; i < before; ++i)
        std::copy_n(first, channels, row + static_cast<std::ptrdiff_t>(i) * channels);
    for (int i = 1; i <= after; ++i)
        std::copy_n(last, channels, last + static_cast<std::ptrdiff_t>(i) * channels);
}

// How one direction of a picture lies on the coarse grid: coarse sample i stands at the pixel
// (i + first) * factor + factor / 2.
struct CoarseAxis {
    int factor, first, count;

    CoarseAxis(int length, int gridFactor, int blurRadius)
        : factor(gridFactor), first(-2 - blurRadius),
          count((length - 1 + gridFactor) / gridFactor + 3 + blurRadius - first) {}
    int pixelOf(int i) const { return (i + first) * factor + factor / 2; }
    // The first of the four coarse samples around the pixel, and its place between them.
    int sampleBefore(int pixel) const {
        return (pixel - factor / 2 + factor * 4) / factor - 4 - first - 1;
    }
    int phaseOf(int pixel) const { return (pixel - factor / 2 + factor * 4) % factor; }
};

class CoarseBlur {
  public:
    CoarseBlur(const ConstView& view, double sigma, bool weighted)
        : view_(view), weighted_(weighted), channels_(bytesPerPixel(view.type)),
          factor_(std::max(2, static_cast<int>(sigma / 2))), down_(splineWeights(factor_)),
          blur_(restWeights(sigma, factor_, down_, cutAt(weighted))),
          across_(view.width, factor_, static_cast<int>(blur_.size()) / 2),
          along_(view.height, factor_, static_cast<int>(blur_.size()) / 2),
          stride_(sizeOf(across_.count * channels_) + slack),
          samples_(stride_ * sizeof(float), along_.count) {
        for (int phase = 0; phase < factor_; ++phase)
            for (int k = 0; k < 4; ++k)
                up_.push_back(
                    static_cast<float>(cubicSpline(static_cast<double>(phase) / factor_ + 1 - k)));
    }

    // Fills the coarse grid, blurred along the rows.
    void reduce(Task& task) {
        std::uint8_t* const samples = samples_.detach();
        parallelRows(
            along_.count, task,
            [&](int y0, int y1) {
                RowSums rows(view_, down_, weighted_);
                const int reach = static_cast<int>(down_.size()) / 2;
                const int before = reach - across_.pixelOf(0);
                const int after =
                    std::max(0, across_.pixelOf(across_.count - 1) + reach - view_.width + 1);
                Row padded(sizeOf((before + view_.width + after) * channels_) + slack);
                Row coarse(stride_);
                for (int y = y0; y < y1; ++y) {
                    rows.sum(along_.pixelOf(y),
                             padded.data() + static_cast<std::ptrdiff_t>(before) * channels_);
                    repeatEnds(padded.data(), before, view_.width, after, channels_);
                    toCoarse(padded.data(), down_.data(), static_cast<int>(down_.size()), factor_,
                             channels_, coarse.data(), across_.count);
                    blurAlong(coarse.data(),
                              reinterpret_cast<float*>(samples + samples_.stride() * sizeOf(y)));
                }
            },
            1);
    }

    void expand(Task& task, const BlurredRow& finish) const {
        parallelRows(view_.height, task, [&](int y0, int y1) {
            Expanded rows(*this);
            Row out(rowBytes(view_.type, view_.width));
            for (int y = y0; y < y1; ++y) {
                rows.moveTo(along_.sampleBefore(y));
                sumFourRows(rows.four, up_.data() + along_.phaseOf(y) * 4, out.data(), out.size());
                finish(y, out.data());
            }
        });
    }

  private:
    // The four coarse rows around a picture row, blurred downwards and brought to full width.
    struct Expanded {
        const CoarseBlur& grid;
        const int skip; // pixels before the picture in a row
        Row coarse;
        Row rows[4];
        const float* four[4];
        int first = -100;

        explicit Expanded(const CoarseBlur& owner)
            : grid(owner), skip(-grid.across_.pixelOf(1 + grid.across_.sampleBefore(0))),
              coarse(grid.stride_) {
            for (Row& row : rows)
                row.resize(sizeOf((grid.across_.count * grid.factor_) * grid.channels_) + slack);
        }

        void moveTo(int wanted) {
            if (wanted == first) return;
            const int begin = wanted == first + 1 ? wanted + 3 : wanted;
            for (int i = begin; i < wanted + 4; ++i)
                make(i);
            first = wanted;
            for (int k = 0; k < 4; ++k)
                four[k] = rows[(first + k) % 4].data() + skip * grid.channels_;
        }

        void make(int i) {
            const int taps = static_cast<int>(grid.blur_.size());
            std::vector<const float*> around(grid.blur_.size());
            for (int k = 0; k < taps; ++k)
                around[sizeOf(k)] =
                    grid.sample(std::clamp(i - taps / 2 + k, 0, grid.along_.count - 1));
            sumRows(around.data(), grid.blur_.data(), taps, coarse.data(), grid.stride_);
            const int begin = grid.across_.sampleBefore(0);
            toFine(coarse.data() + static_cast<std::ptrdiff_t>(begin) * grid.channels_,
                   grid.up_.data(), grid.factor_, grid.channels_, rows[i % 4].data(),
                   grid.across_.count - begin - 3);
        }
    };

    static Row splineWeights(int factor) {
        Row weights;
        for (int i = 1 - 2 * factor; i < 2 * factor; ++i)
            weights.push_back(static_cast<float>(cubicSpline(static_cast<double>(i) / factor)));
        return normalised(std::move(weights));
    }

    const float* sample(int y) const { return reinterpret_cast<const float*>(samples_.row(y)); }

    // The outermost samples are only read, never asked for.
    void blurAlong(const float* in, float* out) const {
        const int taps = static_cast<int>(blur_.size()), side = taps / 2 * channels_;
        const int inner = (across_.count - taps + 1) * channels_;
        std::fill_n(out, side, 0.0f);
        sumEntries(in, blur_.data(), taps, channels_, out + side, sizeOf(inner));
        std::fill(out + side + inner, out + stride_, 0.0f);
    }

    const ConstView view_;
    const bool weighted_;
    const int channels_;
    const int factor_;
    const Row down_, blur_;
    const CoarseAxis across_, along_;
    const std::size_t stride_;
    PixelBuffer samples_; // rows of floats
    Row up_;
};

} // namespace

namespace {

constexpr std::size_t vectorSlack = 256; // entries behind a row that whole vectors reach
constexpr int largestFixedRadius = 15;

// Weights as whole numbers whose sum is exact; empty if one is too large, or they are too many, for
// their products to be.
std::vector<std::uint16_t> fixedWeights(const Row& weights) {
    const int radius = static_cast<int>(weights.size()) / 2;
    if (radius > largestFixedRadius || weights[sizeOf(radius)] > 0.95f) return {};
    std::vector<std::uint16_t> result(sizeOf(radius + 1));
    long rest = 65536;
    for (int k = 1; k <= radius; ++k) {
        const long weight = std::lround(weights[sizeOf(radius + k)] * 65536);
        result[sizeOf(k)] = static_cast<std::uint16_t>(weight);
        rest -= 2 * weight;
    }
    result[0] = static_cast<std::uint16_t>(rest);
    return result;
}

void fixedRows(const ConstView& view, const std::vector<std::uint16_t>& down,
               const std::vector<std::uint16_t>& along, Task& task, const FixedRow& finish) {
    const int above = static_cast<int>(down.size()) - 1;
    const int side = static_cast<int>(along.size()) - 1;
    const int channels = bytesPerPixel(view.type);
    const std::size_t samples = rowBytes(view.type, view.width);
    parallelRows(view.height, task, [&](int y0, int y1) {
        std::vector<const std::uint8_t*> rows(sizeOf(2 * above + 1));
        std::vector<std::uint16_t> padded(samples + sizeOf(2 * side * channels) + vectorSlack);
        std::vector<std::uint16_t> sums(samples + vectorSlack);
        for (int y = y0; y < y1; ++y) {
            for (int k = -above; k <= above; ++k)
                rows[sizeOf(k + above)] = view.row(std::clamp(y + k, 0, view.height - 1));
            sumRowsFixed(rows.data(), down.data(), above, padded.data() + side * channels, samples);
            repeatEnds(padded.data(), side, view.width, side, channels);
            sumEntriesFixed(padded.data(), along.data(), side, channels, sums.data(), samples);
            finish(y, sums.data());
        }
    });
}

} // namespace

void windowRows(const ConstView& view, const Row& down, const Row& along, bool weighted, Task& task,
                const BlurredRow& finish, Precision precision) {
    if (!weighted && precision == Precision::Levels) {
        const auto fixedDown = fixedWeights(down), fixedAlong = fixedWeights(along);
        if (!fixedDown.empty() && !fixedAlong.empty())
            return fixedRows(view, fixedDown, fixedAlong, task,
                             [&](int y, const std::uint16_t* sums) {
                                 thread_local Row levels;
                                 levels.resize(rowBytes(view.type, view.width));
                                 levelsOfFixed(sums, levels.data(), levels.size());
                                 finish(y, levels.data());
                             });
    }
    const int taps = static_cast<int>(along.size()), radius = taps / 2;
    const int channels = bytesPerPixel(view.type);
    const std::size_t samples = rowBytes(view.type, view.width);
    parallelRows(view.height, task, [&](int y0, int y1) {
        RowSums rows(view, down, weighted);
        Row padded(sizeOf(view.width + 2 * radius) * sizeOf(channels)), blurred(samples);
        for (int y = y0; y < y1; ++y) {
            rows.sum(y, padded.data() + radius * channels);
            repeatEnds(padded.data(), radius, view.width, radius, channels);
            sumEntries(padded.data(), along.data(), taps, channels, blurred.data(), samples);
            finish(y, blurred.data());
        }
    });
}

bool gaussRowsFixed(const ConstView& view, double sigma, Task& task, const FixedRow& finish) {
    if (sigma >= directLimit(false)) return false;
    const auto weights = fixedWeights(gaussWeights(sigma, cutAt(false)));
    if (weights.empty()) return false;
    fixedRows(view, weights, weights, task, finish);
    return true;
}

void gaussRows(const ConstView& view, double sigma, bool weighted, Task& task,
               const BlurredRow& finish, Precision precision) {
    if (sigma < directLimit(weighted)) {
        const Row weights = gaussWeights(sigma, cutAt(weighted));
        return windowRows(view, weights, weights, weighted, task, finish, precision);
    }
    CoarseBlur blur(view, sigma, weighted);
    {
        const Task::Stage stage(task, 0, 0.4);
        blur.reduce(task);
    }
    const Task::Stage stage(task, 0.4, 1);
    blur.expand(task, finish);
}

void straightRow(const float* row, const std::uint8_t* pixels, float* out, int width,
                 int channels) {
    for (int x = 0; x < width; ++x, row += channels, pixels += channels, out += channels) {
        const float alpha = row[channels - 1];
        for (int c = 0; c < channels; ++c)
            out[c] = alpha >= 0.5f ? row[c] * 255 / alpha : static_cast<float>(pixels[c]);
    }
}

} // namespace kvn::imaging
