// A 24-megapixel picture like a camera's: large smooth forms, edges, fine texture and sensor noise.
// The same one at every run.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "imaging/convert.h"
#include "imaging/raster.h"

namespace kvn::bench {

inline std::uint32_t hashed(std::uint32_t x) {
    x ^= x >> 16;
    x *= 0x7feb352dU;
    x ^= x >> 15;
    x *= 0x846ca68bU;
    return x ^ x >> 16;
}

// Smooth noise of one wavelength, 0..1.
inline float smoothNoise(int x, int y, int wavelength, std::uint32_t seed) {
    const int cx = x / wavelength, cy = y / wavelength;
    const auto corner = [&](int i, int j) {
        const auto u = static_cast<std::uint32_t>(cx + i), v = static_cast<std::uint32_t>(cy + j);
        return static_cast<float>(hashed(u * 73856093U ^ v * 19349663U ^ seed) >> 8) / 16777216.0f;
    };
    const float fx = static_cast<float>(x % wavelength) / static_cast<float>(wavelength);
    const float fy = static_cast<float>(y % wavelength) / static_cast<float>(wavelength);
    const float top = corner(0, 0) + (corner(1, 0) - corner(0, 0)) * fx;
    const float low = corner(0, 1) + (corner(1, 1) - corner(0, 1)) * fx;
    return top + (low - top) * fy;
}

inline imaging::Raster photo(imaging::ImageType type = imaging::ImageType::Rgb24, int width = 6000,
                             int height = 4000) {
    imaging::Raster raster =
        imaging::Raster::uninitialized(imaging::ImageType::Rgb24, width, height);
    const imaging::View view = raster.edit();
    imaging::Task task;
    imaging::parallelRows(height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            for (int x = 0; x < width; ++x) {
                const float form = smoothNoise(x, y, 900, 1) * 150 + smoothNoise(x, y, 120, 2) * 60;
                const float edge = smoothNoise(x, y, 400, 3) > 0.55f ? 30.0f : 0.0f;
                const float texture = smoothNoise(x, y, 9, 4) * 14;
                for (int c = 0; c < 3; ++c) {
                    const auto n = hashed(static_cast<std::uint32_t>((y * width + x) * 3 + c));
                    // The sum of four bytes is close enough to a Gaussian of sigma 2.
                    const float noise = static_cast<float>((n & 255) + (n >> 8 & 255) +
                                                           (n >> 16 & 255) + (n >> 24)) /
                                            74.0f -
                                        6.9f;
                    const float tint = smoothNoise(x, y, 1500, 10 + static_cast<unsigned>(c)) * 40;
                    view.row(y)[x * 3 + c] = static_cast<std::uint8_t>(
                        std::clamp(form + edge + texture + tint + noise, 0.0f, 255.0f));
                }
            }
    });
    return imaging::convertType(raster, type, task);
}

} // namespace kvn::bench
