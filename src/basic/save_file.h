// The end of a file that is written beside an old one.
#pragma once

class QSaveFile;

namespace kvn {

// Puts the file in the place of the old one if all of it could be written; otherwise the old one
// stays. QSaveFile::commit() alone does not notice when the last bytes find a full disk, and would
// put an empty file there.
bool commitWhole(QSaveFile& file);

} // namespace kvn
