// The colours of the look, one table for light and dark, and what is made of it: a palette for the
// widgets and the values for the style sheet.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

namespace kvn::dialogs {

enum class Tone { Light, Dark };

// Invalid if the table has no such name.
QColor toneColor(Tone tone, const QString& name);
QPalette tonePalette(Tone tone);
// `sheet` with every "@name" replaced by its colour, and "@tone" by "light" or "dark".
QString toneSheet(Tone tone, const QString& sheet);

} // namespace kvn::dialogs
