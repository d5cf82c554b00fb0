#include "rows.h"

namespace kvn::gallery {
namespace {

constexpr Row colors[] = {
    {"Desaturate", "Channels.Desaturate"},
    {"Adjust red +60", "Channels.AdjustLiteral 60 0 0 0"},
    {"Adjust green -60", "Channels.AdjustLiteral 0 -60 0 0"},
    {"Adjust blue +60", "Channels.AdjustLiteral 0 0 60 0"},
    {"Adjust red +50 %", "Channels.AdjustPercent 50 0 0 0"},
    {"Adjust green -50 %", "Channels.AdjustPercent 0 -50 0 0"},
    {"Adjust blue +50 %", "Channels.AdjustPercent 0 0 50 0"},
    {"Adjust hue +40", "Channels.AdjustHSLLiteral 40 0 0"},
    {"Adjust saturation -100", "Channels.AdjustHSLLiteral 0 -100 0"},
    {"Adjust luminance +50", "Channels.AdjustHSLLiteral 0 0 50"},
    {"Adjust hue +25 %", "Channels.AdjustHSLPercent 25 0 0"},
    {"Adjust saturation +50 %", "Channels.AdjustHSLPercent 0 50 0"},
    {"Adjust luminance -50 %", "Channels.AdjustHSLPercent 0 0 -50"},
    {"Shift red", "Channels.Shift 1 6 3"},
    {"Shift green and blue", "Channels.Shift 6 -6 3"},
    {"Shift all", "Channels.Shift 7 20 10"},
    {"Swap Red & Green", "Channels.Swizzle 1 0 2 3"},
    {"Swap Red & Blue", "Channels.Swizzle 2 1 0 3"},
    {"Swap Blue & Green", "Channels.Swizzle 0 2 1 3"},
    {"Split", "Channels.Split", Source::Photo, 3},
};
// Alpha that falls from left to right, for a mask to meet.
constexpr const char* ramp = "Channels.AlphaFromImage ramp.png true 0 0 0";
constexpr Row over(const char* caption, const char* words) {
    return {.caption = caption, .words = words, .first = ramp};
}
constexpr Row alpha[] = {
    {"Alpha by Color", "Channels.AlphaByColor #ffffff 5 0 255 0 0 0"},
    {"Alpha by Color, tolerance 40", "Channels.AlphaByColor #ffffff 40 0 255 0 0 0"},
    {"Constant Alpha", "Channels.ConstantAlpha 127 0"},
    {"Mask, size to fit", "Channels.AlphaFromImage disc.png true 0 0 0"},
    {"Mask, its own size", "Channels.AlphaFromImage disc.png false 0 0 0"},
    over("Mask over a ramp, replaced", "Channels.AlphaFromImage disc.png true 0 0 0"),
    over("most opaque", "Channels.AlphaFromImage disc.png true 0 0 1"),
    over("most transparent", "Channels.AlphaFromImage disc.png true 0 0 2"),
    over("added", "Channels.AlphaFromImage disc.png true 0 0 3"),
    over("subtracted", "Channels.AlphaFromImage disc.png true 0 0 4"),
    over("AND", "Channels.AlphaFromImage disc.png true 0 0 5"),
    over("OR", "Channels.AlphaFromImage disc.png true 0 0 6"),
    over("XOR", "Channels.AlphaFromImage disc.png true 0 0 7"),
    over("existing only", "Channels.AlphaFromImage disc.png true 0 0 8"),
    {"Invert Alpha", "Channels.AlphaFromImage disc.png true 0 0 0 + Channels.AlphaTable inverse"},
    {"Flatten onto Color",
     "Channels.AlphaFromImage disc.png true 0 0 0 + Channels.FlattenAlpha #30a030"},
    {"Antialias", "Channels.AlphaByColor #ffffff 5 0 255 0 0 0 + Channels.AntialiasAlpha 1"},
    {"Antialias 5", "Channels.AlphaByColor #ffffff 5 0 255 0 0 0 + Channels.AntialiasAlpha 5"},
    {"Clear", "Channels.AlphaFromImage disc.png true 0 0 0 + Channels.ClearAlpha"},
};
constexpr Row palettes[] = {
    {"Entry 0 becomes red", "Geometry.Dither 4 true true + Palette.Entry 0 #ff0000"},
    {"Preset system", "Palette.LoadPreset 1", Source::Indexes},
    {"Preset web", "Palette.LoadPreset 2", Source::Indexes},
    {"Preset 16 colours", "Palette.LoadPreset 3", Source::Indexes},
    {"Preset black and white", "Palette.LoadPreset 4", Source::Indexes},
};

constexpr Section sections[] = {
    {"Channels", colors},
    {"Alpha", alpha},
    {"Palette entries", palettes},
};

} // namespace

std::span<const Section> channelSections() {
    return sections;
}

} // namespace kvn::gallery
