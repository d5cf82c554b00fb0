#include "shell/menu/tree.h"

namespace kvn::shell::menu {

namespace {

constexpr Item items[] = {
    active("mnuUndo", "&Undo").tip("Take back the last step").picture("edit-undo").keys("Ctrl+Z"),
    active("mnuRedo", "&Redo")
        .tip("Take the last undo back")
        .picture("edit-redo")
        .keys("Ctrl+Y Ctrl+Shift+Z"),
    line("mnuEditDash", 0),
    frame("mnuCut", "Cut")
        .tip("Copy the selection to the clipboard and clear it")
        .picture("edit-cut")
        .keys("Ctrl+X"),
    active("mnuCopy", "&Copy")
        .tip("Copy the selection to the clipboard")
        .picture("edit-copy")
        .keys("Ctrl+C"),
    active("mnuPaste", "&Paste")
        .tip("Bring in the picture on the clipboard")
        .picture("edit-paste")
        .keys("Ctrl+V"),
    active("mnuDelete", "&Delete").tip("Clear the selection").picture("edit-delete").keys("Del"),
    line("mnuEditDash", 1),
    active("mnuSelectAll", "Select All")
        .tip("Select the whole picture")
        .picture("edit-select-all")
        .keys("Ctrl+A"),
};

} // namespace

std::span<const Item> editMenu() {
    return items;
}

} // namespace kvn::shell::menu
