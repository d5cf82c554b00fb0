#include "imaging/view/area_scale.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "imaging/view/screen_pixels.h"
#include "imaging/view/vectors.h"

namespace kvn::imaging {

namespace {

constexpr std::uint32_t one = 65535;

// The high half of a product of two 16-bit numbers: what vector units have an instruction for.
inline std::uint16_t part(std::uint16_t value, std::uint16_t weight) {
    return static_cast<std::uint16_t>(std::uint32_t{value} * weight >> 16);
}

AreaSpan spanOf(double begin, double end, double length) {
    end = std::min(end, length);
    begin = std::clamp(begin, 0.0, std::max(0.0, std::nextafter(end, 0.0)));
    AreaSpan span;
    span.first = static_cast<int>(begin);
    double covered[3];
    for (int i = 0; i < 3; ++i) {
        const double left = std::max(begin, static_cast<double>(span.first + i));
        covered[i] = std::max(0.0, std::min(end, static_cast<double>(span.first + i + 1)) - left);
    }
    const double total = covered[0] + covered[1] + covered[2];
    std::uint32_t rest = one;
    for (int i = 2; i > 0; --i) {
        const auto weight = static_cast<std::uint32_t>(std::lround(covered[i] / total * one));
        span.weight[i] = std::min(weight, rest);
        rest -= span.weight[i];
    }
    span.weight[0] = rest;
    return span;
}

KVN_VECTORS void blendThree(const std::uint8_t* a, const std::uint8_t* b, const std::uint8_t* c,
                            const std::uint16_t* weight, int count, std::uint16_t* out) {
    const std::uint16_t wa = weight[0], wb = weight[1], wc = weight[2];
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint16_t>(part(static_cast<std::uint16_t>(a[i] << 8), wa) +
                                            part(static_cast<std::uint16_t>(b[i] << 8), wb) +
                                            part(static_cast<std::uint16_t>(c[i] << 8), wc));
}

KVN_VECTORS void blendTwo(const std::uint8_t* a, const std::uint8_t* b, const std::uint16_t* weight,
                          int count, std::uint16_t* out) {
    const std::uint16_t wa = weight[0], wb = weight[1];
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint16_t>(part(static_cast<std::uint16_t>(a[i] << 8), wa) +
                                            part(static_cast<std::uint16_t>(b[i] << 8), wb));
}

void blendGrayColumns(const std::uint16_t* sums, const std::vector<AreaSpan>& spans,
                      std::uint32_t* out) {
    for (const AreaSpan& span : spans) {
        const std::uint16_t* at = sums + span.first;
        const std::uint32_t sum =
            at[0] * span.weight[0] + at[1] * span.weight[1] + at[2] * span.weight[2] + (1u << 23);
        *out++ = (sum >> 24) * 0x00010101u | 0xFF000000u;
    }
}

// The samples of each result in memory order, four bytes apart. All channels are done at once;
// the fourth of a picture without alpha is its neighbour's red.
template <int Channels>
inline void blendColorColumns(const std::uint16_t* sums, const AreaSpan* spans, int count,
                              std::uint32_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const AreaSpan& span = spans[i];
        const std::uint16_t* at = sums + std::ptrdiff_t{span.first} * Channels;
        const Four sum = loadFour(at) * span.weight[0] + loadFour(at + Channels) * span.weight[1] +
                         loadFour(at + 2 * Channels) * span.weight[2];
        out[i] = packFour((sum + (1u << 23)) >> 24);
    }
}

KVN_VECTORS void blendRgbColumns(const std::uint16_t* sums, const AreaSpan* spans, int count,
                                 std::uint32_t* out) {
    blendColorColumns<3>(sums, spans, count, out);
}

KVN_VECTORS void blendRgbaColumns(const std::uint16_t* sums, const AreaSpan* spans, int count,
                                  std::uint32_t* out) {
    blendColorColumns<4>(sums, spans, count, out);
}

} // namespace

std::vector<AreaSpan> areaSpans(std::int64_t begin, int count, double factor, double length) {
    std::vector<AreaSpan> spans(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const auto place = static_cast<double>(begin + i);
        spans[static_cast<std::size_t>(i)] = spanOf(place * factor, (place + 1) * factor, length);
    }
    return spans;
}

void blendRows(const std::uint8_t* const rows[3], const AreaSpan& span, int count,
               std::uint16_t* out) {
    const std::uint16_t weight[] = {static_cast<std::uint16_t>(span.weight[0]),
                                    static_cast<std::uint16_t>(span.weight[1]),
                                    static_cast<std::uint16_t>(span.weight[2])};
    if (span.weight[2] == 0)
        blendTwo(rows[0], span.weight[1] ? rows[1] : rows[0], weight, count, out);
    else
        blendThree(rows[0], rows[1], rows[2], weight, count, out);
}

void blendColumns(SampleForm form, const std::uint16_t* sums, int left,
                  const std::vector<AreaSpan>& spans, std::uint32_t* out) {
    sums -= std::ptrdiff_t{left} * channelCount(form);
    const int count = static_cast<int>(spans.size());
    if (form == SampleForm::Gray) {
        blendGrayColumns(sums, spans, out);
    } else if (form == SampleForm::Rgb) {
        blendRgbColumns(sums, spans.data(), count, out);
        packFours(out, count, 0xFF000000u);
    } else {
        blendRgbaColumns(sums, spans.data(), count, out);
        packFours(out, count, 0);
    }
}

} // namespace kvn::imaging
