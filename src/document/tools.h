// How a tool of the palette shows on a document: the canvas's gesture mode and its pointer.
#pragma once

#include <QPixmap>

namespace kvn::document {

// The canvas's gesture of dragging a line.
inline constexpr int lineMode = 7;

struct ToolLook {
    int id;
    int mode;         // the canvas's gesture
    const char* icon; // a picture beside the arrow of a pointer of its own; null for the plain one
};

// Null for an id that has nothing of its own: mode 0 and the plain pointer.
const ToolLook* toolLook(int id);

// The arrow with the picture of a tool beside it, or the arrow alone. Hot spot top left.
QPixmap pointerPicture(const QString& icon);

} // namespace kvn::document
