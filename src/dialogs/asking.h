// The one service through which the program asks its user anything. The real one shows Qt's
// windows; tests put a scripted one in its place.
#pragma once

#include <QString>
#include <optional>

#include "engine/file_chooser.h"

class QDialog;
class QWidget;

namespace kvn::dialogs {

enum class Icon { None, Information, Question, Exclamation, Critical };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Answer { Ok, Cancel, Yes, No };

struct Message {
    QString text;
    QString title; // empty: the application's title
    Icon icon = Icon::None;
    Buttons buttons = Buttons::Ok;
    QWidget* owner = nullptr;
};

class Asking : public engine::FileChooser {
  public:
    // Closing the box counts as Cancel where there is one, else as the only answer or No.
    virtual Answer message(const Message& message) = 0;
    // Empty if the user cancelled or emptied the field.
    virtual QString inputBox(const QString& prompt, const QString& title,
                             const QString& defaultText, QWidget* owner) = 0;
    // 24-bit value, red in the low byte; nothing if the user cancelled.
    virtual std::optional<quint32> color(quint32 start, QWidget* owner) = 0;
    // Shows a window of the program until it is hidden or closed.
    virtual void showModal(QDialog& window) = 0;
};

} // namespace kvn::dialogs
