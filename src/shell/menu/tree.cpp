#include "shell/menu/tree.h"

namespace kvn::shell::menu {

std::span<const Item> tree() {
    static const Item menus[] = {
        submenu("mnumFile", "&File", fileMenu()).tip("Open, save, print and close pictures"),
        submenu("mnumEdit", "&Edit", editMenu()).tip("Undo, copy and paste"),
        submenu("mnuView", "&View", viewMenu()).tip("Change how the picture is shown"),
        submenu("mnumImages", "&Images", imagesMenu()).tip("Work with the images of a document"),
        submenu("mnumChannels", "&Channels", channelsMenu())
            .tip("Work on alpha and color channels"),
        submenu("mnumDraw", "&Draw", drawMenu()).tip("Set up the pen"),
        submenu("mnumEffects", "&Effects", effectsMenu()).tip("Borders, palettes and effects"),
        submenu("mnumFilters", "Filters", filtersMenu()).tip("Blur, sharpen, adjust and more"),
        submenu("mnumTransforms", "Transforms", transformsMenu())
            .tip("Distort, crop, flip, resize and rotate"),
        submenu("mnumMetaData", "&Metadata", metadataMenu())
            .tip("Notes inside the file")
            .disabled(),
        submenu("mnuFileSettings", "&Settings", settingsMenu()).tip("Change how the program works"),
        submenu("mnuWindow", "&Window", windowMenu()).tip("Arrange the documents"),
        submenu("mnuHelp", "&Help", helpMenu()).tip("Manual and program information"),
    };
    return menus;
}

} // namespace kvn::shell::menu
