#include "basic/text.h"

namespace kvn {

QString padRight(const QString& text, int width) {
    return text.leftJustified(width, u' ');
}

QString fileNameOf(const QString& path) {
    return path.mid(path.lastIndexOf(u'/') + 1);
}

bool isNoUndo(const QString& label) {
    return label.compare(QLatin1String("no undo"), Qt::CaseInsensitive) == 0;
}

} // namespace kvn
