#include "imaging/operations/palette/palette_entries.h"

#include "basic/error.h"
#include "imaging/palette_presets.h"

namespace kvn::imaging {
namespace {

constexpr Argument entryArguments[] = {
    {"index", ArgumentKind::Integer, 0, 255, "", "which colour", false, true},
    {"color", ArgumentKind::Color, 0, 255, "", "the new one"},
};
constexpr Argument presetArguments[] = {
    {"preset", ArgumentKind::Integer, 1, palettePresetCount, "",
     "1 system, 2 web, 3 16 colours, 4 black and white", false, true},
};

// The picture with other colours; the pixels are shared.
Raster recolored(const Raster& source, Palette palette, const char* operation) {
    const ImageType type = source.type();
    if (!hasPalette(type))
        throw RuntimeError(errors::invalidCall, "The picture has no palette", operation);
    if (type == ImageType::Bit1 && palette.size() > 2)
        throw RuntimeError(errors::subscriptOutOfRange, "A 1-bit picture has two colors",
                           operation);
    if (!hasAlpha(type) && palette.hasTransparency())
        for (std::size_t i = 0; i < palette.size(); ++i) {
            const Rgba color = palette[i];
            palette.set(i, {color.r, color.g, color.b, 255});
        }
    Raster result = source;
    result.setPalette(std::move(palette));
    return result;
}

Raster setEntry(const Raster& source, const Arguments& arguments, Task&) {
    Palette palette = source.palette();
    palette.set(static_cast<std::size_t>(arguments.integer(0)), arguments.color(1));
    return recolored(source, std::move(palette), "Palette.Entry");
}

Raster loadPreset(const Raster& source, const Arguments& arguments, Task&) {
    return recolored(source, presetPalette(arguments.integer(0)), "Palette.LoadPreset");
}

} // namespace

const Operation paletteEntryOperation = {
    .name = "Palette.Entry",
    .undoName = "Palette Entry",
    .arguments = entryArguments,
    .run = setEntry,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Keeps,
    .note = "Sets one colour of a palette picture.",
};

const Operation loadPresetOperation = {
    .name = "Palette.LoadPreset",
    .undoName = "Load Palette",
    .arguments = presetArguments,
    .run = loadPreset,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Keeps,
    .note = "Gives a palette picture the colours of a built-in set.",
};

} // namespace kvn::imaging
