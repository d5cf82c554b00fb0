#include "imaging/view/screen_pixels.h"

#include <cstddef>
#include <cstring>

#include "imaging/view/vectors.h"

namespace kvn::imaging {

namespace {

KVN_VECTORS void packGray(const std::uint8_t* samples, int count, std::uint32_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = 0xFF000000u | samples[i] * 0x00010101u;
}

KVN_VECTORS void packRgb(const std::uint8_t* samples, int count, std::uint32_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = 0xFF000000u | static_cast<std::uint32_t>(samples[3 * i]) << 16 |
                 static_cast<std::uint32_t>(samples[3 * i + 1]) << 8 | samples[3 * i + 2];
}

KVN_VECTORS void packRgba(const std::uint8_t* samples, int count, std::uint32_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        std::uint32_t p;
        std::memcpy(&p, samples + 4 * i, 4);
        out[i] = (p & 0xFF00FF00u) | (p & 0xFFu) << 16 | (p >> 16 & 0xFFu);
    }
}

// Both bytes of a pair times `factor` / 255, rounded to nearest.
inline std::uint32_t scalePair(std::uint32_t pair, std::uint32_t factor) {
    const std::uint32_t t = pair * factor + 0x00800080u;
    return ((t + ((t >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
}

} // namespace

KVN_VECTORS void packFours(std::uint32_t* pixels, int count, std::uint32_t fixed) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint32_t p = pixels[i];
        pixels[i] = (p & 0xFF00FF00u) | (p & 0xFFu) << 16 | (p >> 16 & 0xFFu) | fixed;
    }
}

void packRow(SampleForm form, const std::uint8_t* samples, int count, std::uint32_t* out) {
    if (form == SampleForm::Gray)
        packGray(samples, count, out);
    else if (form == SampleForm::Rgb)
        packRgb(samples, count, out);
    else
        packRgba(samples, count, out);
}

KVN_VECTORS void layOver(const std::uint32_t* above, const std::uint32_t* below, int count,
                         std::uint32_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint32_t clear = 255 - (above[i] >> 24);
        const std::uint32_t rb = scalePair(below[i] & 0x00FF00FFu, clear);
        const std::uint32_t g = scalePair(below[i] >> 8 & 0xFFu, clear);
        out[i] = (above[i] + (rb | g << 8)) | 0xFF000000u;
    }
}

} // namespace kvn::imaging
