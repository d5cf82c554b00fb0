#include "shell/application.h"

#include <QAbstractSpinBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <clocale>

namespace kvn::shell {

namespace {

bool isTextField(const QObject* object) {
    return qobject_cast<const QLineEdit*>(object) || qobject_cast<const QTextEdit*>(object) ||
           qobject_cast<const QPlainTextEdit*>(object) ||
           qobject_cast<const QAbstractSpinBox*>(object);
}

// Keys that the Edit menu has too.
bool isEditingKey(const QKeyEvent& event) {
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (modifiers == Qt::NoModifier) return event.key() == Qt::Key_Delete;
    if (modifiers != Qt::ControlModifier) return false;
    switch (event.key()) {
    case Qt::Key_X:
    case Qt::Key_C:
    case Qt::Key_V:
    case Qt::Key_Z:
    case Qt::Key_Y:
    case Qt::Key_A:
        return true;
    default:
        return false;
    }
}

} // namespace

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {
    // Numbers in files are written with a point, whatever the desktop's language.
    std::setlocale(LC_NUMERIC, "C");
}

bool Application::notify(QObject* receiver, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && isTextField(receiver) &&
        isEditingKey(static_cast<const QKeyEvent&>(*event))) {
        event->accept();
        return true;
    }
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        failed(std::current_exception());
        return false;
    }
}

void Application::failed(std::exception_ptr failure) {
    if (reporting_ || !report_) return;
    reporting_ = true;
    QMetaObject::invokeMethod(
        this,
        [this, failure] {
            report_(failure);
            reporting_ = false;
        },
        Qt::QueuedConnection);
}

} // namespace kvn::shell
