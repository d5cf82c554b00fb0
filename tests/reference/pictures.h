// Pictures for tests: seeded, small, of every type, in the sizes that kernels trip over.
#pragma once

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "imaging/raster.h"

namespace reference {

using namespace kvn::imaging;

inline constexpr ImageType everyType[] = {
    ImageType::Bit1,        ImageType::Indexed8, ImageType::Indexed8Alpha, ImageType::Gray8,
    ImageType::GrayAlpha16, ImageType::Rgb24,    ImageType::Rgba32};
inline constexpr Size awkwardSizes[] = {{1, 1}, {1, 9}, {9, 1}, {7, 5}, {257, 129}};

inline std::string nameOf(ImageType type) {
    constexpr const char* names[] = {"bit1",        "indexed8", "indexed8alpha", "gray8",
                                     "grayalpha16", "rgb24",    "rgba32"};
    return names[static_cast<int>(type)];
}

inline Rgba randomColor(std::mt19937& random, bool withAlpha) {
    const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
    Rgba color{byte(), byte(), byte(), 255};
    // Whole opacity and whole transparency are what pictures have most of.
    if (withAlpha) color.a = random() % 3 == 0 ? byte() : random() % 2 ? 255 : 0;
    return color;
}

inline Palette randomPalette(std::mt19937& random, std::size_t size, bool withAlpha) {
    std::vector<Rgba> colors;
    while (colors.size() < size)
        colors.push_back(randomColor(random, withAlpha));
    return Palette(colors);
}

// Every byte of every row random; palette types get a palette that has all indices.
inline Raster noise(ImageType type, Size size, unsigned seed = 1) {
    std::mt19937 random(seed);
    Raster picture(type, size.width, size.height);
    const View view = picture.edit();
    for (int y = 0; y < size.height; ++y)
        for (std::size_t i = 0; i < picture.rowBytes(); ++i)
            view.row(y)[i] = static_cast<std::uint8_t>(random());
    if (hasPalette(type))
        picture.setPalette(
            randomPalette(random, type == ImageType::Bit1 ? 2 : 256, hasAlpha(type)));
    return picture;
}

// Something like a photograph: slow waves of colour with a little noise.
inline Raster waves(Size size, bool withAlpha = false) {
    std::mt19937 random(7);
    Raster picture(withAlpha ? ImageType::Rgba32 : ImageType::Rgb24, size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const auto level = [&](double a, double b, double c) {
                const double wave = std::sin(x * a) + std::sin(y * b) + std::sin((x + y) * c);
                return static_cast<std::uint8_t>(127 + 38 * wave + static_cast<int>(random() % 7));
            };
            const std::uint8_t alpha = withAlpha ? level(0.011, 0.023, 0.005) : 255;
            picture.setPixel(x, y,
                             {level(0.02, 0.013, 0.004), level(0.017, 0.03, 0.009),
                              level(0.008, 0.021, 0.025), alpha});
        }
    return picture;
}

// A copy that shares nothing with the original.
inline Raster deepCopy(const Raster& picture) {
    Raster copy = picture;
    copy.edit();
    return copy;
}

} // namespace reference
