#include "imaging/operations/resample/slanted_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

using Row = std::vector<std::uint8_t>;
using Weights = std::array<std::int16_t, 4>;

constexpr int unit = 1 << 14;     // of the weights
constexpr std::size_t piece = 16; // bytes that are copied at once
constexpr int ahead = 8;          // rows that are fetched before they are read

// Of the pixels -1, 0, 1, 2 for a place t behind pixel 0. They add up to the unit exactly.
Weights cubicWeights(double t) {
    const double parts[] = {((-0.5 * t + 1) * t - 0.5) * t, 0, ((-1.5 * t + 2) * t + 0.5) * t,
                            (0.5 * t - 0.5) * t * t};
    Weights weights{};
    int rest = unit;
    for (std::size_t k : {0, 2, 3}) {
        weights[k] = static_cast<std::int16_t>(std::lround(parts[k] * unit));
        rest -= weights[k];
    }
    weights[1] = static_cast<std::int16_t>(rest);
    return weights;
}

inline std::uint8_t toByte(int sum) {
    const int value = (sum + unit / 2) >> 14;
    return static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

KVN_CLONES void filterAlong(const std::uint8_t* __restrict in, int channels, const Weights& weights,
                            int samples, std::uint8_t* __restrict out) {
    const int a = weights[0], b = weights[1], c = weights[2], d = weights[3];
    const std::uint8_t *second = in + channels, *third = second + channels,
                       *fourth = third + channels;
    for (int i = 0; i < samples; ++i)
        out[i] = toByte(a * in[i] + b * second[i] + c * third[i] + d * fourth[i]);
}

// Every sample has weights of its own.
KVN_CLONES void filterDown(const std::uint8_t* const rows[4], const std::int16_t* const weights[4],
                           int samples, std::uint8_t* __restrict out) {
    const std::uint8_t *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    const std::int16_t *wa = weights[0], *wb = weights[1], *wc = weights[2], *wd = weights[3];
    for (int i = 0; i < samples; ++i)
        out[i] = toByte((wa[i] * a[i] + wb[i] * b[i]) + (wc[i] * c[i] + wd[i] * d[i]));
}

class Slanting {
  public:
    Slanting(const ConstView& source, const Slant& slant, const View& out)
        : in_(source), out_(out), slant_(slant), channels_(bytesPerPixel(source.type)) {
        const Rgba& color = slant.background;
        const std::uint8_t bytes[] = {color.r, color.g, color.b, color.a};
        std::copy_n(bytes, 4, background_);
        if (channels_ == 2) background_[1] = color.a;
        if (slant.vertical) prepareColumns();
    }

    void rows(int y0, int y1) const {
        if (slant_.vertical)
            columnsDown(y0, y1);
        else
            rowsAlong(y0, y1);
    }

  private:
    double moved(int line) const {
        const double by = std::max(0.0, slant_.first + slant_.step * line);
        return slant_.smooth ? by : std::ceil(by - 0.5);
    }
    std::size_t bytes(int pixels) const {
        return static_cast<std::size_t>(pixels) * static_cast<std::size_t>(channels_);
    }
    void fill(std::uint8_t* row, int from, int to) const {
        for (int x = from; x < to; ++x)
            std::memcpy(row + bytes(x), background_, static_cast<std::size_t>(channels_));
    }

    // Puts the background where the picture does not reach. The place of pixel x is start + x *
    // step in a line of the source that is `length` long.
    void finish(std::uint8_t* row, double start, double step, int length) const {
        const double soft = slant_.smooth ? std::sqrt(1 + slant_.step * slant_.step) / 2 : 0;
        const auto between = [&](double a, double b) {
            if (step == 0) // level: all or nothing, no pixel is cut
                return start > a && start < b ? std::pair(0, out_.width) : std::pair(0, 0);
            const double p = (a - start) / step, q = (b - start) / step;
            const double width = out_.width;
            const auto first = static_cast<int>(std::clamp(std::floor(std::min(p, q)), 0.0, width));
            const auto last = static_cast<int>(std::clamp(std::ceil(std::max(p, q)), 0.0, width));
            return std::pair(first, last);
        };
        // Some pixels too many here, some too few there: those in between are looked at one by one.
        auto [coveredFrom, coveredTo] = between(-0.5 - soft, length - 0.5 + soft);
        coveredTo = std::min(coveredTo + 1, out_.width);
        auto [wholeFrom, wholeTo] = between(-0.5 + soft, length - 0.5 - soft);
        wholeFrom = std::clamp(wholeFrom + 1, coveredFrom, coveredTo);
        wholeTo = std::clamp(wholeTo - 1, wholeFrom, coveredTo);
        fill(row, 0, coveredFrom);
        fill(row, coveredTo, out_.width);
        for (int x = coveredFrom; x < coveredTo; ++x) {
            if (x == wholeFrom && wholeTo > x) x = wholeTo;
            if (x >= coveredTo) break;
            const double place = start + x * step;
            const double inner = std::min(place + 0.5, length - 0.5 - place);
            const double share = soft > 0 ? std::clamp(inner / (2 * soft) + 0.5, 0.0, 1.0)
                                          : double(place >= -0.5 && place < length - 0.5);
            std::uint8_t* pixel = row + bytes(x);
            for (int c = 0; c < channels_; ++c)
                pixel[c] = static_cast<std::uint8_t>(
                    std::lround(background_[c] + share * (pixel[c] - background_[c])));
        }
    }

    void rowsAlong(int y0, int y1) const {
        constexpr int margin = 4; // pixels that the edges are repeated by, at least
        Row padded(bytes(in_.width + 2 * margin) + 64);
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* from = in_.row(y);
            for (int i = 0; i < margin; ++i) {
                std::memcpy(&padded[bytes(i)], from, bytes(1));
                std::memcpy(&padded[bytes(margin + in_.width + i)], from + bytes(in_.width - 1),
                            bytes(1));
            }
            std::memcpy(&padded[bytes(margin)], from, bytes(in_.width));
            const double by = moved(y);
            const int left = static_cast<int>(std::floor(-by)); // source column of pixel 0
            const Weights weights = cubicWeights(-by - left);
            // The pixels that have four columns in the padded row.
            const int first = std::max(0, -left - margin + 1);
            const int last = std::max(first, std::min(out_.width, in_.width + margin - 2 - left));
            std::uint8_t* to = out_.row(y);
            if (slant_.smooth)
                filterAlong(&padded[bytes(first + left - 1 + margin)], channels_, weights,
                            static_cast<int>(bytes(last - first)), to + bytes(first));
            else
                std::memcpy(to + bytes(first), &padded[bytes(first + left + margin)],
                            bytes(last - first));
            finish(to, -by, 1, in_.width);
        }
    }

    // Columns that move by the same number of whole pixels.
    struct Step {
        int from = 0, to = 0;
        int top = 0; // source row of result row 0
    };

    void prepareColumns() {
        for (auto& one : weights_)
            one.resize(bytes(in_.width));
        for (int x = 0; x < in_.width; ++x) {
            const double by = moved(x);
            const int top = static_cast<int>(std::floor(-by));
            if (steps_.empty() || steps_.back().top != top) steps_.push_back({x, x, top});
            steps_.back().to = x + 1;
            const Weights weights = cubicWeights(-by - top);
            for (std::size_t k = 0; k < 4; ++k)
                std::fill_n(weights_[k].begin() + static_cast<std::ptrdiff_t>(bytes(x)), channels_,
                            weights[k]);
        }
    }

    // The row that lies at result row y once every column has moved by its whole pixels. Whole
    // pieces are copied, and the next step writes over what was too much.
    void stairs(int y, std::uint8_t* out) const {
        for (const Step& step : steps_) {
            const int row = std::clamp(y + step.top, 0, in_.height - 1);
            const std::uint8_t* from = in_.row(row) + bytes(step.from);
            __builtin_prefetch(in_.row(std::min(row + ahead, in_.height - 1)) + bytes(step.from));
            std::uint8_t* to = out + bytes(step.from);
            for (std::size_t i = 0; i < bytes(step.to - step.from); i += piece)
                std::memcpy(to + i, from + i, piece);
        }
    }

    void columnsDown(int y0, int y1) const {
        std::array<Row, 4> ring;
        for (Row& row : ring)
            row.resize(bytes(in_.width) + piece);
        const auto slot = [&](int y) -> Row& { return ring[static_cast<std::size_t>(y + 4) % 4]; };
        const std::int16_t* const weights[] = {weights_[0].data(), weights_[1].data(),
                                               weights_[2].data(), weights_[3].data()};
        for (int y = y0 - 1; y < y0 + 2; ++y)
            stairs(y, slot(y).data());
        for (int y = y0; y < y1; ++y) {
            stairs(y + 2, slot(y + 2).data());
            const std::uint8_t* const rows[] = {slot(y - 1).data(), slot(y).data(),
                                                slot(y + 1).data(), slot(y + 2).data()};
            if (slant_.smooth)
                filterDown(rows, weights, static_cast<int>(bytes(in_.width)), out_.row(y));
            else
                std::memcpy(out_.row(y), rows[1], bytes(in_.width));
            finish(out_.row(y), y - slant_.first, -slant_.step, in_.height);
        }
    }

    ConstView in_;
    View out_;
    Slant slant_;
    int channels_;
    std::uint8_t background_[4] = {};
    std::vector<Step> steps_;
    std::array<std::vector<std::int16_t>, 4> weights_;
};

} // namespace

Raster slanted(const Raster& source, Size size, const Slant& slant, Task& task) {
    Raster result = Raster::uninitialized(source.type(), size.width, size.height);
    const Slanting slanting(source.view(), slant, result.edit());
    parallelRows(size.height, task, [&](int y0, int y1) { slanting.rows(y0, y1); });
    return result;
}

} // namespace kvn::imaging
