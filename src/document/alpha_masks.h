// The list of alpha masks in the menus: the pictures in a folder beside the program.
#pragma once

#include <QString>

namespace kvn::document {

class MenuState;
struct ProgramState;

QString alphaMaskFolder(const ProgramState& state);

// One menu item for each file that the engine takes for a picture, sorted by name. The menu shows
// only if there is one. May be called again: the list is set anew.
void LoadAlphaMaskList(MenuState& menus, const QString& folder);

} // namespace kvn::document
