#include "basic/do_events.h"

#include <QCoreApplication>
#include <QEventLoop>

namespace kvn {

void DoEvents() {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

} // namespace kvn
