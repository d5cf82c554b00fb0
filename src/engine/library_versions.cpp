#include "engine/library_versions.h"

#include "imaging/library_versions.h"

namespace kvn::engine {

QList<LibraryVersion> libraryVersions() {
    QList<LibraryVersion> list;
    for (const auto& [name, version] : imaging::libraryVersions())
        list.append({QString::fromStdString(name), QString::fromStdString(version)});
    return list;
}

} // namespace kvn::engine
