#include "shell/pane_keys.h"

#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QShortcut>
#include <algorithm>

namespace kvn::shell {

namespace {

// What gets the focus when the keys come to a part; null if nothing there can have it.
QWidget* entrance(QWidget* part) {
    if (auto* documents = qobject_cast<QMdiArea*>(part)) {
        QMdiSubWindow* active = documents->activeSubWindow();
        return active ? active->widget() : documents;
    }
    QWidget* first = part;
    do {
        if (part->isAncestorOf(first) && first->isVisible() && first->isEnabled() &&
            first->focusPolicy() & Qt::TabFocus)
            return first;
        first = first->nextInFocusChain();
    } while (first != part);
    return nullptr;
}

void goRound(const std::vector<QWidget*>& parts, int step) {
    const QWidget* now = QApplication::focusWidget();
    const auto holds = [now](const QWidget* part) {
        return part == now || part->isAncestorOf(now);
    };
    const auto found = std::find_if(parts.begin(), parts.end(), holds);
    const int count = static_cast<int>(parts.size());
    int place = found == parts.end() ? 0 : static_cast<int>(found - parts.begin());
    for (int tries = 1; tries < count; ++tries) {
        place = (place + step + count) % count;
        QWidget* target = entrance(parts[static_cast<std::size_t>(place)]);
        if (!target) continue;
        target->setFocus(Qt::ShortcutFocusReason);
        return;
    }
}

} // namespace

void installPaneKeys(QMainWindow& frame, QMdiArea& documents, const std::vector<QWidget*>& bars) {
    std::vector<QWidget*> parts{&documents};
    parts.insert(parts.end(), bars.begin(), bars.end());
    const auto onKey = [&frame](const char* key, auto work) {
        auto* shortcut = new QShortcut(QKeySequence(QLatin1String(key)), &frame);
        QObject::connect(shortcut, &QShortcut::activated, &frame, work);
    };
    onKey("F6", [parts] { goRound(parts, 1); });
    onKey("Shift+F6", [parts] { goRound(parts, -1); });
    onKey("F10", [bar = frame.menuBar()] { bar->setActiveAction(bar->actions().constFirst()); });
}

} // namespace kvn::shell
