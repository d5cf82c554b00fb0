// A box for a number, with the rules of the parameter dialog: it may stand empty between two key
// presses, but never keeps a text that is no number. The fall-back is the text that it held when
// it received the focus, not the last good keystroke. It knows nothing of ranges.
#pragma once

#include <QLineEdit>

namespace kvn::dialogs {

class NumberBox : public QLineEdit {
    Q_OBJECT

  public:
    // `lastText` is the one fall-back that all boxes of a dialog share; it must outlive the box.
    NumberBox(QString& lastText, QWidget* parent);

  protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void restoreUnlessNumber();
    // Adds `amount` to the number in the box and selects the result.
    void step(double amount);

    QString& lastText_;
    bool holdsFocus_ = false;
    int wheel_ = 0; // eighths of a degree not yet spent on a step
};

} // namespace kvn::dialogs
