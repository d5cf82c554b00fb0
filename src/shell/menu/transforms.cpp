#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item flipLinesItems[] = {
    active("mnuDemosFlipLinesH", "&Horizontal").tip("Turn every second row around"),
    active("mnuDemosFlipLinesV", "&Vertical").tip("Turn every second column around"),
};

constexpr Item cropItems[] = {
    active("mnuEffectsCrop", 0, "Selection").tip("Keep only the selection"),
    active("mnuEffectsCrop", 1, "AutoCrop").tip("Cut off edges of one color"),
    line("mnuEffectsCrop", 2),
    active("mnuEffectsCrop", 3, "Top Left"),
    active("mnuEffectsCrop", 4, "Top Right"),
    active("mnuEffectsCrop", 5, "Bottom Left"),
    active("mnuEffectsCrop", 6, "Bottom Right"),
    active("mnuEffectsCrop", 7, "Center"),
};

constexpr Item flipItems[] = {
    active("mnuFlip", 0, "&Horizontal")
        .calls("EffectsFlip")
        .tip("Exchange left and right")
        .picture("object-flip-horizontal"),
    active("mnuFlip", 1, "&Vertical")
        .calls("EffectsFlip")
        .tip("Exchange top and bottom")
        .picture("object-flip-vertical"),
};

constexpr Item items[] = {
    active("mnuTransforms", 0, "Spin").tip("Twist the picture around a point"),
    active("mnuTransforms", 1, "Spin Wave...").tip("Twist the picture in waves"),
    active("mnuTransforms", 2, "Lens...").tip("See the picture through a lens"),
    active("mnuTransforms", 3, "Pinch...").tip("Pull the picture together at a point"),
    active("mnuTransforms", 4, "Random...").tip("Scatter the pixels"),
    active("mnuTransforms", 5, "Line Slice...").tip("Move slices of the picture"),
    active("mnuTransforms", 6, "Zig Zag...").tip("Bend the picture in zig-zag lines"),
    active("mnuTransforms", 7, "Wave...").tip("Bend the picture in waves"),
    active("mnuTransforms", 8, "Ripple...").tip("Let rings run over the picture as over water"),
    active("mnuTransforms", 9, "Offset...").tip("Move the picture within its frame"),
    active("mnuTransforms", 10, "Wow...").tip("Stretch the picture around its middle"),
    active("mnuTransforms", 11, "Marble...").tip("Marble the picture"),
    active("mnuTransforms", 12, "Perlin...").tip("Bend the picture by smooth noise"),
    active("mnuTransforms", 13, "Bump Map").tip("Emboss another picture into this one").disabled(),
    line("mnuTransformsDash", 0),
    submenu("mnuDemosFlipLines", "Flip Alternating Lines", flipLinesItems)
        .tip("Turn every second line around"),
    active("mnuDemosGrid", "Draw Color &Grid").tip("Cover the picture with a grid of colors"),
    line("mnuTransformsDash", 1),
    submenu("mnuEffects", 0, "&Crop", cropItems)
        .tip("Cut the picture down")
        .picture("transform-crop"),
    submenu("mnuEffects", 1, "&Flip", flipItems).tip("Mirror the picture"),
    active("mnuEffects", 2, "&Resize...")
        .tip("Change the size of the picture")
        .picture("transform-scale"),
    active("mnuEffects", 3, "Resize Can&vas...").tip("Add space around the picture, or cut it off"),
    active("mnuEffects", 4, "R&otate...").tip("Turn the picture").picture("object-rotate-right"),
    active("mnuEffects", 5, "Skew...").tip("Slant the picture"),
    line("mnuTransformsDash", 2),
    active("mnuTransforms", 14, "Custom")
        .tip("Distort the picture by a rule of your own")
        .disabled(),
};

} // namespace

std::span<const Item> transformsMenu() {
    return items;
}

} // namespace kvn::shell::menu
