// The list of open documents at the end of the Window menu.
#pragma once

class QMenu;

namespace kvn::shell {

class DocumentWindows;

// Builds the list anew; the active document is checked.
void fillWindowList(QMenu& menu, DocumentWindows& windows);

} // namespace kvn::shell
