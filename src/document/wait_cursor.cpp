#include "document/wait_cursor.h"

#include <QGuiApplication>

namespace kvn::document {

WaitCursor::WaitCursor() {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}
WaitCursor::~WaitCursor() {
    QGuiApplication::restoreOverrideCursor();
}

} // namespace kvn::document
