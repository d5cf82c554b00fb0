// Small text helpers that several windows share.
#pragma once

#include <QString>

namespace kvn {

// Appends blanks until the text has `width` characters; a longer text stays as it is.
QString padRight(const QString& text, int width);

// The part of a path behind its last separator.
QString fileNameOf(const QString& path);

// True for "no undo" in any mixture of cases.
bool isNoUndo(const QString& label);

} // namespace kvn
