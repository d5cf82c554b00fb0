#include "imaging/operations/channels/adjust.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/channels/alpha_tables.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/curve_table.h"
#include "imaging/operations/support/hsl_map.h"

namespace kvn::imaging {
namespace {

Raster throughTables(const Raster& source, const ColorTables& colors, const ByteTable& alpha,
                     Task& task) {
    const ByteTable same = identityTable();
    const bool grayStays = colors.red == colors.green && colors.green == colors.blue;
    if (grayStays && colors.red == same) return mapAlpha(source, alpha, task);
    if (hasAlpha(source.type()) ? alpha == same : alpha[255] == 255)
        return mapChannels(source, colors, task);
    const auto form = grayStays ? ResultForm::WithAlpha : ResultForm::ColorWithAlpha;
    const bool opaque = !hasAlpha(source.type());
    return mapPlanes(source, form, task, [&](ColorPlanes& planes) {
        lookUp(planes.r, planes.r, ColorPlanes::size, colors.red);
        lookUp(planes.g, planes.g, ColorPlanes::size, colors.green);
        lookUp(planes.b, planes.b, ColorPlanes::size, colors.blue);
        lookUpAlpha(planes.a, planes.a, opaque, alpha);
    });
}

constexpr Argument literalArguments[] = {
    {"red", ArgumentKind::Integer, -255, 255, "", "is added to red; clamped"},
    {"green", ArgumentKind::Integer, -255, 255, "", "is added to green; clamped"},
    {"blue", ArgumentKind::Integer, -255, 255, "", "is added to blue; clamped"},
    {"alpha", ArgumentKind::Integer, -255, 255, "", "is added to alpha; clamped"},
};

Raster adjustLiteral(const Raster& source, const Arguments& arguments, Task& task) {
    const auto table = [&](std::size_t i) {
        const int offset = std::clamp(arguments.integer(i), -255, 255);
        return tableOf([offset](int v) { return v + offset; });
    };
    return throughTables(source, {table(0), table(1), table(2)}, table(3), task);
}

constexpr Argument percentArguments[] = {
    {"red", ArgumentKind::Number, -100, 100, "%", "share of red that is added"},
    {"green", ArgumentKind::Number, -100, 100, "%", "share of green that is added"},
    {"blue", ArgumentKind::Number, -100, 100, "%", "share of blue that is added"},
    {"alpha", ArgumentKind::Number, -100, 100, "%", "share of alpha that is added"},
};

Raster adjustPercent(const Raster& source, const Arguments& arguments, Task& task) {
    const auto table = [&](std::size_t i) {
        const double factor = 1 + arguments.number(i) / 100;
        return tableOf([factor](int v) { return v * factor; });
    };
    return throughTables(source, {table(0), table(1), table(2)}, table(3), task);
}

constexpr Argument hslLiteralArguments[] = {
    {"hue", ArgumentKind::Integer, -255, 255, "", "is added; 255 is a full turn"},
    {"saturation", ArgumentKind::Integer, -255, 255, "", "is added; clamped"},
    {"luminance", ArgumentKind::Integer, -255, 255, "", "is added; clamped"},
};

Raster adjustHslLiteral(const Raster& source, const Arguments& arguments, Task& task) {
    const int hue = arguments.integer(0) % 255;
    const int saturation = std::clamp(arguments.integer(1), -255, 255);
    const int luminance = std::clamp(arguments.integer(2), -255, 255);
    if (hue == 0 && saturation == 0 && luminance == 0) return source;
    HslChange change;
    change.hueOffset = static_cast<float>(hue);
    change.saturationOffset = static_cast<float>(saturation);
    change.luminanceOffset = static_cast<float>(luminance);
    return mapHsl(source, change, task);
}

constexpr Argument hslPercentArguments[] = {
    {"hue", ArgumentKind::Number, -100, 100, "%", "of a full turn; wraps"},
    {"saturation", ArgumentKind::Number, -100, 100, "%", "share that is added"},
    {"luminance", ArgumentKind::Number, -100, 100, "%", "share that is added"},
};

Raster adjustHslPercent(const Raster& source, const Arguments& arguments, Task& task) {
    const double hue = std::fmod(arguments.number(0), 100.0);
    const auto factor = [&](std::size_t i) {
        return static_cast<float>(1 + std::clamp(arguments.number(i), -100.0, 1e6) / 100);
    };
    if (hue == 0 && factor(1) == 1 && factor(2) == 1) return source;
    HslChange change;
    change.hueOffset = static_cast<float>(hue * 2.55);
    change.saturationFactor = factor(1);
    change.luminanceFactor = factor(2);
    return mapHsl(source, change, task);
}

} // namespace

const Operation adjustLiteralOperation = {
    .name = "Channels.AdjustLiteral",
    .undoName = "Adjust Channels",
    .arguments = literalArguments,
    .run = adjustLiteral,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note = "Adds an offset to each channel. Keeps the type; alpha is added where it falls.",
};

const Operation adjustPercentOperation = {
    .name = "Channels.AdjustPercent",
    .undoName = "Adjust Channels",
    .arguments = percentArguments,
    .run = adjustPercent,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note =
        "Adds to each channel a share of itself. Keeps the type; alpha is added where it falls.",
};

const Operation adjustHslLiteralOperation = {
    .name = "Channels.AdjustHSLLiteral",
    .undoName = "Adjust HSL",
    .arguments = hslLiteralArguments,
    .run = adjustHslLiteral,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Adds offsets to hue, saturation and luminance.",
};

const Operation adjustHslPercentOperation = {
    .name = "Channels.AdjustHSLPercent",
    .undoName = "Adjust HSL",
    .arguments = hslPercentArguments,
    .run = adjustHslPercent,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Turns the hue and adds to saturation and luminance shares of themselves.",
};

} // namespace kvn::imaging
