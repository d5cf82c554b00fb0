#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

// One row a mask file follows while the program runs.
constexpr Item maskItems[] = {
    active("mnuChannelsAlphaAddMask", 0, "From File").tip("Take a picture file as alpha mask"),
    line("mnuChannelsAlphaAddMask", 1),
};

constexpr Item alphaItems[] = {
    submenu("mnuChannelsAlpha", 0, "Add Alpha Mask", maskItems)
        .tip("Take a picture as alpha channel"),
    active("mnuChannelsAlpha", 1, "Add Alpha by Color...")
        .tip("Make a color transparent or opaque"),
    active("mnuChannelsAlpha", 2, "Set Constant Alpha...").tip("Give every pixel the same alpha"),
    active("mnuChannelsAlpha", 3, "Invert Alpha")
        .tip("Make transparent what is opaque, and the reverse"),
    active("mnuChannelsAlpha", 4, "Flatten onto Color...")
        .tip("Lay the picture on a color and drop its alpha"),
    active("mnuChannelsAlpha", 5, "Antialias (Blur Alpha)")
        .tip("Soften the edges of the alpha channel"),
    line("mnuChannelsAlpha", 6),
    active("mnuChannelsAlpha", 7, "Clear").tip("Drop the alpha channel"),
};

constexpr Item swapItems[] = {
    active("mnuChannelsRGBSwap", 0, "Red && Green"),
    active("mnuChannelsRGBSwap", 1, "Red && Blue"),
    active("mnuChannelsRGBSwap", 2, "Blue && Green"),
};

constexpr Item rgbItems[] = {
    active("mnuChannelsRGB", 0, "Adjust...").tip("Change red, green and blue"),
    active("mnuChannelsRGB", 1, "Shift...").tip("Move the color channels against each other"),
    submenu("mnuChannelsRGB", 2, "Swap", swapItems).tip("Exchange two color channels"),
};

constexpr Item hslItems[] = {
    active("mnuChannelsAdjust", 0, "Adjust...").tip("Change hue, saturation and luminance"),
};

constexpr Item items[] = {
    submenu("mnuChannels", 0, "Alpha", alphaItems).tip("Work on the alpha channel"),
    submenu("mnuChannels", 1, "RGB", rgbItems).tip("Work on the red, green and blue channels"),
    submenu("mnuChannels", 2, "HSL", hslItems).tip("Work on hue, saturation and luminance"),
};

} // namespace

std::span<const Item> channelsMenu() {
    return items;
}

} // namespace kvn::shell::menu
