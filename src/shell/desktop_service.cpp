#include "shell/desktop_service.h"

#include <QDBusConnection>
#include <QFileInfo>
#include <QUrl>

namespace kvn::shell {

namespace {

// As the desktop entry and its service file name it.
const char* const busName = "org.kestrelvane.kestrelvane";
const char* const busPath = "/org/kestrelvane/kestrelvane";

// Asking for a bus where none runs would try to start one.
bool isBusThere() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFileInfo::exists(folder + QStringLiteral("/bus"));
}

} // namespace

void DesktopService::start() {
    if (!isBusThere()) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.registerObject(QString::fromLatin1(busPath), this, QDBusConnection::ExportScriptableSlots);
    bus.registerService(QString::fromLatin1(busName));
}

void DesktopService::Activate(const QVariantMap&) {
    emit activated();
}

void DesktopService::Open(const QStringList& uris, const QVariantMap&) {
    QStringList paths;
    for (const QString& uri : uris)
        if (const QUrl url(uri); url.isLocalFile()) paths.append(url.toLocalFile());
    emit activated();
    if (!paths.isEmpty()) emit openRequested(paths);
}

// The program offers none of its own.
void DesktopService::ActivateAction(const QString&, const QVariantList&, const QVariantMap&) {
    emit activated();
}

} // namespace kvn::shell
