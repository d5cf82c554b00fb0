#include "imaging/operations/resample/doubled.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int taps = 4;
constexpr int farthest = 2;  // source pixels from a result pixel's place
constexpr int scaleBits = 6; // of a row's samples; sums stay below 1.5 * 255 * 64
constexpr int slack = 64;    // samples behind a row that loops may touch

using Weights = std::array<std::int16_t, taps>; // in units of 1/32768

// Result pixel 2x lies a quarter of a pixel before source pixel x and sees x - 2 to x + 1; result
// pixel 2x + 1 the mirror image.
Weights phaseWeights(const Reconstruction& reconstruction, int phase) {
    std::array<double, taps> exact;
    double sum = 0;
    for (int k = 0; k < taps; ++k) {
        const double distance = phase == 0 ? k - 1.75 : k - 1.25;
        exact[static_cast<std::size_t>(k)] =
            std::abs(distance) <= reconstruction.radius ? reconstruction.kernel(distance) : 0.0;
        sum += exact[static_cast<std::size_t>(k)];
    }
    Weights weights;
    for (std::size_t k = 0; k < taps; ++k)
        weights[k] =
            static_cast<std::int16_t>(std::min(32767L, std::lround(exact[k] / sum * 32768)));
    return weights;
}

// value * weight / 32768, rounded: one instruction where there are vectors.
inline std::int16_t times(std::int16_t value, std::int16_t weight) {
    return static_cast<std::int16_t>((((int{value} * int{weight}) >> 14) + 1) >> 1);
}

KVN_CLONES void widen(const std::uint8_t* __restrict in, int samples,
                      std::int16_t* __restrict out) {
    for (int i = 0; i < samples; ++i)
        out[i] = static_cast<std::int16_t>(in[i] << scaleBits);
}

KVN_CLONES void filterAlong(const std::int16_t* __restrict in, int channels, const Weights& weights,
                            int samples, std::int16_t* __restrict out) {
    const std::int16_t wa = weights[0], wb = weights[1], wc = weights[2], wd = weights[3];
    const std::int16_t *b = in + channels, *c = b + channels, *d = c + channels;
    for (int i = 0; i < samples; ++i)
        out[i] = static_cast<std::int16_t>(times(in[i], wa) + times(b[i], wb) + times(c[i], wc) +
                                           times(d[i], wd));
}

KVN_CLONES void filterDown(const std::int16_t* const rows[taps], const Weights& weights,
                           int samples, std::uint8_t* __restrict out) {
    const std::int16_t wa = weights[0], wb = weights[1], wc = weights[2], wd = weights[3];
    const std::int16_t *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    for (int i = 0; i < samples; ++i) {
        const auto sum = static_cast<std::int16_t>(times(a[i], wa) + times(b[i], wb) +
                                                   times(c[i], wc) + times(d[i], wd));
        const auto value = static_cast<std::int16_t>((sum + (1 << (scaleBits - 1))) >> scaleBits);
        const auto low = static_cast<std::int16_t>(value < 0 ? 0 : value);
        out[i] = static_cast<std::uint8_t>(low > 255 ? 255 : low);
    }
}

typedef std::uint8_t Bytes __attribute__((vector_size(16)));

template <int Channels>
void interleavePixels(const std::uint8_t* even, const std::uint8_t* odd, int begin, int pixels,
                      std::uint8_t* out) {
    for (int x = begin; x < pixels; ++x) {
        std::memcpy(out + 2 * Channels * x, even + Channels * x, Channels);
        std::memcpy(out + 2 * Channels * x + Channels, odd + Channels * x, Channels);
    }
}

// Four pixels of each row at a time.
KVN_CLONES void interleaveThrees(const std::uint8_t* __restrict even,
                                 const std::uint8_t* __restrict odd, int pixels,
                                 std::uint8_t* __restrict out) {
    int x = 0;
    for (; x + 6 <= pixels; x += 4) {
        Bytes e, o;
        std::memcpy(&e, even + 3 * x, sizeof e);
        std::memcpy(&o, odd + 3 * x, sizeof o);
        const Bytes first =
            __builtin_shufflevector(e, o, 0, 1, 2, 16, 17, 18, 3, 4, 5, 19, 20, 21, 6, 7, 8, 22);
        const Bytes second =
            __builtin_shufflevector(e, o, 23, 24, 9, 10, 11, 25, 26, 27, 0, 0, 0, 0, 0, 0, 0, 0);
        std::memcpy(out + 6 * x, &first, sizeof first);
        std::memcpy(out + 6 * x + 16, &second, 8);
    }
    interleavePixels<3>(even, odd, x, pixels, out);
}

KVN_CLONES void interleaveOnes(const std::uint8_t* __restrict even,
                               const std::uint8_t* __restrict odd, int pixels,
                               std::uint8_t* __restrict out) {
    for (int x = 0; x < pixels; ++x) {
        out[2 * x] = even[x];
        out[2 * x + 1] = odd[x];
    }
}

void interleave(const std::uint8_t* even, const std::uint8_t* odd, int pixels, int channels,
                std::uint8_t* out) {
    switch (channels) {
    case 1:
        return interleaveOnes(even, odd, pixels, out);
    case 2:
        return interleavePixels<2>(even, odd, 0, pixels, out);
    case 3:
        return interleaveThrees(even, odd, pixels, out);
    default:
        return interleavePixels<4>(even, odd, 0, pixels, out);
    }
}

class Doubling {
  public:
    Doubling(const ConstView& in, const View& out, const Reconstruction& reconstruction)
        : in_(in), out_(out), channels_(bytesPerPixel(in.type)),
          samples_(in.width * channels_), weights_{phaseWeights(reconstruction, 0),
                                                   phaseWeights(reconstruction, 1)} {}

    // The result rows of the source rows y0 .. y1 - 1.
    void rows(int y0, int y1) const {
        Ring ring;
        const auto room = static_cast<std::size_t>(samples_) + slack;
        for (auto& phases : ring)
            for (auto& row : phases)
                row.resize(room);
        std::vector<std::int16_t> padded(room + static_cast<std::size_t>(2 * farthest * channels_));
        std::vector<std::uint8_t> even(room), odd(room);
        for (int y = y0 - farthest; y < y0 + farthest; ++y)
            makeRow(y, padded, ring);
        for (int y = y0; y < y1; ++y) {
            makeRow(y + farthest, padded, ring);
            for (const int phase : {0, 1}) {
                filterRows(ring, 0, y, phase, even.data());
                filterRows(ring, 1, y, phase, odd.data());
                interleave(even.data(), odd.data(), in_.width, channels_, out_.row(2 * y + phase));
            }
        }
    }

  private:
    // Five source rows that are filtered along, in both phases.
    using Ring = std::array<std::array<std::vector<std::int16_t>, 2>, 2 * farthest + 1>;
    static std::size_t slot(int y) {
        return static_cast<std::size_t>(y + farthest) % (2 * farthest + 1);
    }

    void makeRow(int y, std::vector<std::int16_t>& padded, Ring& ring) const {
        const std::uint8_t* from = in_.row(std::clamp(y, 0, in_.height - 1));
        std::int16_t* to = padded.data() + farthest * channels_;
        widen(from, samples_, to);
        for (int i = 0; i < farthest * channels_; ++i) {
            padded[static_cast<std::size_t>(i)] = to[i % channels_];
            to[samples_ + i] = to[samples_ - channels_ + i % channels_];
        }
        for (const int phase : {0, 1})
            filterAlong(padded.data() + phase * channels_, channels_,
                        weights_[static_cast<std::size_t>(phase)], samples_,
                        ring[slot(y)][static_cast<std::size_t>(phase)].data());
    }

    void filterRows(const Ring& ring, std::size_t column, int y, int phase,
                    std::uint8_t* out) const {
        const std::int16_t* rows[taps];
        for (int k = 0; k < taps; ++k)
            rows[k] = ring[slot(y - farthest + phase + k)][column].data();
        filterDown(rows, weights_[static_cast<std::size_t>(phase)], samples_, out);
    }

    ConstView in_;
    View out_;
    int channels_, samples_;
    std::array<Weights, 2> weights_;
};

} // namespace

bool canDouble(const Reconstruction& reconstruction) {
    return reconstruction.kind == Resampling::Filter && reconstruction.kernel &&
           !reconstruction.scaled && reconstruction.radius <= farthest;
}

Raster doubledPicture(const Raster& source, const Reconstruction& reconstruction, Task& task) {
    Raster result = Raster::uninitialized(source.type(), 2 * source.width(), 2 * source.height());
    const Doubling doubling(source.view(), result.edit(), reconstruction);
    parallelRows(
        source.height(), task, [&](int y0, int y1) { doubling.rows(y0, y1); }, 32);
    return result;
}

} // namespace kvn::imaging
