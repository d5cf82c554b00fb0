#include "imaging/operations/palette/palette.h"

#include <algorithm>

#include "basic/error.h"
#include "imaging/operations/families.h"
#include "imaging/operations/palette/palette_entries.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/quantize.h"

namespace kvn::imaging {
namespace {

constexpr Argument ditherArguments[] = {
    {"colors", ArgumentKind::Integer, 2, 256, "", "size of the palette; clamped"},
    {"dither", ArgumentKind::Boolean, 0, 0, "", "error diffusion; otherwise the nearest colour"},
    {"flag", ArgumentKind::Boolean, 0, 0, "", "not looked at"},
};

Raster dither(const Raster& source, const Arguments& arguments, Task& task) {
    const int colors = std::clamp(arguments.integer(0), 2, 256);
    Palette palette;
    {
        const Task::Stage choosing(task, 0, 0.5);
        palette = choosePalette(source, colors, !isOpaque(source), task,
                                arguments.boolean(1) ? PaletteUse::Dithered : PaletteUse::Nearest);
    }
    const Task::Stage drawing(task, 0.5, 1);
    return mapToPalette(source, palette, arguments.boolean(1), task);
}

constexpr Argument applyArguments[] = {
    {"palette", ArgumentKind::Palette, 0, 0, "", "the colours of the result, in their order"},
    {"dither", ArgumentKind::Boolean, 0, 0, "", "error diffusion; otherwise the nearest colour"},
};

Raster applyPalette(const Raster& source, const Arguments& arguments, Task& task) {
    if (arguments.palette(0).isEmpty())
        throw RuntimeError(errors::invalidCall, "The palette has no colors",
                           "Geometry.ApplyPalette");
    return mapToPalette(source, arguments.palette(0), arguments.boolean(1), task);
}

} // namespace

const Operation ditherOperation = {
    .name = "Geometry.Dither",
    .undoName = "Dither",
    .arguments = ditherArguments,
    .run = dither,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note = "Reduces the picture to its best few colours; 8-bit, with alpha where it has any.",
};

const Operation applyPaletteOperation = {
    .name = "Geometry.ApplyPalette",
    .undoName = "Apply Palette",
    .arguments = applyArguments,
    .run = applyPalette,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Fixed,
    .note = "Draws the picture with the colours of a palette; 8-bit, with the palette's alpha.",
};

std::span<const Operation* const> paletteOperations() {
    static constexpr const Operation* list[] = {&applyPaletteOperation, &ditherOperation,
                                                &loadPresetOperation, &paletteEntryOperation};
    return list;
}

} // namespace kvn::imaging
