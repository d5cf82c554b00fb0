// The keys that move between the parts of the frame. A document window keeps Tab to itself, so
// without them no key would reach the tools and the colours.
#pragma once

#include <vector>

class QMainWindow;
class QMdiArea;
class QWidget;

namespace kvn::shell {

// F6 and Shift+F6 go round from the documents through `bars`; F10 opens the first menu.
void installPaneKeys(QMainWindow& frame, QMdiArea& documents, const std::vector<QWidget*>& bars);

} // namespace kvn::shell
