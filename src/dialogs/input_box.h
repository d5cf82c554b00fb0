// The window that asks for one line of text. The asking service shows it.
#pragma once

#include <QDialog>

class QLineEdit;

namespace kvn::dialogs {

class InputBox : public QDialog {
    Q_OBJECT

  public:
    // `prompt` may have several lines; its text stands as it is, without markup.
    InputBox(const QString& prompt, const QString& title, const QString& text, QWidget* owner);

    // What the user confirmed; empty after Cancel.
    QString answer() const;

  private:
    QLineEdit* txtInput_;
};

} // namespace kvn::dialogs
