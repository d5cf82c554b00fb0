#include "dialogs/number_box.h"

#include <QFocusEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QWheelEvent>
#include <cmath>

#include "basic/numbers.h"

namespace kvn::dialogs {

namespace {

bool isNumber(const QString& text) {
    return isNumericText(text.toStdString());
}

// Another window in front, or the box's own menu, is no loss of the focus: the user comes back to
// the same edit.
bool staysInDialog(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason ||
           reason == Qt::MenuBarFocusReason;
}

// Keys that the dialog takes before the box sees them.
bool belongsToDialog(int key) {
    switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

double stepOfKey(int key) {
    switch (key) {
    case Qt::Key_Up:
        return 1;
    case Qt::Key_Down:
        return -1;
    case Qt::Key_PageUp:
        return 10;
    case Qt::Key_PageDown:
        return -10;
    default:
        return 0;
    }
}

} // namespace

NumberBox::NumberBox(QString& lastText, QWidget* parent) : QLineEdit(parent), lastText_(lastText) {}

void NumberBox::restoreUnlessNumber() {
    if (!isNumber(text())) setText(lastText_);
}

void NumberBox::step(double amount) {
    restoreUnlessNumber();
    const double value = numericPrefix(text().toStdString()) + amount;
    if (!isNumber(text()) || !std::isfinite(value)) return;
    setText(QString::fromStdString(numberText(value)));
    selectAll();
}

void NumberBox::focusInEvent(QFocusEvent* event) {
    if (!holdsFocus_ || !staysInDialog(event->reason())) {
        lastText_ = text();
        wheel_ = 0;
    }
    holdsFocus_ = true;
    QLineEdit::focusInEvent(event);
}

void NumberBox::focusOutEvent(QFocusEvent* event) {
    if (!staysInDialog(event->reason())) {
        holdsFocus_ = false;
        restoreUnlessNumber();
    }
    QLineEdit::focusOutEvent(event);
}

void NumberBox::keyPressEvent(QKeyEvent* event) {
    if (!belongsToDialog(event->key())) {
        restoreUnlessNumber();
        const double amount =
            event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier
                ? stepOfKey(event->key())
                : 0;
        if (amount != 0) {
            step(amount);
            return;
        }
    }
    QLineEdit::keyPressEvent(event);
}

void NumberBox::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat() && !text().isEmpty()) restoreUnlessNumber();
    QLineEdit::keyReleaseEvent(event);
}

// Composed text arrives without key events of its own.
void NumberBox::inputMethodEvent(QInputMethodEvent* event) {
    const bool commits = !event->commitString().isEmpty();
    if (commits) restoreUnlessNumber();
    QLineEdit::inputMethodEvent(event);
    if (commits && !text().isEmpty()) restoreUnlessNumber();
}

// Only a box in use turns with the wheel; over any other the wheel scrolls the dialog.
void NumberBox::wheelEvent(QWheelEvent* event) {
    if (!hasFocus()) {
        event->ignore();
        return;
    }
    wheel_ += event->angleDelta().y();
    const int notches = wheel_ / QWheelEvent::DefaultDeltasPerStep;
    wheel_ -= notches * QWheelEvent::DefaultDeltasPerStep;
    if (notches != 0) step(notches);
    event->accept();
}

} // namespace kvn::dialogs
