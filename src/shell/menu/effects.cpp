#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item paletteItems[] = {
    active("mnuEffectsPalette", 0, "Web Palette"),
    active("mnuEffectsPalette", 1, "System Palette"),
    active("mnuEffectsPalette", 2, "16 Color Palette"),
    active("mnuEffectsPalette", 3, "Black && White Palette"),
    active("mnuEffectsPalette", 4, "Palette File..."),
    line("mnuEffectsPaletteDash"),
    active("mnuEffectsPalDisplayPalFile", "Display Palette File...")
        .tip("Show the colors of a palette file as a picture"),
    frame("mnuEffectsDitherPalette", "Dither Palette")
        .tip("Whether applying a palette dithers")
        .marked(true),
};

constexpr Item ditherItems[] = {
    active("mnuEffectsDither", 0, "2 Colors"),
    active("mnuEffectsDither", 1, "4 Colors"),
    active("mnuEffectsDither", 2, "8 Colors"),
    active("mnuEffectsDither", 3, "16 Colors"),
    active("mnuEffectsDither", 4, "32 Colors"),
    active("mnuEffectsDither", 5, "64 Colors"),
    active("mnuEffectsDither", 6, "128 Colors"),
    active("mnuEffectsDither", 7, "256 Colors"),
    line("mnuEffectsDither", 8),
    active("mnuEffectsDither", 9, "X Colors..."),
};

constexpr Item dropShadowItems[] = {
    active("mnuEffectsDropShadow", 0, "Custom..."),
    line("mnuEffectsDropShadow", 1),
    active("mnuEffectsDropShadow", 2, "Right-Bottom light"),
    active("mnuEffectsDropShadow", 3, "Right-Bottom Heavy"),
    active("mnuEffectsDropShadow", 4, "Extra Heavy"),
    active("mnuEffectsDropShadow", 5, "Right-Bottom Color"),
    active("mnuEffectsDropShadow", 6, "Left-Bottom Color"),
};

constexpr Item gauzyItems[] = {
    active("mnuEffectsGauzy", 0, "Custom..."), line("mnuEffectsGauzy", 1),
    active("mnuEffectsGauzy", 2, "Meduim"),    active("mnuEffectsGauzy", 3, "Light Black"),
    active("mnuEffectsGauzy", 4, "Heavy"),     active("mnuEffectsGauzy", 5, "Light White"),
};

constexpr Item perspectiveItems[] = {
    active("mnuEffectsPerspectiveExamples", 0, "Right to Left"),
    active("mnuEffectsPerspectiveExamples", 1, "Bottom to Top"),
    active("mnuEffectsPerspectiveExamples", 2, "Right Bottom to Left"),
    active("mnuEffectsPerspectiveExamples", 3, "Right Bottom to Top"),
    active("mnuEffectsPerspectiveExamples", 4, "Center to Left"),
    active("mnuEffectsPerspectiveExamples", 5, "Center"),
};

constexpr Item scribbleItems[] = {
    active("mnuEffectsScribble", 0, "Custom..."), line("mnuEffectsScribble", 1),
    active("mnuEffectsScribble", 2, "Heavy"),     active("mnuEffectsScribble", 3, "Extra Heavy"),
    active("mnuEffectsScribble", 4, "Noisy"),     active("mnuEffectsScribble", 5, "Random"),
};

constexpr Item stippleItems[] = {
    active("mnuEffectsStipple", 0, "Custom..."),   line("mnuEffectsStipple", 1),
    active("mnuEffectsStipple", 2, "Noisy"),       active("mnuEffectsStipple", 3, "Glass"),
    active("mnuEffectsStipple", 4, "Noisy Glass"), active("mnuEffectsStipple", 5, "Extra Noisy"),
};

constexpr Item thumbnailItems[] = {
    active("mnuEffectsThumbnail", 0, "With Decimation"),
    active("mnuEffectsThumbnail", 1, "Without Decimation"),
};

constexpr Item items[] = {
    active("mnuEffectsAutoDeskew", "AutoDeskew").tip("Straighten a scanned black and white page"),
    line("mnuEffects", 6),
    submenu("mnuEffects", 7, "Apply Palette", paletteItems)
        .tip("Show the picture in the colors of a palette"),
    submenu("mnuEffects", 8, "Dither", ditherItems)
        .tip("Show the picture in few colors, finely mixed"),
    active("mnuEffects", 9, "Replace a Color...").tip("Change one color into another"),
    line("mnuEffects", 10),
    active("mnuEffects", 11, "&Add Border").tip("Put a border around the picture"),
    active("mnuEffects", 12, "Bevel Edge").tip("Make the edges look bevelled"),
    active("mnuEffects", 13, "Crackle").tip("Cover the picture with fine cracks"),
    submenu("mnuEffects", 14, "Drop Shadow", dropShadowItems)
        .tip("Put a soft shadow under the picture"),
    submenu("mnuEffects", 15, "Gauzy", gauzyItems).tip("Lay a soft veil over the picture"),
    active("mnuEffects", 16, "Histogram Stretch").tip("Spread the tones over the whole range"),
    active("mnuEffects", 17, "Histogram Equalize").tip("Make all tones equally frequent"),
    active("mnuEffects", 18, "Motion Blur").tip("Blur as if the camera had moved"),
    submenu("mnuEffects", 19, "Perspective", perspectiveItems)
        .tip("Tilt the picture into the depth"),
    submenu("mnuEffects", 20, "Scribble", scribbleItems).tip("Redraw the picture with pen lines"),
    submenu("mnuEffects", 21, "Stipple", stippleItems).tip("Redraw the picture with dots"),
    submenu("mnuEffects", 22, "&Thumbnail", thumbnailItems)
        .tip("Shrink the picture to 100 pixels in width"),
    active("mnuEffects", 23, "Warp Image...").tip("Push a part of the picture along a line"),
    active("mnuEffects", 24, "Emboss Shape").tip("Raise the shape that the alpha channel cuts out"),
    line("mnuEffects", 25),
    active("mnuEffects", 26, "HugoNoise...").tip("Fill the picture with cloudy noise"),
    active("mnuEffects", 27, "PerlinNoise...").tip("Fill the picture with smooth noise"),
};

} // namespace

std::span<const Item> effectsMenu() {
    return items;
}

} // namespace kvn::shell::menu
