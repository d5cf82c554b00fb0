// The look of the program: a quiet, flat style in light and dark, three named skins, icons and
// the pictures the program carries. Everything here needs a QApplication.
#pragma once

#include <QByteArray>
#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

class QApplication;
class QWidget;

namespace kvn::dialogs {

// Sets style, palette, style sheet, icon fallback and application icon, and keeps them in step
// with the desktop's light or dark setting while the program runs. Call once, before any window.
// The environment variable KESTRELVANE_LOOK ("light" or "dark") overrides the desktop.
void installLook(QApplication& app);

// Which of the two stands now. Every widget gets a PaletteChange event when that changes.
bool isDarkLook();

// Gives a window or panel one of the skins "" (the default), "Side Toolbar", "Toolbar",
// "Toolbar2". An unknown name is the default. May be called again at any time.
void applySkin(QWidget* widget, const QString& skin);

// One of the colours of the table in look_colors.cpp, by its name ("accent", "workspace"), as the
// look stands now. Invalid if there is none.
QColor lookColor(const QString& name);

// An icon by its freedesktop name ("document-open") or one of ours ("tool-hand"): from the
// desktop's theme, else Breeze, else the program's own drawings, which take the colour of the
// text. Null if none has it.
QIcon icon(const QString& name);

// The program's own icon, all sizes.
QIcon applicationIcon();

// The picture in a splash file (a picture file of any kind under any name), 640 by 400
// device-independent pixels, crisp at the given ratio. Null if the file is missing or no picture.
QPixmap splashPicture(const QString& path, qreal devicePixelRatio);

// A picture resource of the program ("BACKGROUND"), as PNG bytes. Empty if there is none.
QByteArray customResource(const QString& name);

} // namespace kvn::dialogs
