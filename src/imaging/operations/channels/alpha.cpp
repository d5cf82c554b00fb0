#include "imaging/operations/channels/alpha.h"

#include <algorithm>
#include <cmath>

#include "basic/error.h"
#include "imaging/alpha_merge.h"
#include "imaging/operations/channels/alpha_tables.h"
#include "imaging/operations/channels/flatten_row.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/color_match.h"
#include "imaging/operations/support/color_planes.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

ByteTable mergeTable(AlphaMerge how, int fresh) {
    ByteTable table;
    for (int v = 0; v < 256; ++v)
        table[static_cast<std::size_t>(v)] = mergedAlpha(how, v, fresh);
    return table;
}

AlphaMerge mergeOf(const Arguments& arguments, std::size_t i) {
    return static_cast<AlphaMerge>(arguments.integer(i));
}

constexpr Argument byColorArguments[] = {
    {"color", ArgumentKind::Color, 0, 0, "", "the colour that is looked for; its alpha is not"},
    {"tolerance", ArgumentKind::Number, 0, 100, "%", "largest difference of a channel; clamped"},
    {"matching", ArgumentKind::Integer, 0, 255, "", "alpha of that colour; clamped"},
    {"others", ArgumentKind::Integer, 0, 255, "", "alpha of all others; clamped"},
    {"flag1", ArgumentKind::Integer, 0, 1, "", "not looked at"},
    {"flag2", ArgumentKind::Integer, 0, 1, "", "not looked at"},
    {"mergeType", ArgumentKind::Integer, 0, 8, "", "how it meets present alpha", false, true},
};

KVN_CLONES void choose(const std::uint8_t* mask, const std::uint8_t* matching,
                       std::uint8_t* alpha) {
    for (int i = 0; i < ColorPlanes::size; ++i)
        alpha[i] = static_cast<std::uint8_t>((matching[i] & mask[i]) | (alpha[i] & ~mask[i]));
}

Raster alphaByColor(const Raster& source, const Arguments& arguments, Task& task) {
    const AlphaMerge how = mergeOf(arguments, 6);
    if (how == AlphaMerge::KeepExisting) return source;
    const ColorMatch match(arguments.color(0), arguments.number(1));
    const ByteTable matching = mergeTable(how, std::clamp(arguments.integer(2), 0, 255));
    const ByteTable others = mergeTable(how, std::clamp(arguments.integer(3), 0, 255));
    const bool opaque = !hasAlpha(source.type());
    return mapPlanes(source, ResultForm::WithAlpha, task, [&](ColorPlanes& planes) {
        alignas(64) std::uint8_t mask[ColorPlanes::size], alpha[ColorPlanes::size];
        match.find(planes, mask);
        lookUpAlpha(planes.a, alpha, opaque, matching);
        lookUpAlpha(planes.a, planes.a, opaque, others);
        choose(mask, alpha, planes.a);
    });
}

constexpr Argument tableArguments[] = {
    {"table", ArgumentKind::Matrix, 0, 255, "", "256 new values, one for each alpha; clamped"},
};

Raster alphaTable(const Raster& source, const Arguments& arguments, Task& task) {
    const Matrix& given = arguments.matrix(0);
    if (given.values.size() != 256)
        throw RuntimeError(errors::invalidCall, "The table must have 256 values",
                           "Channels.AlphaTable");
    ByteTable table;
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = static_cast<std::uint8_t>(std::lround(std::clamp(given.values[i], 0.0, 255.0)));
    return mapAlpha(source, table, task);
}

Raster clearAlpha(const Raster& source, const Arguments&, Task& task) {
    if (isOpaque(source)) return source;
    ByteTable opaque;
    opaque.fill(255);
    return mapAlpha(source, opaque, task);
}

constexpr Argument constantArguments[] = {
    {"alpha", ArgumentKind::Integer, 0, 255, "", "0 clear, 255 opaque; clamped"},
    {"mergeType", ArgumentKind::Integer, 0, 8, "", "how it meets present alpha", false, true},
};

Raster constantAlpha(const Raster& source, const Arguments& arguments, Task& task) {
    const int alpha = std::clamp(arguments.integer(0), 0, 255);
    return mapAlpha(source, mergeTable(mergeOf(arguments, 1), alpha), task);
}

constexpr Argument flattenArguments[] = {
    {"color", ArgumentKind::Color, 0, 0, "", "what shows through; its alpha is not looked at"},
};

Raster flattenAlpha(const Raster& source, const Arguments& arguments, Task& task) {
    if (!hasAlpha(source.type())) return source;
    const Rgba under = arguments.color(0);
    const bool gray = under.r == under.g && under.g == under.b;
    const auto form = gray ? ResultForm::WithoutAlpha : ResultForm::ColorWithoutAlpha;
    return mapRows(source, form, task, [&](const PixelRow& row) { flattenRow(row, under); });
}

} // namespace

const Operation alphaByColorOperation = {
    .name = "Channels.AlphaByColor",
    .undoName = "Alpha by Color",
    .arguments = byColorArguments,
    .run = alphaByColor,
    .alpha = AlphaRule::AlphaOnly,
    .types = TypeRule::Fixed,
    .note = "Gives one colour one alpha and all others another; adds alpha to the type.",
};

const Operation alphaTableOperation = {
    .name = "Channels.AlphaTable",
    .undoName = "Alpha Table",
    .arguments = tableArguments,
    .run = alphaTable,
    .alpha = AlphaRule::AlphaOnly,
    .types = TypeRule::Fixed,
    .note = "Replaces every alpha value by its entry in a table; adds alpha where it falls.",
};

const Operation clearAlphaOperation = {
    .name = "Channels.ClearAlpha",
    .undoName = "Clear Alpha",
    .run = clearAlpha,
    .alpha = AlphaRule::AlphaOnly,
    .types = TypeRule::Keeps,
    .note = "Makes every pixel opaque.",
};

const Operation constantAlphaOperation = {
    .name = "Channels.ConstantAlpha",
    .undoName = "Constant Alpha",
    .arguments = constantArguments,
    .run = constantAlpha,
    .alpha = AlphaRule::AlphaOnly,
    .types = TypeRule::Fixed,
    .note = "Gives all pixels one alpha; adds alpha to the type where it falls.",
};

const Operation flattenAlphaOperation = {
    .name = "Channels.FlattenAlpha",
    .undoName = "Flatten Alpha",
    .arguments = flattenArguments,
    .run = flattenAlpha,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "Lays the picture over a colour; the result has no alpha.",
};

} // namespace kvn::imaging
