#include "imaging/operations/resample/resize_rows.h"

#include <cstring>

#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

typedef float Floats __attribute__((vector_size(16)));

inline __attribute__((always_inline)) Floats load(const float* from) {
    Floats four;
    std::memcpy(&four, from, sizeof four);
    return four;
}

inline __attribute__((always_inline)) void save(Floats four, float* to) {
    std::memcpy(to, &four, sizeof four);
}

inline __attribute__((always_inline)) Floats all(float value) {
    return Floats{value, value, value, value};
}

// Four samples at a time: one pixel of three or four channels.
KVN_CLONES void filterWide(const float* in, const AxisWeights& columns, int channels, float* out) {
    const int taps = columns.width;
    const float* weight = columns.weight.data();
    for (const int first : columns.first) {
        const float* from = in + static_cast<std::ptrdiff_t>(first) * channels;
        Floats even = {}, odd = {};
        int k = 0;
        for (; k + 1 < taps; k += 2) {
            even += all(weight[k]) * load(from);
            odd += all(weight[k + 1]) * load(from + channels);
            from += 2 * channels;
        }
        if (k < taps) even += all(weight[k]) * load(from);
        save(even + odd, out);
        out += channels;
        weight += taps;
    }
}

// Two pixels of two channels.
KVN_CLONES void filterPairs(const float* in, const AxisWeights& columns, float* out) {
    const int taps = columns.width;
    const float* weight = columns.weight.data();
    for (const int first : columns.first) {
        const float* from = in + static_cast<std::ptrdiff_t>(first) * 2;
        Floats sum = {};
        for (int k = 0; k < taps; k += 2)
            sum += Floats{weight[k], weight[k], weight[k + 1], weight[k + 1]} * load(from + 2 * k);
        out[0] = sum[0] + sum[2];
        out[1] = sum[1] + sum[3];
        out += 2;
        weight += taps;
    }
}

// Four pixels of one channel.
KVN_CLONES void filterSingles(const float* in, const AxisWeights& columns, float* out) {
    const int taps = columns.width;
    const float* weight = columns.weight.data();
    for (const int first : columns.first) {
        Floats sum = {};
        for (int k = 0; k < taps; k += 4)
            sum += load(weight + k) * load(in + first + k);
        *out++ = (sum[0] + sum[2]) + (sum[1] + sum[3]);
        weight += taps;
    }
}

inline __attribute__((always_inline)) std::uint8_t rounded(float value) {
    const float raised = value + 0.5f;
    const float low = raised < 0.0f ? 0.0f : raised;
    return static_cast<std::uint8_t>(static_cast<int>(low > 255.0f ? 255.0f : low));
}

} // namespace

KVN_CLONES void addRows(const std::uint8_t* const rows[4], const float weights[4], int samples,
                        float* __restrict out) {
    const std::uint8_t *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    const float wa = weights[0], wb = weights[1], wc = weights[2], wd = weights[3];
    for (int i = 0; i < samples; ++i)
        out[i] += (wa * static_cast<float>(a[i]) + wb * static_cast<float>(b[i])) +
                  (wc * static_cast<float>(c[i]) + wd * static_cast<float>(d[i]));
}

KVN_CLONES void addRows(const float* const rows[4], const float weights[4], int samples,
                        float* __restrict out) {
    const float *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    const float wa = weights[0], wb = weights[1], wc = weights[2], wd = weights[3];
    for (int i = 0; i < samples; ++i)
        out[i] += (wa * a[i] + wb * b[i]) + (wc * c[i] + wd * d[i]);
}

KVN_CLONES void addRowsToBytes(const float* const rows[4], const float weights[4], int samples,
                               const float* sum, std::uint8_t* __restrict out) {
    const float *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    const float wa = weights[0], wb = weights[1], wc = weights[2], wd = weights[3];
    if (sum)
        for (int i = 0; i < samples; ++i)
            out[i] = rounded(sum[i] + ((wa * a[i] + wb * b[i]) + (wc * c[i] + wd * d[i])));
    else if (wc == 0 && wd == 0)
        for (int i = 0; i < samples; ++i)
            out[i] = rounded(wa * a[i] + wb * b[i]);
    else
        for (int i = 0; i < samples; ++i)
            out[i] = rounded((wa * a[i] + wb * b[i]) + (wc * c[i] + wd * d[i]));
}

int tapPadding(int channels) {
    return channels == 1 ? 4 : channels == 2 ? 2 : 1;
}

void filterRow(const float* in, const AxisWeights& columns, int channels, float* out) {
    if (channels == 1)
        filterSingles(in, columns, out);
    else if (channels == 2)
        filterPairs(in, columns, out);
    else
        filterWide(in, columns, channels, out);
}

KVN_CLONES void bytesToFloats(const std::uint8_t* in, int samples, float* __restrict out) {
    for (int i = 0; i < samples; ++i)
        out[i] = static_cast<float>(in[i]);
}

KVN_CLONES void floatsToBytes(const float* in, int samples, std::uint8_t* __restrict out) {
    for (int i = 0; i < samples; ++i)
        out[i] = rounded(in[i]);
}

} // namespace kvn::imaging
