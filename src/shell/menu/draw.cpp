#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item antialiasItems[] = {
    all("mnuDrawAntialias", 0, "None (0)").marked(),
    all("mnuDrawAntialias", 1, "A Little (1)").marked(true),
    all("mnuDrawAntialias", 2, "A Little More (10)").marked(),
    all("mnuDrawAntialias", 3, "A Lot (100)").marked(),
};

constexpr Item thicknessItems[] = {
    all("mnuDrawThickness", 0, "1").marked(true), all("mnuDrawThickness", 1, "2").marked(),
    all("mnuDrawThickness", 2, "3").marked(),     all("mnuDrawThickness", 3, "4").marked(),
    all("mnuDrawThickness", 4, "5").marked(),     all("mnuDrawThickness", 5, "6").marked(),
    all("mnuDrawThickness", 6, "7").marked(),     all("mnuDrawThickness", 7, "8").marked(),
    all("mnuDrawThickness", 8, "9").marked(),     all("mnuDrawThickness", 9, "10").marked(),
    all("mnuDrawThickness", 10, "15").marked(),   all("mnuDrawThickness", 11, "20").marked(),
    all("mnuDrawThickness", 12, "30").marked(),   all("mnuDrawThickness", 13, "50").marked(),
};

constexpr Item lineStyleItems[] = {
    all("mnuDrawLineStyle", 0, "Solid").marked(true),
    all("mnuDrawLineStyle", 1, "Dash").marked(),
    all("mnuDrawLineStyle", 2, "Dot").marked(),
    all("mnuDrawLineStyle", 3, "Dash Dot").marked(),
    all("mnuDrawLineStyle", 4, "Dash Dot Dot").marked(),
};

constexpr Item fillStyleItems[] = {
    all("mnuDrawFillStyle", 0, "None").marked(true),
    all("mnuDrawFillStyle", 1, "Horizontal").marked(),
    all("mnuDrawFillStyle", 2, "Vertical").marked(),
    all("mnuDrawFillStyle", 3, "Forward Diagonal").marked(),
    all("mnuDrawFillStyle", 4, "Backward Diagonal").marked(),
    all("mnuDrawFillStyle", 5, "Cross").marked(),
    all("mnuDrawFillStyle", 6, "Diagonal Cross").marked(),
    all("mnuDrawFillStyle", 7, "Solid").marked(),
};

constexpr Item opacityItems[] = {
    all("mnuDrawOpacity", 0, "100%").marked(true), all("mnuDrawOpacity", 1, "90%").marked(),
    all("mnuDrawOpacity", 2, "80%").marked(),      all("mnuDrawOpacity", 3, "70%").marked(),
    all("mnuDrawOpacity", 4, "60%").marked(),      all("mnuDrawOpacity", 5, "50%").marked(),
    all("mnuDrawOpacity", 6, "40%").marked(),      all("mnuDrawOpacity", 7, "30%").marked(),
    all("mnuDrawOpacity", 8, "20%").marked(),      all("mnuDrawOpacity", 9, "10%").marked(),
};

constexpr Item presetItems[] = {
    all("mnuDrawTextureEx", 0, "Puzzle Pieces"),
    all("mnuDrawTextureEx", 1, "Candy Hearts"),
    all("mnuDrawTextureEx", 2, "Triangle Tiles"),
};

constexpr Item gradientItems[] = {
    frame("mnuDrawTextureGradient", 0, "Horizontal"),
    frame("mnuDrawTextureGradient", 1, "Vertical"),
};

constexpr Item textureItems[] = {
    active("mnuDrawTexture", 0, "Select...").tip("Take a picture file as texture of the pen"),
    submenu("mnuDrawTexture", 1, "Presets", presetItems).tip("Take one of our textures"),
    submenu("mnuDrawTexture", 2, "Gradient", gradientItems)
        .tip("Take a run between two colors as texture"),
    line("mnuDrawTexture", 3),
    active("mnuDrawTexture", 4, "Clear").tip("Draw without a texture"),
    line("mnuDrawTexture", 5),
    active("mnuDrawTexture", 6, "Stretch to action").tip("Fit the texture to what is drawn"),
    active("mnuDrawTexture", 7, "Stretch to image").tip("Fit the texture to the picture"),
    active("mnuDrawTexture", 8, "Tile").tip("Repeat the texture"),
};

constexpr Item setupItems[] = {
    active("mnuDrawSetup", 0, "Color...").tip("Choose the color of the pen"),
    submenu("mnuDrawSetup", 1, "Antialias", antialiasItems).tip("Smoothing of drawn shapes"),
    submenu("mnuDrawSetup", 2, "Thickness", thicknessItems).tip("Thickness of the pen in pixels"),
    submenu("mnuDrawSetup", 3, "Line Style", lineStyleItems).tip("Dashes of thin lines"),
    submenu("mnuDrawSetup", 4, "Fill Style", fillStyleItems)
        .tip("What closed shapes are filled with"),
    submenu("mnuDrawSetup", 5, "Opacity", opacityItems).tip("How opaque the pen draws"),
    submenu("mnuDrawSetup", 6, "Texture", textureItems).tip("A picture laid into the pen"),
};

constexpr Item items[] = {
    submenu("mnuDraw", 0, "Setup", setupItems).tip("The pen of the drawing tools"),
};

} // namespace

std::span<const Item> drawMenu() {
    return items;
}

} // namespace kvn::shell::menu
