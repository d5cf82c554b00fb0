#include "dialogs/qt_asking.h"

#include <QColorDialog>
#include <QEventLoop>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPointer>
#include <array>

#include "dialogs/color_value.h"
#include "dialogs/file_window.h"
#include "dialogs/input_box.h"
#include "dialogs/look.h"

namespace kvn::dialogs {

namespace {

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton first; // answers Enter
    QMessageBox::StandardButton escape;
};

// In the order of Buttons. The first button is the default one; closing means what costs least.
const std::array<ButtonSet, 4> buttonSets = {{
    {QMessageBox::Ok, QMessageBox::Ok, QMessageBox::Ok},
    {QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Ok, QMessageBox::Cancel},
    {QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes, QMessageBox::No},
    {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes,
     QMessageBox::Cancel},
}};

// In the order of Icon.
constexpr std::array<QMessageBox::Icon, 5> icons = {QMessageBox::NoIcon, QMessageBox::Information,
                                                    QMessageBox::Question, QMessageBox::Warning,
                                                    QMessageBox::Critical};

Answer answerOf(QMessageBox::StandardButton button) {
    switch (button) {
    case QMessageBox::Ok:
        return Answer::Ok;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

// Ends a loop when a window goes, in whatever way.
class WindowEnd : public QObject {
  public:
    WindowEnd(QWidget& window, QEventLoop& loop) : loop_(loop) {
        window.installEventFilter(this);
        connect(&window, &QObject::destroyed, &loop, &QEventLoop::quit);
    }

  protected:
    bool eventFilter(QObject*, QEvent* event) override {
        // A spontaneous hide is the window manager's: the window is only minimised.
        if (event->type() == QEvent::Hide && !event->spontaneous()) loop_.quit();
        return false;
    }

  private:
    QEventLoop& loop_;
};

} // namespace

QString QtAsking::applicationTitle() const {
    return title_.isEmpty() ? QGuiApplication::applicationDisplayName() : title_;
}

Answer QtAsking::message(const Message& message) {
    const ButtonSet& set = buttonSets[static_cast<std::size_t>(message.buttons)];
    QMessageBox box(icons[static_cast<std::size_t>(message.icon)],
                    message.title.isEmpty() ? applicationTitle() : message.title, message.text,
                    set.buttons, message.owner);
    box.setObjectName(QStringLiteral("MessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    box.setDefaultButton(set.first);
    box.setEscapeButton(set.escape);
    applySkin(&box, QString());
    showModal(box);
    const QAbstractButton* clicked = box.clickedButton();
    return answerOf(clicked ? box.standardButton(box.clickedButton()) : set.escape);
}

QString QtAsking::inputBox(const QString& prompt, const QString& title, const QString& defaultText,
                           QWidget* owner) {
    InputBox box(prompt, title.isEmpty() ? applicationTitle() : title, defaultText, owner);
    showModal(box);
    return box.answer();
}

std::optional<quint32> QtAsking::color(quint32 start, QWidget* owner) {
    QColorDialog dialog(fromValue(start), owner);
    dialog.setObjectName(QStringLiteral("ColorDialog"));
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    dialog.setWindowTitle(QStringLiteral("Color"));
    applySkin(&dialog, QString());
    showModal(dialog);
    if (dialog.result() != QDialog::Accepted) return std::nullopt;
    return toValue(dialog.selectedColor());
}

void QtAsking::showModal(QDialog& window) {
    const QPointer<QDialog> alive(&window);
    const Qt::WindowModality before = window.windowModality();
    QEventLoop loop;
    const WindowEnd end(window, loop);
    window.setWindowModality(Qt::ApplicationModal);
    window.setResult(QDialog::Rejected);
    window.show();
    if (alive && window.isVisible()) loop.exec(QEventLoop::DialogExec);
    if (alive) window.setWindowModality(before);
}

engine::FileAnswer QtAsking::chooseFile(const engine::FileRequest& request) {
    FileWindow window(request, folder_);
    showModal(window);
    const engine::FileAnswer answer = window.answer();
    if (answer.accepted) folder_ = QFileInfo(answer.path).absolutePath();
    return answer;
}

} // namespace kvn::dialogs
