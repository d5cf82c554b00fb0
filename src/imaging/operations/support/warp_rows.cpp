#include "imaging/operations/support/warp_rows.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "imaging/operations/support/simd.h"
#include "imaging/operations/support/warp_runs.h"

namespace kvn::imaging {
namespace {

typedef float Floats __attribute__((vector_size(16)));
typedef std::int32_t Ints __attribute__((vector_size(16)));
typedef std::uint8_t Bytes __attribute__((vector_size(16)));

#define KVN_INLINE inline __attribute__((always_inline))

// Up to this many source pixels a step the bicubic kernel alone does not visibly alias.
constexpr float shrinkLimit = 1.25f;
constexpr int mostSamples = 8; // along each side of a pixel's area
// From this many samples a pixel on, each may be the nearest pixel: the mean smooths them.
constexpr int plentyOfSamples = 16;

KVN_INLINE Floats all(float value) {
    return Floats{value, value, value, value};
}

// Byte `at` and the next ones as floats.
template <int At, int Channels>
KVN_INLINE Floats widened(Bytes bytes) {
    constexpr int b = Channels > 1 ? At + 1 : 16, c = Channels > 2 ? At + 2 : 16,
                  d = Channels > 3 ? At + 3 : 16;
    const Bytes wide = __builtin_shufflevector(bytes, Bytes{}, At, 16, 16, 16, b, 16, 16, 16, c, 16,
                                               16, 16, d, 16, 16, 16);
    return __builtin_convertvector((Ints)wide, Floats);
}

template <int Channels, bool Weighted>
KVN_INLINE Floats premultiplied(Floats pixel) {
    if constexpr (!Weighted) {
        return pixel;
    } else if constexpr (Channels == 2) {
        return pixel * Floats{pixel[1], 255, 0, 0} * all(1 / 255.0f);
    } else {
        const float a = pixel[3];
        return pixel * Floats{a, a, a, 255} * all(1 / 255.0f);
    }
}

// The weights of pixels -1, 0, 1, 2 for a place t behind pixel 0.
KVN_INLINE Floats cubicWeights(float t) {
    const Floats a{-0.5f, 1.5f, -1.5f, 0.5f}, b{1, -2.5f, 2, -0.5f}, c{-0.5f, 0, 0.5f, 0},
        d{0, 1, 0, 0};
    return ((a * all(t) + b) * all(t) + c) * all(t) + d;
}

template <int Channels, bool Weighted>
KVN_INLINE Floats rowSum(const std::uint8_t* at, Floats weights) {
    Bytes bytes = {};
    std::memcpy(&bytes, at, Channels == 3 ? 16 : Channels * 4);
    const Floats a = premultiplied<Channels, Weighted>(widened<0, Channels>(bytes));
    const Floats b = premultiplied<Channels, Weighted>(widened<Channels, Channels>(bytes));
    const Floats c = premultiplied<Channels, Weighted>(widened<2 * Channels, Channels>(bytes));
    const Floats d = premultiplied<Channels, Weighted>(widened<3 * Channels, Channels>(bytes));
    return (all(weights[0]) * a + all(weights[1]) * b) +
           (all(weights[2]) * c + all(weights[3]) * d);
}

// Four columns and rows about a place all of whose pixels exist.
template <int Channels, bool Weighted>
KVN_INLINE Floats sampleInside(const ConstView& source, int left, int top, float tx, float ty) {
    const Floats wx = cubicWeights(tx), wy = cubicWeights(ty);
    const std::uint8_t* at = source.data + source.stride * static_cast<std::size_t>(top - 1) +
                             static_cast<std::ptrdiff_t>(left - 1) * Channels;
    const Floats a = rowSum<Channels, Weighted>(at, wx);
    const Floats b = rowSum<Channels, Weighted>(at + source.stride, wx);
    const Floats c = rowSum<Channels, Weighted>(at + 2 * source.stride, wx);
    const Floats d = rowSum<Channels, Weighted>(at + 3 * source.stride, wx);
    return (all(wy[0]) * a + all(wy[1]) * b) + (all(wy[2]) * c + all(wy[3]) * d);
}

// The same near the edges, where the last pixel repeats.
template <int Channels, bool Weighted>
KVN_INLINE Floats sampleAtEdge(const ConstView& source, int left, int top, float tx, float ty) {
    const Floats wx = cubicWeights(tx), wy = cubicWeights(ty);
    Floats sum = {};
    for (int j = 0; j < 4; ++j) {
        const std::uint8_t* row =
            source.data +
            source.stride * static_cast<std::size_t>(std::clamp(top - 1 + j, 0, source.height - 1));
        Floats line = {};
        for (int i = 0; i < 4; ++i) {
            const int x = std::clamp(left - 1 + i, 0, source.width - 1);
            Bytes bytes = {};
            std::memcpy(&bytes, row + static_cast<std::ptrdiff_t>(x) * Channels, Channels);
            line += all(wx[i]) * premultiplied<Channels, Weighted>(widened<0, Channels>(bytes));
        }
        sum += all(wy[j]) * line;
    }
    return sum;
}

// Not a number becomes `low`.
KVN_INLINE float between(float value, float low, float high) {
    const float raised = value > low ? value : low;
    return raised < high ? raised : high;
}

template <int Channels, bool Weighted>
KVN_INLINE Floats sampleAt(const ConstView& source, float x, float y) {
    x = between(x, -1, static_cast<float>(source.width));
    y = between(y, -1, static_cast<float>(source.height));
    const int left = static_cast<int>(x + 1) - 1, top = static_cast<int>(y + 1) - 1;
    const float tx = x - static_cast<float>(left), ty = y - static_cast<float>(top);
    if (left >= 1 && top >= 1 && left + 2 < source.width && top + 2 < source.height) [[likely]]
        return sampleInside<Channels, Weighted>(source, left, top, tx, ty);
    return sampleAtEdge<Channels, Weighted>(source, left, top, tx, ty);
}

template <int Channels, bool Weighted>
KVN_INLINE Floats pixelAt(const ConstView& source, int x, int y) {
    Bytes bytes = {};
    std::memcpy(&bytes,
                source.data + source.stride * static_cast<std::size_t>(y) +
                    static_cast<std::ptrdiff_t>(x) * Channels,
                Channels == 3 ? 4 : Channels);
    return premultiplied<Channels, Weighted>(widened<0, Channels>(bytes));
}

// On the straight lines between the pixels: good enough where several samples are averaged.
template <int Channels, bool Weighted>
KVN_INLINE Floats linearAt(const ConstView& source, float x, float y) {
    const int lastX = source.width - 1, lastY = source.height - 1;
    x = between(x, 0, static_cast<float>(lastX));
    y = between(y, 0, static_cast<float>(lastY));
    const int left = static_cast<int>(x), top = static_cast<int>(y);
    const int right = std::min(left + 1, lastX), bottom = std::min(top + 1, lastY);
    const float tx = x - static_cast<float>(left), ty = y - static_cast<float>(top);
    const Floats a = pixelAt<Channels, Weighted>(source, left, top);
    const Floats b = pixelAt<Channels, Weighted>(source, right, top);
    const Floats c = pixelAt<Channels, Weighted>(source, left, bottom);
    const Floats d = pixelAt<Channels, Weighted>(source, right, bottom);
    const Floats above = a + (b - a) * all(tx), below = c + (d - c) * all(tx);
    return above + (below - above) * all(ty);
}

template <int Channels, bool Weighted>
KVN_INLINE Floats nearestAt(const ConstView& source, float x, float y) {
    const auto lastX = static_cast<float>(source.width - 1);
    const auto lastY = static_cast<float>(source.height - 1);
    return pixelAt<Channels, Weighted>(source, static_cast<int>(between(x, 0, lastX) + 0.5f),
                                       static_cast<int>(between(y, 0, lastY) + 0.5f));
}

// How the source moves under one pixel of the result.
struct Steps {
    float acrossX, acrossY; // to the next column
    float downX, downY;     // to the next row
};

KVN_INLINE Steps stepsAt(const WarpRow& row, int i) {
    return {row.x[i + 1] - row.x[i], row.y[i + 1] - row.y[i], row.belowX[i] - row.x[i],
            row.belowY[i] - row.y[i]};
}

KVN_INLINE int samplesFor(float stepX, float stepY) {
    const float length = std::sqrt(stepX * stepX + stepY * stepY);
    if (!(length > shrinkLimit)) return 1;
    return static_cast<int>(std::ceil(std::min(length, static_cast<float>(mostSamples))));
}

// The mean over the pixel's area.
template <int Channels, bool Weighted>
KVN_INLINE Floats sampleArea(const WarpRow& row, int i) {
    const Steps steps = stepsAt(row, i);
    const int across = samplesFor(steps.acrossX, steps.acrossY);
    const int down = samplesFor(steps.downX, steps.downY);
    if (across * down == 1 || !row.continuous)
        return sampleAt<Channels, Weighted>(row.source, row.x[i], row.y[i]);
    const bool plenty = across * down >= plentyOfSamples;
    Floats sum = {};
    for (int v = 0; v < down; ++v)
        for (int u = 0; u < across; ++u) {
            const float a = (static_cast<float>(u) + 0.5f) / static_cast<float>(across) - 0.5f;
            const float d = (static_cast<float>(v) + 0.5f) / static_cast<float>(down) - 0.5f;
            const float x = row.x[i] + a * steps.acrossX + d * steps.downX;
            const float y = row.y[i] + a * steps.acrossY + d * steps.downY;
            sum += plenty ? nearestAt<Channels, Weighted>(row.source, x, y)
                          : linearAt<Channels, Weighted>(row.source, x, y);
        }
    return sum * all(1 / static_cast<float>(across * down));
}

// The part of the pixel's width, about its centre at `at`, that lies within -0.5 .. size - 0.5.
KVN_INLINE float coverage(float at, int size, float across, float down) {
    const float step = std::max(std::sqrt(across * across + down * down), 1e-6f);
    const float inside = std::min(at + 0.5f, static_cast<float>(size) - 0.5f - at);
    return between(inside / step + 0.5f, 0, 1);
}

template <int Channels, bool Weighted>
KVN_INLINE void store(Floats pixel, std::uint8_t* out) {
    if constexpr (Weighted) {
        const float alpha = pixel[Channels - 1];
        const float scale = alpha >= 0.5f ? 255 / alpha : 0;
        pixel *= all(scale);
        pixel[Channels - 1] = alpha;
    }
    const Floats low = pixel > all(0) ? pixel : all(0);
    const Floats high = low < all(255) ? low : all(255);
    const Bytes wide = (Bytes) __builtin_convertvector(high + all(0.5f), Ints);
    const Bytes narrow =
        __builtin_shufflevector(wide, wide, 0, 4, 8, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    std::memcpy(out, &narrow, Channels);
}

// A pixel that may lie across the picture's edge.
template <int Channels, bool Weighted>
KVN_INLINE Floats sampleBordered(const WarpRow& row, int i) {
    const float x = row.x[i], y = row.y[i];
    Floats background;
    std::memcpy(&background, row.background, sizeof background);
    const Steps steps = stepsAt(row, i);
    const float share = coverage(x, row.source.width, steps.acrossX, steps.downX) *
                        coverage(y, row.source.height, steps.acrossY, steps.downY);
    if (!(share > 0)) return background;
    const Floats pixel = sampleArea<Channels, Weighted>(row, i);
    // Overshoots of the kernel must not be lifted by the division by alpha.
    return background + all(share) * (pixel - background);
}

// What is to be done for a pixel.
enum Kind : std::uint8_t {
    general,   // edges and areas
    farBeyond, // background alone
    plain,     // well inside, and nothing shrinks
    twoAcross, // well inside, shrinks to no less than two fifths: samples for a fast path
    twoDown,   // follows from the one before by the number of samples
    twoAcrossAndDown
};

// Sets the kind of every pixel.
KVN_CLONES void classify(const WarpRow& row) {
    constexpr float limit = shrinkLimit * shrinkLimit, areaLimit = 2.5f * 2.5f;
    const auto right = static_cast<float>(row.source.width - 2);
    const auto bottom = static_cast<float>(row.source.height - 2);
    const float *x = row.x, *y = row.y, *belowX = row.belowX, *belowY = row.belowY;
    const int counts = row.continuous, borders = row.bordered, count = row.count;
    const float spread = row.continuous ? 1.0f : 0.0f;
    std::uint8_t* __restrict kinds = row.kinds;
    for (int i = 0; i < count; ++i) {
        const float ax = x[i + 1] - x[i], ay = y[i + 1] - y[i];
        const float dx = belowX[i] - x[i], dy = belowY[i] - y[i];
        const float across = ax * ax + ay * ay, down = dx * dx + dy * dy;
        const int manyAcross = (across > limit) & counts, manyDown = (down > limit) & counts;
        const int fast = ((across <= areaLimit) & (down <= areaLimit)) | (counts ^ 1);
        const int inside = (x[i] >= 1) & (y[i] >= 1) & (x[i] < right) & (y[i] < bottom);
        // A pixel this far out cannot touch the picture.
        const float reachX = 2 + spread * (std::abs(ax) + std::abs(dx));
        const float reachY = 2 + spread * (std::abs(ay) + std::abs(dy));
        const int outside = (x[i] < -reachX) | (y[i] < -reachY) | (x[i] > right + 1 + reachX) |
                            (y[i] > bottom + 1 + reachY);
        const int deep =
            (x[i] > reachX) & (y[i] > reachY) & (x[i] < right - reachX) & (y[i] < bottom - reachY);
        const int one = (manyAcross | manyDown) ^ 1;
        const int near = (one & inside) | ((one ^ 1) & deep);
        kinds[i] = static_cast<std::uint8_t>((fast & near) * (plain + manyAcross + 2 * manyDown) |
                                             (outside & borders) * farBeyond);
    }
}

template <int Channels, bool Weighted>
KVN_INLINE void samplePlain(const WarpRow& row, int begin, int end) {
    std::uint8_t* out = row.out + static_cast<std::ptrdiff_t>(begin) * Channels;
    for (int i = begin; i < end; ++i, out += Channels) {
        const int left = static_cast<int>(row.x[i]), top = static_cast<int>(row.y[i]);
        store<Channels, Weighted>(sampleInside<Channels, Weighted>(
                                      row.source, left, top, row.x[i] - static_cast<float>(left),
                                      row.y[i] - static_cast<float>(top)),
                                  out);
    }
}

template <int Channels, bool Weighted>
KVN_INLINE void sampleOthers(const WarpRow& row, int begin, int end) {
    Floats background;
    std::memcpy(&background, row.background, sizeof background);
    std::uint8_t* out = row.out + static_cast<std::ptrdiff_t>(begin) * Channels;
    for (int i = begin; i < end; ++i, out += Channels) {
        Floats pixel = background;
        if (row.kinds[i] != farBeyond)
            pixel = row.bordered ? sampleBordered<Channels, Weighted>(row, i)
                                 : sampleArea<Channels, Weighted>(row, i);
        store<Channels, Weighted>(pixel, out);
    }
}

template <int Channels, bool Weighted>
KVN_INLINE void sampleRow(const WarpRow& row) {
    classify(row);
    const WarpRun fast = Weighted ? nullptr : vectorRun(Channels);
    for (int begin = 0, end = 0; begin < row.count; begin = end) {
        const std::uint8_t kind = row.kinds[begin];
        while (end < row.count && row.kinds[end] == kind)
            ++end;
        if (kind >= plain && fast)
            fast(row, begin, end, 1 + ((kind - plain) & 1), 1 + ((kind - plain) >> 1));
        else if (kind == plain)
            samplePlain<Channels, Weighted>(row, begin, end);
        else
            sampleOthers<Channels, Weighted>(row, begin, end);
    }
}

KVN_CLONES void sampleGray(const WarpRow& row) {
    sampleRow<1, false>(row);
}
KVN_CLONES void sampleGrayAlpha(const WarpRow& row) {
    sampleRow<2, false>(row);
}
KVN_CLONES void sampleGrayWeighted(const WarpRow& row) {
    sampleRow<2, true>(row);
}
KVN_CLONES void sampleRgb(const WarpRow& row) {
    sampleRow<3, false>(row);
}
KVN_CLONES void sampleRgba(const WarpRow& row) {
    sampleRow<4, false>(row);
}
KVN_CLONES void sampleRgbaWeighted(const WarpRow& row) {
    sampleRow<4, true>(row);
}

} // namespace

WarpSampler bicubicSampler(int channels, bool weighted) {
    constexpr WarpSampler samplers[4][2] = {{sampleGray, sampleGray},
                                            {sampleGrayAlpha, sampleGrayWeighted},
                                            {sampleRgb, sampleRgb},
                                            {sampleRgba, sampleRgbaWeighted}};
    return samplers[channels - 1][weighted];
}

void sampleNearest(const WarpRow& row) {
    const int channels = bytesPerPixel(row.source.type);
    const auto width = static_cast<float>(row.source.width);
    const auto height = static_cast<float>(row.source.height);
    std::uint8_t* out = row.out;
    for (int i = 0; i < row.count; ++i, out += channels) {
        const float x = row.x[i] + 0.5f, y = row.y[i] + 0.5f;
        if (row.bordered && !(x >= 0 && y >= 0 && x < width && y < height)) {
            for (int c = 0; c < channels; ++c)
                out[c] = static_cast<std::uint8_t>(row.background[c]);
            continue;
        }
        const auto column = static_cast<int>(between(x, 0, width - 0.5f));
        const auto line = static_cast<int>(between(y, 0, height - 0.5f));
        std::memcpy(out, row.source.row(line) + static_cast<std::ptrdiff_t>(column) * channels,
                    static_cast<std::size_t>(channels));
    }
}

} // namespace kvn::imaging
