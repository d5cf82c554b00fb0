#include "imaging/operations/tone/color_mixes.h"

#include <algorithm>
#include <cmath>

#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/color_match.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/curve_table.h"
#include "imaging/operations/support/hsl_map.h"
#include "imaging/operations/support/luma_rows.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

bool isGray(ImageType type) {
    return type == ImageType::Gray8 || type == ImageType::GrayAlpha16;
}

constexpr Argument saturationArguments[] = {
    {"level", ArgumentKind::Number, 0, 10, "", "0 grey, 1 as it is; clamped"},
};

Raster saturation(const Raster& source, const Arguments& arguments, Task& task) {
    const auto level =
        static_cast<int>(std::lround(std::clamp(arguments.number(0), 0.0, 10.0) * 2048));
    if (level == 2048 || isGray(source.type())) return source;
    return mapRows(source, ResultForm::SameType, task,
                   [level](const PixelRow& row) { saturateRow(row, level); });
}

constexpr Argument colorizeArguments[] = {
    {"color", ArgumentKind::Color, 0, 0, "", "lends its parts"},
    {"hue", ArgumentKind::Boolean, 0, 0, "", "the hue becomes the colour's"},
    {"saturation", ArgumentKind::Boolean, 0, 0, "", "the saturation becomes the colour's"},
    {"luminance", ArgumentKind::Boolean, 0, 0, "", "the luminance becomes the colour's"},
};

Raster colorize(const Raster& source, const Arguments& arguments, Task& task) {
    const Rgba color = arguments.color(0);
    const bool hue = arguments.boolean(1), saturated = arguments.boolean(2);
    const bool luminance = arguments.boolean(3);
    if (!hue && !saturated && !luminance) return source;
    const Hsl hsl = hslFromRgb(color.r, color.g, color.b);
    HslChange change;
    const auto become = [](double value, float& factor, float& offset) {
        factor = 0;
        offset = static_cast<float>(value);
    };
    if (hue) become(hsl.h, change.hueFactor, change.hueOffset);
    if (saturated) become(hsl.s, change.saturationFactor, change.saturationOffset);
    if (luminance) become(hsl.l, change.luminanceFactor, change.luminanceOffset);
    change.colorsGray = hue && saturated && hsl.s > 0;
    return mapHsl(source, change, task);
}

constexpr Argument duotoneArguments[] = {
    {"color", ArgumentKind::Color, 0, 0, "", "the ink"},
};

// From black through `ink` at the luma `at` to white.
ByteTable inkTable(int ink, int at) {
    return tableOf([=](int v) {
        if (v <= at) return at == 0 ? ink : static_cast<double>(ink) * v / at;
        return ink + static_cast<double>(255 - ink) * (v - at) / (255 - at);
    });
}

Raster duotone(const Raster& source, const Arguments& arguments, Task& task) {
    const Rgba ink = arguments.color(0);
    const int at = luma(ink.r, ink.g, ink.b);
    const ColorTables tables{inkTable(ink.r, at), inkTable(ink.g, at), inkTable(ink.b, at)};
    if (isGray(source.type())) return mapChannels(source, tables, task);
    static const ByteTable identity = identityTable();
    const ByteTable* const order[] = {&tables.red, &tables.green, &tables.blue, &identity};
    return mapRows(source, ResultForm::SameType, task, [&](const PixelRow& row) {
        constexpr int part = 1024; // pixels that stay at hand between the two steps
        PixelRow some = row;
        for (int left = row.count; left > 0; left -= part) {
            some.count = std::min(left, part);
            desaturateRow(some);
            lookUpChannels(some.out, some.out, static_cast<std::size_t>(some.count), order,
                           some.outChannels);
            some.in += part * some.inChannels;
            some.out += part * some.outChannels;
        }
    });
}

constexpr Argument thresholdArguments[] = {
    {"low", ArgumentKind::Integer, 0, 255, "", "the darkest luma that becomes white"},
    {"high", ArgumentKind::Integer, 0, 255, "", "the brightest luma that becomes white"},
    {"ignoreAlpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays; otherwise it is cut alike"},
};

Raster threshold(const Raster& source, const Arguments& arguments, Task& task) {
    const LumaRange range{arguments.integer(0), arguments.integer(1),
                          !arguments.boolean(2) && hasAlpha(source.type())};
    return mapRows(source, ResultForm::SameType, task,
                   [&](const PixelRow& row) { thresholdRow(row, range); });
}

constexpr Argument tintArguments[] = {
    {"amount", ArgumentKind::Integer, -100, 100, "%", "below 0 greener, above more magenta"},
};

Raster tint(const Raster& source, const Arguments& arguments, Task& task) {
    const int amount = std::clamp(arguments.integer(0), -100, 100);
    if (amount == 0) return source;
    const double k = 0.35 * amount / 100, other = k * (0.299 + 0.114) / 0.587;
    const ByteTable magenta = tableOf([k](int v) { return v * (1 + k); });
    const ByteTable green = tableOf([other](int v) { return v * (1 - other); });
    return mapChannels(source, {magenta, green, magenta}, task);
}

constexpr Argument replaceArguments[] = {
    {"old", ArgumentKind::Color, 0, 0, "", "the colour that goes; its alpha is not looked at"},
    {"new", ArgumentKind::Color, 0, 0, "", "the colour that comes; its alpha is not looked at"},
    {"tolerance", ArgumentKind::Number, 0, 100, "%", "largest difference of a channel; clamped"},
    {"opacityNonZero", ArgumentKind::Boolean, 0, 0, "", "false: the replaced pixels become clear"},
};

KVN_CLONES void replaceWhere(const std::uint8_t* mask, std::uint8_t* values, std::uint8_t by) {
    for (int i = 0; i < ColorPlanes::size; ++i)
        values[i] = static_cast<std::uint8_t>((by & mask[i]) | (values[i] & ~mask[i]));
}

Raster replaceColor(const Raster& source, const Arguments& arguments, Task& task) {
    const ColorMatch match(arguments.color(0), arguments.number(2));
    const Rgba by = arguments.color(1);
    const bool opaque = arguments.boolean(3), gray = by.r == by.g && by.g == by.b;
    using enum ResultForm;
    const ResultForm form =
        gray ? (opaque ? SameType : WithAlpha) : (opaque ? Color : ColorWithAlpha);
    return mapPlanes(source, form, task, [&](ColorPlanes& planes) {
        alignas(64) std::uint8_t mask[ColorPlanes::size];
        match.find(planes, mask);
        replaceWhere(mask, planes.r, by.r);
        replaceWhere(mask, planes.g, by.g);
        replaceWhere(mask, planes.b, by.b);
        if (!opaque) replaceWhere(mask, planes.a, 0);
    });
}

} // namespace

const Operation saturationOperation = {
    .name = "Effects.Saturation",
    .undoName = "Saturation",
    .arguments = saturationArguments,
    .run = saturation,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Moves every colour away from its grey, or towards it.",
};

const Operation colorizeOperation = {
    .name = "Effects.Colorize",
    .undoName = "Colorize",
    .arguments = colorizeArguments,
    .run = colorize,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Gives every pixel the hue, saturation or luminance of one colour.",
};

const Operation duotoneOperation = {
    .name = "Effects.Duotone",
    .undoName = "Duotone",
    .arguments = duotoneArguments,
    .run = duotone,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Prints the picture in one ink, from black through the colour to white.",
};

const Operation thresholdOperation = {
    .name = "Effects.Threshold",
    .undoName = "Threshold",
    .arguments = thresholdArguments,
    .run = threshold,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Keeps,
    .note = "White where the luma lies within the limits, black elsewhere.",
};

const Operation tintOperation = {
    .name = "Effects.Tint",
    .undoName = "Tint",
    .arguments = tintArguments,
    .run = tint,
    .alpha = AlphaRule::ColorOnly,
    .types = TypeRule::Keeps,
    .note = "Moves the balance between green and magenta.",
};

const Operation replaceColorOperation = {
    .name = "Geometry.ReplaceColor",
    .undoName = "Replace Color",
    .arguments = replaceArguments,
    .run = replaceColor,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note = "Replaces a colour. Keeps the type; alpha is added where pixels become clear.",
};

} // namespace kvn::imaging
