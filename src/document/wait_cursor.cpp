#include "document/wait_cursor.h"

#include <QCursor>
#include <QGuiApplication>

namespace kvn::document {

WaitCursor::WaitCursor() {
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}
WaitCursor::~WaitCursor() {
    QGuiApplication::restoreOverrideCursor();
}

} // namespace kvn::document
