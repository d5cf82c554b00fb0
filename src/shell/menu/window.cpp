#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

// The list of open documents follows below these while the program runs.
constexpr Item items[] = {
    frame("ArrHorizontal", "Tile &Horizontal").tip("Show all documents one below the other"),
    frame("ArrVertival", "Tile &Vertical").tip("Show all documents side by side"),
    frame("Cascade", "&Cascade").tip("Show all documents one behind the other"),
};

} // namespace

std::span<const Item> windowMenu() {
    return items;
}

} // namespace kvn::shell::menu
