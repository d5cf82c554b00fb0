// The whole menu tree of the frame, top menus in the order of the bar.
#pragma once

#include "shell/menu/item.h"

namespace kvn::shell::menu {

std::span<const Item> tree();

// One function a top menu, each in its own file.
std::span<const Item> fileMenu();
std::span<const Item> editMenu();
std::span<const Item> viewMenu();
std::span<const Item> imagesMenu();
std::span<const Item> channelsMenu();
std::span<const Item> drawMenu();
std::span<const Item> effectsMenu();
std::span<const Item> filtersMenu();
std::span<const Item> transformsMenu();
std::span<const Item> metadataMenu();
std::span<const Item> settingsMenu();
std::span<const Item> windowMenu();
std::span<const Item> helpMenu();

} // namespace kvn::shell::menu
