// The file types a user may choose: dialog filters, and which row of the save dialog stands for
// which type code of the engine. The codecs themselves are the engine's.
#pragma once

#include <QString>

namespace kvn::document {

// Display text and pattern in turn, separated by '|'.
QString openFilter();
QString saveFilter();
QString tiffFilter();

struct FileTypeRow {
    int code;              // 0: no type
    const char* extension; // without the dot
};

// The type behind a row of the save filter, from 1. Any other row gives code 0 and no extension.
FileTypeRow FileTypeOfIndex(int row);

// The row that stands for the type of a loaded file; 0 if none does.
int rowOfFileType(int code);

} // namespace kvn::document
