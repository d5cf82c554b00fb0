#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

// The zoom keys are the document's: it takes them before any menu could.
constexpr Item items[] = {
    active("mnuZoomIn", "Zoom In        Ctrl++")
        .tip("Show the picture larger by a quarter")
        .picture("zoom-in"),
    active("mnuZoomOut", "Zoom Out     Ctrl+-")
        .tip("Show the picture smaller by a quarter")
        .picture("zoom-out"),
    line("mnuViewDash", 0),
    active("mnuZoomType", 1, "Best Fit")
        .tip("Show the whole picture in its window")
        .picture("zoom-fit-best"),
    active("mnuZoomType", 2, "Fit to Width")
        .tip("Show the picture as wide as its window")
        .picture("zoom-fit-width"),
    active("mnuZoomType", 3, "Fit to Height")
        .tip("Show the picture as high as its window")
        .picture("zoom-fit-height"),
    line("mnuViewDash", 1),
    frame("mnuZoomWindow", "Zoom Window")
        .tip("Show or hide the magnifier under the pointer")
        .marked(),
    active("mnuDemosHistogram", "Histogram Window")
        .tip("Show or hide the histogram of the picture")
        .marked(),
};

} // namespace

std::span<const Item> viewMenu() {
    return items;
}

} // namespace kvn::shell::menu
