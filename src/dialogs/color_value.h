// The program's 24-bit colour values (red in the low byte, then green, then blue) as Qt colours.
#pragma once

#include <QColor>

namespace kvn::dialogs {

inline QColor fromValue(quint32 value) {
    return QColor(static_cast<int>(value & 0xFF), static_cast<int>(value >> 8 & 0xFF),
                  static_cast<int>(value >> 16 & 0xFF));
}

inline quint32 toValue(const QColor& color) {
    return static_cast<quint32>(color.red()) | static_cast<quint32>(color.green()) << 8 |
           static_cast<quint32>(color.blue()) << 16;
}

} // namespace kvn::dialogs
