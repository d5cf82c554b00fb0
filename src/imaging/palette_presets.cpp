#include "imaging/palette_presets.h"

#include <array>
#include <span>

#include "basic/error.h"

namespace kvn::imaging {
namespace {

// What every program could count on while a display had 256 colours: the first and the last ten.
constexpr std::array<Rgba, 20> displayColors = {{
    {0, 0, 0},       {128, 0, 0},     {0, 128, 0},     {128, 128, 0},   {0, 0, 128},
    {128, 0, 128},   {0, 128, 128},   {192, 192, 192}, {192, 220, 192}, {166, 202, 240},
    {255, 251, 240}, {160, 160, 164}, {128, 128, 128}, {255, 0, 0},     {0, 255, 0},
    {255, 255, 0},   {0, 0, 255},     {255, 0, 255},   {0, 255, 255},   {255, 255, 255},
}};

constexpr std::array<Rgba, 16> textColors = {{
    {0, 0, 0},
    {128, 0, 0},
    {0, 128, 0},
    {128, 128, 0},
    {0, 0, 128},
    {128, 0, 128},
    {0, 128, 128},
    {192, 192, 192},
    {128, 128, 128},
    {255, 0, 0},
    {0, 255, 0},
    {255, 255, 0},
    {0, 0, 255},
    {255, 0, 255},
    {0, 255, 255},
    {255, 255, 255},
}};

constexpr int cubeSide = 6;
constexpr int cubeSize = cubeSide * cubeSide * cubeSide;
constexpr int grayCount = 20;

// The digit of that place in base 6, as a level.
constexpr std::uint8_t cubeLevel(int number, int place) {
    return static_cast<std::uint8_t>(number / place % cubeSide * 51);
}

Palette webColors() {
    std::vector<Rgba> colors;
    for (int i = 0; i < cubeSize; ++i)
        colors.push_back({cubeLevel(i, 36), cubeLevel(i, 6), cubeLevel(i, 1)});
    return Palette(std::move(colors));
}

Palette systemColors() {
    const std::span fixed(displayColors);
    const auto low = fixed.first<10>(), high = fixed.last<10>();
    std::vector<Rgba> colors(low.begin(), low.end());
    for (int i = 0; i < cubeSize; ++i)
        colors.push_back({cubeLevel(i, 1), cubeLevel(i, 6), cubeLevel(i, 36)});
    // Even steps between black and white, none of which the cube has.
    for (int i = 1; i <= grayCount; ++i) {
        const auto gray = static_cast<std::uint8_t>(255 * i / (grayCount + 1));
        colors.push_back({gray, gray, gray});
    }
    colors.insert(colors.end(), high.begin(), high.end());
    return Palette(std::move(colors));
}

} // namespace

Palette presetPalette(int preset) {
    switch (preset) {
    case 1:
        return systemColors();
    case 2:
        return webColors();
    case 3:
        return Palette({textColors.begin(), textColors.end()});
    case 4:
        return Palette::blackAndWhite();
    default:
        throw RuntimeError(errors::invalidCall, "There is no such palette", "Palette.LoadPreset");
    }
}

} // namespace kvn::imaging
