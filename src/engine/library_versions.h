// The libraries that the engine works with, for bug reports.
#pragma once

#include <QList>
#include <QString>

namespace kvn::engine {

struct LibraryVersion {
    QString name;
    QString version;
};

QList<LibraryVersion> libraryVersions();

} // namespace kvn::engine
