#include "metadata/find_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTextEdit>
#include <QToolButton>
#include <algorithm>

#include "dialogs/look.h"

namespace kvn::metadata {

namespace {

QToolButton* button(const char* name, const char* iconName, const QString& tip, QWidget* parent) {
    auto* made = new QToolButton(parent);
    made->setObjectName(QString::fromLatin1(name));
    made->setIcon(dialogs::icon(QString::fromLatin1(iconName)));
    made->setToolTip(tip);
    made->setAccessibleName(tip);
    made->setFocusPolicy(Qt::TabFocus);
    return made;
}

} // namespace

FindBar::FindBar(QTextEdit& text, QWidget* parent)
    : QFrame(parent), text_(text), txtFind_(new QLineEdit(this)), lblFound_(new QLabel(this)) {
    setObjectName(QStringLiteral("picFind"));
    txtFind_->setObjectName(QStringLiteral("txtFind"));
    txtFind_->setPlaceholderText(QStringLiteral("Find"));
    txtFind_->setAccessibleName(QStringLiteral("Find"));
    txtFind_->setClearButtonEnabled(true);
    auto* previous = button("cmdPrevious", "go-up", QStringLiteral("Previous"), this);
    auto* next = button("cmdNext", "go-down", QStringLiteral("Next"), this);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(4);
    row->addWidget(txtFind_, 1);
    row->addWidget(previous);
    row->addWidget(next);
    row->addWidget(lblFound_);
    connect(txtFind_, &QLineEdit::textChanged, this, &FindBar::search);
    connect(previous, &QToolButton::clicked, this, [this] { step(false); });
    connect(next, &QToolButton::clicked, this, [this] { step(true); });
    connect(&text_, &QTextEdit::textChanged, this, [this] {
        if (isVisible()) search();
    });
    dialogs::applySkin(this, QStringLiteral("Toolbar2"));
    hide();
}

void FindBar::open() {
    QFrame::show();
    txtFind_->setFocus(Qt::ShortcutFocusReason);
    txtFind_->selectAll();
    search();
}

void FindBar::close() {
    hide();
    text_.setExtraSelections({});
    text_.setFocus(Qt::OtherFocusReason);
}

// Marks every place and goes to the first one from where the selection begins.
void FindBar::search() {
    const QString wanted = txtFind_->text();
    QList<QTextEdit::ExtraSelection> places;
    QTextCursor place(text_.document());
    QTextCharFormat format;
    format.setBackground(dialogs::lookColor(QStringLiteral("accentSoft")));
    if (!wanted.isEmpty())
        while (!(place = text_.document()->find(wanted, place)).isNull())
            places.append({place, format});
    text_.setExtraSelections(places);
    lblFound_->setText(wanted.isEmpty()   ? QString()
                       : places.isEmpty() ? QStringLiteral("Not found")
                                          : QStringLiteral("%1 found").arg(places.size()));
    if (places.isEmpty()) return;
    const int from = text_.textCursor().selectionStart();
    const auto next = std::find_if(places.begin(), places.end(), [&](const auto& found) {
        return found.cursor.selectionStart() >= from;
    });
    text_.setTextCursor(next == places.end() ? places.first().cursor : next->cursor);
}

void FindBar::step(bool forward) {
    const QString wanted = txtFind_->text();
    if (wanted.isEmpty() || !isVisible()) return open();
    const auto direction = forward ? QTextDocument::FindFlags() : QTextDocument::FindBackward;
    if (text_.find(wanted, direction)) return;
    QTextCursor end(text_.document());
    if (!forward) end.movePosition(QTextCursor::End);
    const QTextCursor found = text_.document()->find(wanted, end, direction);
    if (!found.isNull()) text_.setTextCursor(found);
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->matches(QKeySequence::Cancel)) return close();
    if (isEnter) return step(!(event->modifiers() & Qt::ShiftModifier));
    QFrame::keyPressEvent(event);
}

} // namespace kvn::metadata
