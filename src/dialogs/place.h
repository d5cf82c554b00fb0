// Where a window of the program may stand on the screen.
#pragma once

#include <QSize>

class QWidget;

namespace kvn::dialogs {

// Room for the inside of a window on its owner's screen, title bar and panels left out.
QSize availableSize(const QWidget& window);

// Moves a window over the middle of its owner, or of the screen if it has none, but never beyond
// the screen's edges.
void centreOnOwner(QWidget& window);

} // namespace kvn::dialogs
