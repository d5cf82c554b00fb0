#include "imaging/operations/filters/gauss_kernels.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/gauss_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

// Plain loops that the compiler turns into vector code for each of the instruction sets.
HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

// Entries that are finished before the next ones are begun: their sums stay in the fastest cache.
constexpr std::size_t piece = 512;

template <class T>
HWY_INLINE void addPair(const T* HWY_RESTRICT a, const T* HWY_RESTRICT b, float weight,
                        float* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] += weight * static_cast<float>(a[i] + b[i]);
}

template <class T>
HWY_INLINE void addTwoPairs(const T* HWY_RESTRICT a, const T* HWY_RESTRICT b,
                            const T* HWY_RESTRICT c, const T* HWY_RESTRICT d, const float* weights,
                            float* HWY_RESTRICT out, std::size_t count) {
    const float near = weights[1], far = weights[0];
    for (std::size_t i = 0; i < count; ++i)
        out[i] += near * static_cast<float>(a[i] + b[i]) + far * static_cast<float>(c[i] + d[i]);
}

// `at(k)` gives the entries of tap k.
template <class T, class At>
HWY_INLINE void sumSymmetric(const At& at, const float* weights, int taps, float* HWY_RESTRICT out,
                             std::size_t count) {
    const int middle = taps / 2;
    const T* HWY_RESTRICT own = at(middle);
    for (std::size_t i = 0; i < count; ++i)
        out[i] = weights[middle] * static_cast<float>(own[i]);
    int k = 1;
    for (; k + 1 <= middle; k += 2)
        addTwoPairs<T>(at(middle - k), at(middle + k), at(middle - k - 1), at(middle + k + 1),
                       weights + middle - k - 1, out, count);
    if (k <= middle) addPair<T>(at(middle - k), at(middle + k), weights[middle - k], out, count);
}

template <class T>
HWY_INLINE void sumRowsOf(const T* const* rows, const float* weights, int taps, float* out,
                          std::size_t count) {
    for (std::size_t i = 0; i < count; i += piece)
        sumSymmetric<T>([=](int k) HWY_ATTR { return rows[k] + i; }, weights, taps, out + i,
                        count - i < piece ? count - i : piece);
}

void rowsOfBytes(const std::uint8_t* const* rows, const float* weights, int taps, float* out,
                 std::size_t count) {
    sumRowsOf(rows, weights, taps, out, count);
}
void rowsOfFloats(const float* const* rows, const float* weights, int taps, float* out,
                  std::size_t count) {
    sumRowsOf(rows, weights, taps, out, count);
}

void fourRows(const float* const* rows, const float* weights, float* HWY_RESTRICT out,
              std::size_t count) {
    const float* HWY_RESTRICT a = rows[0];
    const float* HWY_RESTRICT b = rows[1];
    const float* HWY_RESTRICT c = rows[2];
    const float* HWY_RESTRICT d = rows[3];
    const float w0 = weights[0], w1 = weights[1], w2 = weights[2], w3 = weights[3];
    for (std::size_t i = 0; i < count; ++i)
        out[i] = w0 * a[i] + w1 * b[i] + (w2 * c[i] + w3 * d[i]);
}

void entries(const float* in, const float* weights, int taps, int step, float* out,
             std::size_t count) {
    for (std::size_t i = 0; i < count; i += piece)
        sumSymmetric<float>([=](int k) HWY_ATTR { return in + i + k * step; }, weights, taps,
                            out + i, count - i < piece ? count - i : piece);
}

namespace hn = hwy::HWY_NAMESPACE;
using Fixed = hn::ScalableTag<std::uint16_t>;

// `pair(k, i)` is the sum of the two entries at distance k. Products lose their lower halves, half
// a unit each on average, which the sum begins with.
template <class Own, class Pair>
HWY_INLINE void sumFixed(const Own& own, const Pair& pair, const std::uint16_t* weights, int radius,
                         std::uint16_t* out, std::size_t count) {
    const Fixed d;
    const std::size_t lanes = hn::Lanes(d);
    const auto start = hn::Set(d, static_cast<std::uint16_t>((radius + 1) / 2));
    for (std::size_t i = 0; i < count; i += 2 * lanes) {
        const auto middle = hn::Set(d, weights[0]);
        auto a = hn::Add(start, hn::MulHigh(own(i), middle));
        auto b = hn::Add(start, hn::MulHigh(own(i + lanes), middle));
        for (int k = 1; k <= radius; ++k) {
            const auto weight = hn::Set(d, weights[k]);
            a = hn::Add(a, hn::MulHigh(pair(k, i), weight));
            b = hn::Add(b, hn::MulHigh(pair(k, i + lanes), weight));
        }
        hn::StoreU(a, d, out + i);
        hn::StoreU(b, d, out + i + lanes);
    }
}

void rowsFixed(const std::uint8_t* const* rows, const std::uint16_t* weights, int radius,
               std::uint16_t* out, std::size_t count) {
    const auto load = [](const std::uint8_t* from) HWY_ATTR {
        const Fixed d;
        const hn::Rebind<std::uint8_t, Fixed> bytes;
        return hn::PromoteTo(d, hn::LoadU(bytes, from));
    };
    sumFixed([=](std::size_t i) HWY_ATTR { return hn::ShiftLeft<7>(load(rows[radius] + i)); },
             [=](int k, std::size_t i) HWY_ATTR {
                 return hn::ShiftLeft<7>(
                     hn::Add(load(rows[radius - k] + i), load(rows[radius + k] + i)));
             },
             weights, radius, out, count);
}

void entriesFixed(const std::uint16_t* in, const std::uint16_t* weights, int radius, int step,
                  std::uint16_t* out, std::size_t count) {
    const std::uint16_t* middle = in + std::ptrdiff_t{radius} * step;
    const auto at = [=](std::ptrdiff_t shift, std::size_t i)
                        HWY_ATTR { return hn::LoadU(Fixed(), middle + shift * step + i); };
    sumFixed([=](std::size_t i) HWY_ATTR { return at(0, i); },
             [=](int k, std::size_t i) HWY_ATTR { return hn::Add(at(-k, i), at(k, i)); }, weights,
             radius, out, count);
}

void fromFixed(const std::uint16_t* HWY_RESTRICT in, float* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = static_cast<float>(in[i]) * (1.0f / 128);
}

void fixedRounded(const std::uint16_t* HWY_RESTRICT in, std::uint8_t* HWY_RESTRICT out,
                  std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto level = static_cast<std::uint16_t>((in[i] + 64) >> 7);
        out[i] = static_cast<std::uint8_t>(level < 255 ? level : 255);
    }
}

// Up to four channels of a pixel at once; the entries past the last channel are left over.
typedef float Pixel __attribute__((vector_size(16), aligned(4)));

HWY_INLINE void load(const float* from, Pixel& pixel) {
    std::memcpy(&pixel, from, sizeof pixel);
}
HWY_INLINE void store(const Pixel& pixel, float* to) {
    std::memcpy(to, &pixel, sizeof pixel);
}

void coarse(const float* in, const float* weights, int taps, int factor, int channels, float* out,
            int count) {
    for (int i = 0; i < count; ++i) {
        const float* from = in + static_cast<std::ptrdiff_t>(i) * factor * channels;
        Pixel sum = {};
        for (int k = 0; k < taps; ++k, from += channels) {
            Pixel pixel;
            load(from, pixel);
            sum += pixel * weights[k];
        }
        store(sum, out + static_cast<std::ptrdiff_t>(i) * channels);
    }
}

void fine(const float* in, const float* weights, int factor, int channels, float* out, int count) {
    for (int i = 0; i < count; ++i, in += channels) {
        Pixel p0, p1, p2, p3;
        load(in, p0);
        load(in + channels, p1);
        load(in + 2 * channels, p2);
        load(in + 3 * channels, p3);
        const float* w = weights;
        for (int phase = 0; phase < factor; ++phase, w += 4, out += channels)
            store(p0 * w[0] + p1 * w[1] + (p2 * w[2] + p3 * w[3]), out);
    }
}

HWY_INLINE std::uint8_t level(float value) {
    int rounded = static_cast<int>(value + 0.5f);
    rounded = rounded < 0 ? 0 : rounded;
    return static_cast<std::uint8_t>(rounded > 255 ? 255 : rounded);
}

void rounded(const float* HWY_RESTRICT in, std::uint8_t* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = level(in[i]);
}

void biased(const float* HWY_RESTRICT in, float bias, std::uint8_t* HWY_RESTRICT out,
            std::size_t count) {
    // Sums of large coefficients may leave the range of whole numbers.
    for (std::size_t i = 0; i < count; ++i) {
        float value = in[i] + bias;
        value = value < 0.0f ? 0.0f : value;
        out[i] = level(value > 255.0f ? 255.0f : value);
    }
}

void detailAdded(const std::uint8_t* HWY_RESTRICT pixels, const float* HWY_RESTRICT blurred,
                 float gain, float threshold, std::uint8_t* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float own = static_cast<float>(pixels[i]);
        const float detail = own - blurred[i];
        const float size = detail < 0 ? -detail : detail;
        out[i] = level(own + (size >= threshold ? detail * gain : 0.0f));
    }
}

void detailAddedFixed(const std::uint8_t* HWY_RESTRICT pixels,
                      const std::uint16_t* HWY_RESTRICT blurred, std::int16_t gain,
                      std::int16_t threshold, std::uint8_t* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto detail = static_cast<std::int16_t>((pixels[i] << 7) - blurred[i]);
        const std::int16_t size = detail < 0 ? static_cast<std::int16_t>(-detail) : detail;
        const std::int16_t kept = size >= threshold ? detail : std::int16_t{0};
        const auto added = static_cast<std::int16_t>((kept * gain + (1 << 14)) >> 15);
        const auto level = static_cast<std::int16_t>((added + (pixels[i] << 4) + 8) >> 4);
        const std::int16_t low = level < 0 ? std::int16_t{0} : level;
        out[i] = static_cast<std::uint8_t>(low > 255 ? 255 : low);
    }
}

void detailKept(float base, const std::uint8_t* HWY_RESTRICT pixels,
                const float* HWY_RESTRICT blurred, std::uint8_t* HWY_RESTRICT out,
                std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = level(base + static_cast<float>(pixels[i]) - blurred[i]);
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(rowsOfBytes);
HWY_EXPORT(rowsOfFloats);
HWY_EXPORT(fourRows);
HWY_EXPORT(entries);
HWY_EXPORT(rowsFixed);
HWY_EXPORT(entriesFixed);
HWY_EXPORT(fromFixed);
HWY_EXPORT(fixedRounded);
HWY_EXPORT(coarse);
HWY_EXPORT(fine);
HWY_EXPORT(rounded);
HWY_EXPORT(biased);
HWY_EXPORT(detailAdded);
HWY_EXPORT(detailAddedFixed);
HWY_EXPORT(detailKept);

void sumRows(const std::uint8_t* const* rows, const float* weights, int taps, float* out,
             std::size_t count) {
    HWY_DYNAMIC_DISPATCH(rowsOfBytes)(rows, weights, taps, out, count);
}
void sumRows(const float* const* rows, const float* weights, int taps, float* out,
             std::size_t count) {
    HWY_DYNAMIC_DISPATCH(rowsOfFloats)(rows, weights, taps, out, count);
}
void sumFourRows(const float* const* rows, const float* weights, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(fourRows)(rows, weights, out, count);
}
void sumEntries(const float* in, const float* weights, int taps, int step, float* out,
                std::size_t count) {
    HWY_DYNAMIC_DISPATCH(entries)(in, weights, taps, step, out, count);
}
void sumRowsFixed(const std::uint8_t* const* rows, const std::uint16_t* weights, int radius,
                  std::uint16_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(rowsFixed)(rows, weights, radius, out, count);
}
void sumEntriesFixed(const std::uint16_t* in, const std::uint16_t* weights, int radius, int step,
                     std::uint16_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(entriesFixed)(in, weights, radius, step, out, count);
}
void levelsOfFixed(const std::uint16_t* in, float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(fromFixed)(in, out, count);
}
void roundFixed(const std::uint16_t* in, std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(fixedRounded)(in, out, count);
}
void toCoarse(const float* in, const float* weights, int taps, int factor, int channels, float* out,
              int count) {
    HWY_DYNAMIC_DISPATCH(coarse)(in, weights, taps, factor, channels, out, count);
}
void toFine(const float* in, const float* weights, int factor, int channels, float* out,
            int count) {
    HWY_DYNAMIC_DISPATCH(fine)(in, weights, factor, channels, out, count);
}
void roundLevels(const float* in, std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(rounded)(in, out, count);
}
void addBias(const float* in, float bias, std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(biased)(in, bias, out, count);
}
void addDetail(const std::uint8_t* pixels, const float* blurred, float gain, float threshold,
               std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(detailAdded)(pixels, blurred, gain, threshold, out, count);
}
void addDetailFixed(const std::uint8_t* pixels, const std::uint16_t* blurred, float gain,
                    float threshold, std::uint8_t* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(detailAddedFixed)
    (pixels, blurred, static_cast<std::int16_t>(gain * 4096 + 0.5f),
     static_cast<std::int16_t>(threshold * 128), out, count);
}
void detailAround(float base, const std::uint8_t* pixels, const float* blurred, std::uint8_t* out,
                  std::size_t count) {
    HWY_DYNAMIC_DISPATCH(detailKept)(base, pixels, blurred, out, count);
}

} // namespace kvn::imaging
#endif
