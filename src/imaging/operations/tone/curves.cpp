#include "imaging/operations/tone/curves.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/curve_table.h"

namespace kvn::imaging {
namespace {

Raster throughCurve(const Raster& source, const ByteTable& table, Task& task) {
    if (table == identityTable()) return source;
    return mapChannels(source, ColorTables::same(table), task);
}

constexpr Argument brightnessContrastArguments[] = {
    {"brightness", ArgumentKind::Integer, -100, 100, "%", "moves every channel; clamped"},
    {"contrast", ArgumentKind::Integer, -100, 100, "%", "turns about the middle; clamped"},
    {"flag", ArgumentKind::Integer, -1, 0, "", "not looked at"},
};

Raster brightnessContrast(const Raster& source, const Arguments& arguments, Task& task) {
    const double brightness = std::clamp(arguments.integer(0), -100, 100) * 2.55;
    const int contrast = std::clamp(arguments.integer(1), -100, 100);
    return throughCurve(source, tableOf([&](int v) {
                            const double fromMiddle = v - 127.5;
                            if (contrast == 100) return (fromMiddle < 0 ? 0.0 : 255.0) + brightness;
                            const double slope =
                                contrast <= 0 ? 1 + contrast / 100.0 : 100.0 / (100 - contrast);
                            return fromMiddle * slope + 127.5 + brightness;
                        }),
                        task);
}

constexpr Argument gammaArguments[] = {
    {"gamma", ArgumentKind::Number, 0.01, 100, "", "above 1 brightens; clamped to the range"},
};

Raster gamma(const Raster& source, const Arguments& arguments, Task& task) {
    const double exponent = 1 / std::clamp(arguments.number(0), 0.01, 100.0);
    return throughCurve(source, tableOf([&](int v) { return 255 * std::pow(v / 255.0, exponent); }),
                        task);
}

constexpr Argument intensifyArguments[] = {
    {"amount", ArgumentKind::Integer, -100, 100, "%", "added, or below 0 taken off again; clamped"},
};

Raster intensify(const Raster& source, const Arguments& arguments, Task& task) {
    const int amount = std::clamp(arguments.integer(0), -100, 100);
    const double factor = amount < 0 ? 100.0 / (100 - amount) : (100 + amount) / 100.0;
    return throughCurve(source, tableOf([&](int v) { return v * factor; }), task);
}

constexpr Argument negativeArguments[] = {
    {"color", ArgumentKind::Color, 0, 0, "", "how far each channel goes; nothing is white", true},
};

Raster negative(const Raster& source, const Arguments& arguments, Task& task) {
    const Rgba share = arguments.isNothing(0) ? Rgba{255, 255, 255, 255} : arguments.color(0);
    const auto towardsInverse = [](int c) {
        return tableOf([c](int v) { return v + (255 - 2 * v) * c / 255.0; });
    };
    if (share.r == 0 && share.g == 0 && share.b == 0) return source;
    return mapChannels(
        source, {towardsInverse(share.r), towardsInverse(share.g), towardsInverse(share.b)}, task);
}

Raster posterize(const Raster& source, const Arguments&, Task& task) {
    return throughCurve(source, tableOf([](int v) { return (v * 3 + 127) / 255 * 85; }), task);
}

constexpr Argument solarizeArguments[] = {
    {"threshold", ArgumentKind::Integer, 0, 255, "", "first value that is inverted; 0 means 128"},
};

Raster solarize(const Raster& source, const Arguments& arguments, Task& task) {
    const int given = std::clamp(arguments.integer(0), 0, 255);
    const int threshold = given == 0 ? 128 : given;
    return throughCurve(source, tableOf([&](int v) { return v >= threshold ? 255 - v : v; }), task);
}

} // namespace

const Operation brightnessContrastOperation = {
    .name = "Effects.BrightnessContrast",
    .undoName = "Brightness and Contrast",
    .arguments = brightnessContrastArguments,
    .run = brightnessContrast,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Turns the tone line about its middle and moves it.",
};

const Operation gammaOperation = {
    .name = "Effects.Gamma",
    .undoName = "Gamma",
    .arguments = gammaArguments,
    .run = gamma,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Gamma correction of every colour channel.",
};

const Operation intensifyOperation = {
    .name = "Effects.Intensify",
    .undoName = "Intensify",
    .arguments = intensifyArguments,
    .run = intensify,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Multiplies every colour channel.",
};

const Operation negativeOperation = {
    .name = "Effects.Negative",
    .undoName = "Negative",
    .arguments = negativeArguments,
    .run = negative,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Inverts the channels that the colour selects.",
};

const Operation posterizeOperation = {
    .name = "Effects.Posterize",
    .undoName = "Posterize",
    .run = posterize,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Four levels a colour channel.",
};

const Operation solarizeOperation = {
    .name = "Effects.Solarize",
    .undoName = "Solarize",
    .arguments = solarizeArguments,
    .run = solarize,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Inverts the bright values, as light does to film under development.",
};

} // namespace kvn::imaging
