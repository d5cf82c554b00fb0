#include "imaging/operations/support/weighted_rows.h"

#include <cstddef>
#include <cstring>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

#define KVN_INLINE inline __attribute__((always_inline))

typedef float Floats __attribute__((vector_size(32))); // two pixels of four channels
constexpr int lanes = 8;
constexpr int block = 256; // samples that are worked on together

// The alpha of each pixel for all its channels, and colours with the alpha of other pixels.
#define KVN_ALPHA_OF(pixels) __builtin_shufflevector(pixels, pixels, 3, 3, 3, 3, 7, 7, 7, 7)
#define KVN_WITH_ALPHA(colors, pixels)                                                             \
    __builtin_shufflevector(colors, pixels, 0, 1, 2, 11, 4, 5, 6, 15)

constexpr float leastAlpha = 0.5f;

KVN_INLINE std::uint8_t rounded(float value) {
    const float raised = value + 0.5f;
    const float low = raised > 0 ? raised : 0;
    return static_cast<std::uint8_t>(static_cast<int>(low < 255 ? low : 255));
}

KVN_INLINE void widen(const std::uint8_t* in, int count, float* __restrict out) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<float>(in[i]);
}

KVN_CLONES void premultiplyColors(const std::uint8_t* in, int pixels, float* out) {
    alignas(Floats) float some[block] = {};
    for (int at = 0; at < 4 * pixels; at += block) {
        const int count = 4 * pixels - at < block ? 4 * pixels - at : block;
        widen(in + at, count, some);
        for (int i = 0; i < count; i += lanes) {
            Floats values;
            std::memcpy(&values, some + i, sizeof values);
            const Floats scaled = values * KVN_ALPHA_OF(values) * (1.0f / 255.0f);
            values = KVN_WITH_ALPHA(scaled, values);
            std::memcpy(some + i, &values, sizeof values);
        }
        std::memcpy(out + at, some, static_cast<std::size_t>(count) * sizeof(float));
    }
}

KVN_CLONES void unmultiplyColors(const float* in, int pixels, std::uint8_t* __restrict out,
                                 const std::uint8_t* instead) {
    alignas(Floats) float some[block] = {}, others[block] = {};
    for (int at = 0; at < 4 * pixels; at += block) {
        const int count = 4 * pixels - at < block ? 4 * pixels - at : block;
        std::memcpy(some, in + at, static_cast<std::size_t>(count) * sizeof(float));
        if (instead) widen(instead + at, count, others);
        for (int i = 0; i < count; i += lanes) {
            Floats values, other;
            std::memcpy(&values, some + i, sizeof values);
            std::memcpy(&other, others + i, sizeof other);
            const Floats none = {}, alpha = KVN_ALPHA_OF(values);
            const Floats colors =
                alpha >= none + leastAlpha ? values * ((none + 255.0f) / alpha) : other;
            values = KVN_WITH_ALPHA(colors, values);
            std::memcpy(some + i, &values, sizeof values);
        }
        for (int i = 0; i < count; ++i)
            out[at + i] = rounded(some[i]);
    }
}

KVN_CLONES void premultiplyGray(const std::uint8_t* in, int pixels, float* __restrict out) {
    for (int i = 0; i < 2 * pixels; i += 2) {
        const float alpha = in[i + 1];
        out[i] = static_cast<float>(in[i]) * alpha * (1.0f / 255.0f);
        out[i + 1] = alpha;
    }
}

KVN_CLONES void unmultiplyGray(const float* in, int pixels, std::uint8_t* __restrict out,
                               const std::uint8_t* instead) {
    for (int i = 0; i < 2 * pixels; i += 2) {
        const float alpha = in[i + 1];
        const std::uint8_t other = instead ? instead[i] : 0;
        out[i] = alpha >= leastAlpha ? rounded(in[i] * (255 / alpha)) : other;
        out[i + 1] = rounded(alpha);
    }
}

} // namespace

void premultiplyRow(const std::uint8_t* in, int pixels, int channels, float* out) {
    if (channels == 4)
        premultiplyColors(in, pixels, out);
    else
        premultiplyGray(in, pixels, out);
}

void unmultiplyRow(const float* in, int pixels, int channels, std::uint8_t* out,
                   const std::uint8_t* instead) {
    if (channels == 4)
        unmultiplyColors(in, pixels, out, instead);
    else
        unmultiplyGray(in, pixels, out, instead);
}

} // namespace kvn::imaging
