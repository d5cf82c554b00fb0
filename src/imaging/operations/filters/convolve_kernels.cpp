#include "imaging/operations/filters/convolve_kernels.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/operations/filters/convolve_kernels.cpp"
#include <hwy/foreach_target.h> // compiles this file once for every instruction set

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kvn::imaging::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::ScalableTag<std::uint8_t>;
using Reals = hn::ScalableTag<float>;

HWY_INLINE void addThree(const std::uint8_t* HWY_RESTRICT row, const float* c, std::size_t step,
                         float* HWY_RESTRICT out, std::size_t count) {
    const float left = c[0], middle = c[1], right = c[2];
    for (std::size_t i = 0; i < count; ++i)
        out[i] += left * static_cast<float>(row[i]) + middle * static_cast<float>(row[i + step]) +
                  right * static_cast<float>(row[i + 2 * step]);
}

void correlateRow(const std::uint8_t* const* rows, const float* coefficients, int height, int step,
                  float* out, std::size_t count) {
    constexpr std::size_t piece = 512; // stays in the fastest cache
    for (std::size_t begin = 0; begin < count; begin += piece) {
        const std::size_t length = std::min(piece, count - begin);
        std::fill_n(out + begin, length, 0.0f);
        for (int k = 0; k < height; ++k) {
            const float* c = coefficients + 3 * k;
            if (c[0] != 0 || c[1] != 0 || c[2] != 0)
                addThree(rows[k] + begin, c, static_cast<std::size_t>(step), out + begin, length);
        }
    }
}

// Calls `work` for each whole vector of a row; the last one overlaps the one before, and in rows
// shorter than a vector goes through a buffer.
template <class Work>
HWY_INLINE void overRow(std::size_t lanes, std::size_t count, std::uint8_t* out, const Work& work) {
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        work(i, out + i);
    if (i == count) return;
    if (count >= lanes) return work(count - lanes, out + count - lanes);
    std::uint8_t last[HWY_MAX_BYTES];
    work(0, last);
    std::memcpy(out, last, count);
}

HWY_INLINE hn::Vec<Reals> realAt(const std::uint8_t* from) {
    const Reals d;
    const hn::RebindToSigned<Reals> whole;
    const hn::Rebind<std::uint8_t, Reals> bytes;
    return hn::ConvertTo(d, hn::PromoteTo(whole, hn::LoadU(bytes, from)));
}

void sobelRow(const std::uint8_t* const* rows, int step, float gain, std::uint8_t* out,
              std::size_t count) {
    const Reals d;
    const hn::RebindToSigned<Reals> whole;
    const hn::Rebind<std::uint8_t, Reals> bytes;
    const auto s = static_cast<std::size_t>(step);
    const auto two = hn::Set(d, 2.0f);
    overRow(hn::Lanes(d), count, out, [=](std::size_t i, std::uint8_t* to) HWY_ATTR {
        const auto a = realAt(rows[0] + i), b = realAt(rows[0] + i + s),
                   c = realAt(rows[0] + i + 2 * s);
        const auto e = realAt(rows[1] + i), f = realAt(rows[1] + i + 2 * s);
        const auto g = realAt(rows[2] + i), h = realAt(rows[2] + i + s),
                   j = realAt(rows[2] + i + 2 * s);
        const auto across =
            hn::Add(hn::Sub(hn::Add(c, j), hn::Add(a, g)), hn::Mul(two, hn::Sub(f, e)));
        const auto down =
            hn::Add(hn::Sub(hn::Add(g, j), hn::Add(a, c)), hn::Mul(two, hn::Sub(h, b)));
        const auto length = hn::Sqrt(hn::MulAdd(across, across, hn::Mul(down, down)));
        const auto level = hn::NearestInt(hn::Mul(length, hn::Set(d, gain)));
        hn::StoreU(hn::DemoteTo(bytes, hn::Min(level, hn::Set(whole, 255))), bytes, to);
    });
}

void sobelPartsRow(const std::uint8_t* const* rows, std::int16_t* HWY_RESTRICT across,
                   std::int16_t* HWY_RESTRICT down, std::int32_t* HWY_RESTRICT square,
                   std::size_t count) {
    const std::uint8_t* HWY_RESTRICT a = rows[0];
    const std::uint8_t* HWY_RESTRICT b = rows[1];
    const std::uint8_t* HWY_RESTRICT c = rows[2];
    for (std::size_t i = 0; i < count; ++i) {
        const int x = a[i + 2] - a[i] + 2 * (b[i + 2] - b[i]) + c[i + 2] - c[i];
        const int y = c[i] - a[i] + 2 * (c[i + 1] - a[i + 1]) + c[i + 2] - a[i + 2];
        across[i] = static_cast<std::int16_t>(x);
        down[i] = static_cast<std::int16_t>(y);
        square[i] = x * x + y * y;
    }
}

void limitRow(const std::uint8_t* const* rows, int step, std::uint8_t* out, std::size_t count) {
    const Bytes d;
    const auto s = static_cast<std::size_t>(step);
    overRow(hn::Lanes(d), count, out, [=](std::size_t i, std::uint8_t* to) HWY_ATTR {
        auto least = hn::Set(d, 255), second = least;
        auto greatest = hn::Zero(d), runnerUp = greatest;
        for (std::size_t k = 0; k < 9; ++k) {
            if (k == 4) continue;
            const auto v = hn::LoadU(d, rows[k / 3] + i + k % 3 * s);
            second = hn::Min(second, hn::Max(least, v));
            least = hn::Min(least, v);
            runnerUp = hn::Max(runnerUp, hn::Min(greatest, v));
            greatest = hn::Max(greatest, v);
        }
        const auto own = hn::LoadU(d, rows[1] + i + s);
        hn::StoreU(hn::Max(second, hn::Min(own, runnerUp)), d, to);
    });
}

} // namespace kvn::imaging::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kvn::imaging {

HWY_EXPORT(correlateRow);
HWY_EXPORT(sobelRow);
HWY_EXPORT(limitRow);
HWY_EXPORT(sobelPartsRow);

void correlate(const std::uint8_t* const* rows, const float* coefficients, int height, int step,
               float* out, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(correlateRow)(rows, coefficients, height, step, out, count);
}
void sobelLength(const std::uint8_t* const* rows, int step, float gain, std::uint8_t* out,
                 std::size_t count) {
    HWY_DYNAMIC_DISPATCH(sobelRow)(rows, step, gain, out, count);
}
void sobelParts(const std::uint8_t* const* rows, std::int16_t* across, std::int16_t* down,
                std::int32_t* square, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(sobelPartsRow)(rows, across, down, square, count);
}
void limitByNeighbours(const std::uint8_t* const* rows, int step, std::uint8_t* out,
                       std::size_t count) {
    HWY_DYNAMIC_DISPATCH(limitRow)(rows, step, out, count);
}

} // namespace kvn::imaging
#endif
