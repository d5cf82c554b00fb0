// How a file manager hands files to the program: over the desktop's message bus, since nothing on
// the command line is read. The first running program takes the calls, also those that were made
// before it was ready; without a bus there is no such service, and nothing is missing otherwise.
#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace kvn::shell {

class DesktopService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

  public:
    // Takes calls from now on. Waits for no answer of a bus that is not there.
    void start();

  signals:
    void activated();
    void openRequested(const QStringList& paths);

  public slots:
    // The interface of the desktop. `platformData` carries start-up notes that no one needs here.
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
    Q_SCRIPTABLE void ActivateAction(const QString& name, const QVariantList& parameters,
                                     const QVariantMap& platformData);
};

} // namespace kvn::shell
