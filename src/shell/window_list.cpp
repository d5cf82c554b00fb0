#include "shell/window_list.h"

#include <QAction>
#include <QMenu>
#include <QPointer>

#include "document/frmMain.h"
#include "shell/document_windows.h"

namespace kvn::shell {

namespace {

const char* const listed = "windowList"; // marks our items among the menu's

QString caption(int number, QString title) {
    title.replace(u'&', QStringLiteral("&&"));
    const QString key =
        number < 10 ? QStringLiteral("&%1 ").arg(number) : QStringLiteral("%1 ").arg(number);
    return key + title;
}

} // namespace

void fillWindowList(QMenu& menu, DocumentWindows& windows) {
    for (QAction* action : menu.actions())
        if (action->property(listed).toBool()) {
            menu.removeAction(action);
            action->deleteLater(); // it may be the one that was just chosen
        }
    int number = 0;
    for (document::frmMain* form : windows.shown()) {
        if (number == 0) menu.addSeparator()->setProperty(listed, true);
        QAction* action = menu.addAction(caption(++number, form->windowTitle()));
        action->setObjectName(QStringLiteral("mnuWindowList(%1)").arg(number));
        action->setProperty(listed, true);
        action->setCheckable(true);
        action->setChecked(form == windows.ActiveForm());
        action->setStatusTip(QStringLiteral("Bring this document to the front"));
        QObject::connect(action, &QAction::triggered, &windows,
                         [&windows, document = QPointer<document::frmMain>(form)] {
                             if (document) windows.activate(document);
                         });
    }
}

} // namespace kvn::shell
