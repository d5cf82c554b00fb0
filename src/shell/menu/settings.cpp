#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item items[] = {
    frame("mnuSettings", 0, "Image &Save Settings").tip("How picture files are written"),
    frame("mnuSettings", 1, "&Alpha Display").tip("What shows behind transparent parts"),
    frame("mnuSettings", 2, "&Dither Error").tip("How far dithering may go"),
    frame("mnuSettings", 3, "Double &Buffer")
        .tip("Whether documents are drawn off the screen first")
        .marked(true),
    frame("mnuAntialias", "Antialias")
        .tip("Whether the active document is shown smoothed when it is shown small")
        .marked(),
};

} // namespace

std::span<const Item> settingsMenu() {
    return items;
}

} // namespace kvn::shell::menu
