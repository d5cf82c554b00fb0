#include "imaging/operations/support/warp_runs.h"

#include <algorithm>
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

// Where the 4 by 4 pixels of each place begin, and how far behind the second one it lies.
struct Block {
    std::int64_t at[block];
    float tx[block], ty[block];
};

template <int Channels>
KVN_AVX2 inline void locate(const WarpRow& row, int begin, int count, Block& to) {
    const auto stride = static_cast<std::int64_t>(row.source.stride);
    for (int i = 0; i < count; ++i) {
        const float x = row.x[begin + i], y = row.y[begin + i];
        const int left = static_cast<int>(x), top = static_cast<int>(y);
        to.tx[i] = x - static_cast<float>(left);
        to.ty[i] = y - static_cast<float>(top);
        to.at[i] = (top - 1) * stride + std::int64_t{left - 1} * Channels;
    }
}

// Four pixels of a row, four bytes each.
template <int Channels>
KVN_AVX2 inline __m128i loadRow(const std::uint8_t* from) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    if constexpr (Channels == 4) return bytes;
    return _mm_shuffle_epi8(bytes,
                            _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
}

// The weights for tx in the lower half, for ty in the upper one.
KVN_AVX2 inline __m256 weightsOf(float tx, float ty) {
    const __m256 t = _mm256_set_m128(_mm_set1_ps(ty), _mm_set1_ps(tx));
    const __m256 a = _mm256_setr_ps(-0.5f, 1.5f, -1.5f, 0.5f, -0.5f, 1.5f, -1.5f, 0.5f);
    const __m256 b = _mm256_setr_ps(1, -2.5f, 2, -0.5f, 1, -2.5f, 2, -0.5f);
    const __m256 c = _mm256_setr_ps(-0.5f, 0, 0.5f, 0, -0.5f, 0, 0.5f, 0);
    const __m256 d = _mm256_setr_ps(0, 1, 0, 0, 0, 1, 0, 0);
    return _mm256_fmadd_ps(_mm256_fmadd_ps(_mm256_fmadd_ps(a, t, b), t, c), t, d);
}

// Two rows, weighted and added: eight sums of the lower or the upper bytes.
KVN_AVX2 inline __m256i twoRows(__m128i interleaved, __m256i weights) {
    return _mm256_madd_epi16(_mm256_cvtepu8_epi16(interleaved), weights);
}

// The first four bytes of the result are the pixel. Rows are added in units of 1/16384.
template <int Channels>
KVN_AVX2 inline __m128i samplePixel(const std::uint8_t* at, std::size_t stride, float tx,
                                    float ty) {
    const __m256 weights = weightsOf(tx, ty);
    const __m128 down = _mm_mul_ps(_mm256_extractf128_ps(weights, 1), _mm_set1_ps(16384));
    const __m128i whole = _mm_cvtps_epi32(down);
    const __m128i pairs = _mm_packs_epi32(whole, whole);
    const __m256i first = _mm256_broadcastd_epi32(pairs);
    const __m256i second = _mm256_broadcastd_epi32(_mm_shuffle_epi32(pairs, 0x55));
    const __m128i a = loadRow<Channels>(at), b = loadRow<Channels>(at + stride);
    const __m128i c = loadRow<Channels>(at + 2 * stride), d = loadRow<Channels>(at + 3 * stride);
    const __m256i left = _mm256_add_epi32(twoRows(_mm_unpacklo_epi8(a, b), first),
                                          twoRows(_mm_unpacklo_epi8(c, d), second));
    const __m256i right = _mm256_add_epi32(twoRows(_mm_unpackhi_epi8(a, b), first),
                                           twoRows(_mm_unpackhi_epi8(c, d), second));
    const __m256 across = _mm256_mul_ps(weights, _mm256_set1_ps(1.0f / 16384));
    const __m256 leftWeights =
        _mm256_permutevar8x32_ps(across, _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1));
    const __m256 rightWeights =
        _mm256_permutevar8x32_ps(across, _mm256_setr_epi32(2, 2, 2, 2, 3, 3, 3, 3));
    const __m256 sum = _mm256_fmadd_ps(_mm256_cvtepi32_ps(left), leftWeights,
                                       _mm256_mul_ps(_mm256_cvtepi32_ps(right), rightWeights));
    const __m128 pixel = _mm_add_ps(_mm256_castps256_ps128(sum), _mm256_extractf128_ps(sum, 1));
    const __m128i rounded = _mm_cvtps_epi32(pixel);
    const __m128i shorts = _mm_packs_epi32(rounded, rounded);
    return _mm_packus_epi16(shorts, shorts);
}

template <int Channels>
KVN_AVX2 inline void sampleRun(const WarpRow& row, int begin, int end) {
    Block places;
    for (int first = begin; first < end; first += block) {
        const int count = std::min(block, end - first);
        locate<Channels>(row, first, count, places);
        std::uint8_t* out = row.out + static_cast<std::ptrdiff_t>(first) * Channels;
        const auto pixelAt = [&](int i) KVN_AVX2 {
            return _mm_cvtsi128_si32(samplePixel<Channels>(
                row.source.data + places.at[i], row.source.stride, places.tx[i], places.ty[i]));
        };
        // A fourth byte goes where the next pixel will be; the last one has no next.
        for (int i = 0; i < count - 1; ++i, out += Channels) {
            const int pixel = pixelAt(i);
            std::memcpy(out, &pixel, 4);
        }
        const int last = pixelAt(count - 1);
        std::memcpy(out, &last, Channels);
    }
}

KVN_AVX2 void runOfThree(const WarpRow& row, int begin, int end) {
    sampleRun<3>(row, begin, end);
}

KVN_AVX2 void runOfFour(const WarpRow& row, int begin, int end) {
    sampleRun<4>(row, begin, end);
}

} // namespace

WarpRun vectorRun(int channels) {
    static const bool usable = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    if (!usable || channels < 3) return nullptr;
    return channels == 3 ? runOfThree : runOfFour;
}

#else

WarpRun vectorRun(int) {
    return nullptr;
}

#endif

} // namespace kvn::imaging
