#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item items[] = {
    frame("mnuAbout", "&About").tip("About this program").picture("help-about"),
    frame("mnuIndex", "Help &Index").tip("Open the manual").picture("help-contents").keys("F1"),
    frame("mnuUpdate", "&Check Update...").tip("Look for a newer version"),
};

} // namespace

std::span<const Item> helpMenu() {
    return items;
}

} // namespace kvn::shell::menu
