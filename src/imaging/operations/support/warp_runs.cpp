#include "imaging/operations/support/warp_runs.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define KVN_HAS_RUNS 1
#endif

namespace kvn::imaging {

#ifdef KVN_HAS_RUNS

namespace {

#define KVN_AVX2 __attribute__((target("avx2,fma")))

constexpr int block = 64; // pixels whose places are worked out together
// Of the weights across, which are whole numbers: two of them and two bytes make one product.
constexpr float unit = 16384;

// Where the four by four pixels of each place begin, and their weights.
struct Block {
    std::int32_t left[block], top[block];
    float firstPair[block], secondPair[block]; // across, in units, two in the bits of each
    float down[4][block];                      // has the mean's divisor in it
};

// Bicubic weights of the pixels -1, 0, 1, 2 for a place t behind pixel 0 (R. Keys 1981).
struct Weights {
    float at[4];
};

KVN_AVX2 inline Weights weightsOf(float t) {
    return {{((-0.5f * t + 1) * t - 0.5f) * t, (1.5f * t - 2.5f) * t * t + 1,
             ((-1.5f * t + 2) * t + 0.5f) * t, (0.5f * t - 0.5f) * t * t}};
}

KVN_AVX2 inline std::int32_t pairOf(float low, float high) {
    const auto whole = [](float v) KVN_AVX2 {
        return static_cast<std::int32_t>(v * unit + (unit + 0.5f)) -
               static_cast<std::int32_t>(unit);
    };
    return (whole(low) & 0xFFFF) |
           static_cast<std::int32_t>(static_cast<std::uint32_t>(whole(high)) << 16);
}

// Sets what belongs to pixel i of the block, whose sample lies at (x, y).
KVN_AVX2 inline void setPlace(Block& to, int i, float x, float y, float share) {
    to.left[i] = static_cast<std::int32_t>(x);
    to.top[i] = static_cast<std::int32_t>(y);
    const Weights across = weightsOf(x - static_cast<float>(to.left[i]));
    const Weights down = weightsOf(y - static_cast<float>(to.top[i]));
    to.firstPair[i] = std::bit_cast<float>(pairOf(across.at[0], across.at[1]));
    to.secondPair[i] = std::bit_cast<float>(pairOf(across.at[2], across.at[3]));
    for (int k = 0; k < 4; ++k)
        to.down[k][i] = down.at[k] * share;
}

// A sample in the middle of each pixel. Its neighbours may lie nowhere.
KVN_AVX2 inline void locate(const WarpRow& row, int begin, int count, Block& to) {
    const float *x = row.x + begin, *y = row.y + begin;
    for (int i = 0; i < count; ++i)
        setPlace(to, i, x[i], y[i], 1 / unit);
}

// The sample at those parts of a step across and down from each pixel's middle.
KVN_AVX2 inline void locateBeside(const WarpRow& row, int begin, int count, float across,
                                  float down, float share, Block& to) {
    const float *x = row.x + begin, *y = row.y + begin;
    const float *belowX = row.belowX + begin, *belowY = row.belowY + begin;
    for (int i = 0; i < count; ++i)
        setPlace(to, i, x[i] + across * (x[i + 1] - x[i]) + down * (belowX[i] - x[i]),
                 y[i] + across * (y[i + 1] - y[i]) + down * (belowY[i] - y[i]), share);
}

// Bytes of four pixels side by side to words, channel by channel of the first two pixels in the
// lower half, of the last two in the upper one.
template <int Channels>
KVN_AVX2 inline __m256i pairsOrder() {
    if constexpr (Channels == 3)
        return _mm256_setr_epi8(0, -1, 3, -1, 1, -1, 4, -1, 2, -1, 5, -1, -1, -1, -1, -1, //
                                6, -1, 9, -1, 7, -1, 10, -1, 8, -1, 11, -1, -1, -1, -1, -1);
    return _mm256_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1, //
                            8, -1, 12, -1, 9, -1, 13, -1, 10, -1, 14, -1, 11, -1, 15, -1);
}

// Adds a sample; the sum of both halves of the result is the pixel.
template <int Channels>
KVN_AVX2 inline __m256 withSample(__m256 sum, const ConstView& source, const Block& places, int i) {
    const std::uint8_t* at = source.data +
                             source.stride * static_cast<std::size_t>(places.top[i] - 1) +
                             std::ptrdiff_t{places.left[i] - 1} * Channels;
    const __m256i across = _mm256_castps_si256(_mm256_set_m128(
        _mm_broadcast_ss(&places.secondPair[i]), _mm_broadcast_ss(&places.firstPair[i])));
    for (int k = 0; k < 4; ++k, at += source.stride) {
        const __m256i bytes =
            _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)));
        const __m256i pairs = _mm256_shuffle_epi8(bytes, pairsOrder<Channels>());
        const __m256 line = _mm256_cvtepi32_ps(_mm256_madd_epi16(pairs, across));
        sum = _mm256_fmadd_ps(line, _mm256_set1_ps(places.down[k][i]), sum);
    }
    return sum;
}

// The lower bytes are the pixel.
KVN_AVX2 inline std::int32_t rounded(__m256 sum) {
    const __m128 pixel = _mm_add_ps(_mm256_castps256_ps128(sum), _mm256_extractf128_ps(sum, 1));
    const __m128i whole = _mm_cvtps_epi32(pixel);
    const __m128i shorts = _mm_packs_epi32(whole, whole);
    return _mm_cvtsi128_si32(_mm_packus_epi16(shorts, shorts));
}

// The pixels `first` to `first` + count - 1 from their samples.
template <int Channels>
KVN_AVX2 inline void drawBlock(const WarpRow& row, int first, int count, const Block* places,
                               int samples) {
    std::uint8_t* out = row.out + static_cast<std::ptrdiff_t>(first) * Channels;
    for (int i = 0; i < count; ++i, out += Channels) {
        __m256 sum = withSample<Channels>(_mm256_setzero_ps(), row.source, places[0], i);
        for (int s = 1; s < samples; ++s)
            sum = withSample<Channels>(sum, row.source, places[s], i);
        const std::int32_t pixel = rounded(sum);
        // A fourth byte goes where the next pixel will be; the last one has no next.
        if (i + 1 < count)
            std::memcpy(out, &pixel, 4);
        else
            std::memcpy(out, &pixel, Channels);
    }
}

template <int Channels>
KVN_AVX2 void sampleRun(const WarpRow& row, int begin, int end, int across, int down) {
    Block places[mostRunSamples * mostRunSamples];
    const int samples = across * down;
    const float share = 1 / (unit * static_cast<float>(samples));
    for (int first = begin; first < end; first += block) {
        const int count = std::min(block, end - first);
        if (samples == 1) {
            locate(row, first, count, places[0]);
            drawBlock<Channels>(row, first, count, places, 1);
            continue;
        }
        for (int s = 0; s < samples; ++s) {
            const float u = static_cast<float>(s % across) + 0.5f;
            const float v = static_cast<float>(s / across) + 0.5f;
            locateBeside(row, first, count, u / static_cast<float>(across) - 0.5f,
                         v / static_cast<float>(down) - 0.5f, share, places[s]);
        }
        drawBlock<Channels>(row, first, count, places, samples);
    }
}

} // namespace

WarpRun vectorRun(int channels) {
    static const bool usable = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    if (!usable || channels < 3) return nullptr;
    return channels == 3 ? sampleRun<3> : sampleRun<4>;
}

#else

WarpRun vectorRun(int) {
    return nullptr;
}

#endif

} // namespace kvn::imaging
