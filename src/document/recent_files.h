// The desktop's list of recently used files, which its file dialogs and start menus show.
#pragma once

#include <QString>

class QDateTime;

namespace kvn::document {

// Enters a file that was opened or saved, from a thread of its own. Whatever is wrong with the
// list, it stays as it is and nothing is said.
void noteRecentFile(const QString& path);

// The work behind it: enters `path` into the XBEL file `list`, keeping all other entries and what
// other programs say of this one. False if the list was left alone.
bool enterRecentFile(const QString& list, const QString& path, const QDateTime& now);

} // namespace kvn::document
