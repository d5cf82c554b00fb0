#include "metadata/tag_box.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QSyntaxHighlighter>
#include <QTextBlock>
#include <memory>

#include "dialogs/look.h"

namespace kvn::metadata {

// Draws the name of each line in the colour of links, the sign behind it dimly.
class TagColors : public QSyntaxHighlighter {
  public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

  protected:
    void highlightBlock(const QString& line) override {
        const QString sign = QStringLiteral(" = ");
        const auto length = static_cast<int>(line.indexOf(sign));
        if (length < 0) return;
        setFormat(0, length, dialogs::lookColor(QStringLiteral("link")));
        setFormat(length, static_cast<int>(sign.size()), dialogs::lookColor(QStringLiteral("dim")));
    }
};

namespace {

constexpr qreal hang = 24;   // pixels that the further lines of a value stand further right
constexpr qreal between = 3; // pixels between two tags
constexpr qreal edge = 10;   // pixels around the text

} // namespace

TagBox::TagBox(QWidget* parent) : QTextEdit(parent), colors_(new TagColors(document())) {
    setObjectName(QStringLiteral("txtExif"));
    setAccessibleName(QStringLiteral("Tags"));
    setFrameShape(QFrame::NoFrame);
    setUndoRedoEnabled(false);
    setReadOnly(true);
    // The cursor shows, so that the text can be walked and selected by keys.
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    document()->setDocumentMargin(edge);
}

void TagBox::setLines(const QString& text) {
    setPlainText(text);
    QTextBlockFormat format;
    format.setLeftMargin(hang);
    format.setTextIndent(-hang);
    format.setBottomMargin(between);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.setBlockFormat(format);
    moveCursor(QTextCursor::Start);
}

void TagBox::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Copy) && !textCursor().hasSelection()) {
        QGuiApplication::clipboard()->setText(textCursor().block().text());
        return;
    }
    // The window has a use for these.
    if (event->matches(QKeySequence::Cancel)) return event->ignore();
    QTextEdit::keyPressEvent(event);
}

void TagBox::contextMenuEvent(QContextMenuEvent* event) {
    const std::unique_ptr<QMenu> menu(createStandardContextMenu(event->pos()));
    menu->addSeparator();
    QAction* find = menu->addAction(QStringLiteral("&Find..."));
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, this, &TagBox::findRequested);
    menu->exec(event->globalPos());
}

void TagBox::changeEvent(QEvent* event) {
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) colors_->rehighlight();
}

} // namespace kvn::metadata
