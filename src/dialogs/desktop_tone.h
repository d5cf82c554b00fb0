// What the desktop says of light and dark: its portal where there is one, else the palette that Qt
// takes from it. It applies nothing.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>

#include "dialogs/look_colors.h"

namespace kvn::dialogs {

class DesktopTone : public QObject {
    Q_OBJECT

  public:
    // Asks the portal without waiting; tone() is the palette's until the answer comes.
    explicit DesktopTone(QObject* parent);

    Tone tone() const;
    // Reads the palette again. The application's own must be out of the way.
    void readPalette();

  signals:
    void changed();

  private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    void askPortal();
    void take(const QVariant& scheme);

    Tone palette_ = Tone::Light;
    uint portal_ = 0; // 0 no wish, 1 dark, 2 light
};

} // namespace kvn::dialogs
