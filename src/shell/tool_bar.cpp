#include "shell/tool_bar.h"

#include <QToolButton>

#include "dialogs/look.h"
#include "shell/tool_table.h"

namespace kvn::shell {

namespace {

constexpr int buttonSize = 34; // pixels, a comfortable target
constexpr int iconSize = 22;
constexpr int margin = 4;
constexpr int gap = 10;
constexpr int viewTools = 5; // the first tools of the table look, the others draw

int rows(int count, int columns) {
    return (count + columns - 1) / columns;
}

} // namespace

ToolBar::ToolBar(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("LeftBar"));
    setAccessibleName(QStringLiteral("Tools"));
    bars_.push_back(makeBar("asxBars1", "View tools", 0, viewTools, 0));
    bars_.push_back(makeBar("asxBars2", "Drawing tools", viewTools,
                            static_cast<int>(tools().size()) - viewTools, gap));
    arrange();
}

ToolBar::Bar ToolBar::makeBar(const char* name, const char* title, int first, int count,
                              int gapBefore) {
    Bar bar{new QFrame(this), {}, gapBefore};
    bar.frame->setObjectName(QString::fromLatin1(name));
    bar.frame->setAccessibleName(QString::fromLatin1(title));
    for (const Tool& tool :
         tools().subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(count))) {
        auto* button = new QToolButton(bar.frame);
        button->setObjectName(QStringLiteral("cmd(%1)").arg(tool.id));
        button->setText(QString::fromLatin1(tool.tip));
        button->setAccessibleName(QString::fromLatin1(tool.tip));
        button->setToolTip(QString::fromLatin1(tool.tip));
        button->setStatusTip(QString::fromLatin1(tool.hint));
        button->setAccessibleDescription(QString::fromLatin1(tool.hint));
        button->setIcon(dialogs::icon(QString::fromLatin1(tool.icon)));
        button->setIconSize({iconSize, iconSize});
        button->setAutoRaise(true);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the keys with the document
        // A click presses nothing by itself: the frame says which button is down.
        connect(button, &QToolButton::clicked, this, [this, button, id = tool.id] {
            button->setChecked(!button->isChecked());
            emit toolClicked(id);
        });
        cmd_.insert(tool.id, button);
        bar.buttons.push_back(button);
    }
    return bar;
}

void ToolBar::setPressed(int tool, bool pressed) {
    if (QToolButton* button = cmd_.value(tool)) button->setChecked(pressed);
}

bool ToolBar::isPressed(int tool) const {
    const QToolButton* button = cmd_.value(tool);
    return button && button->isChecked();
}

int ToolBar::heightWith(int columns) const {
    int height = 2 * margin;
    for (const Bar& bar : bars_)
        height += bar.gapBefore + rows(static_cast<int>(bar.buttons.size()), columns) * buttonSize;
    return height;
}

// As few columns as show every button: a low screen gets two or more.
int ToolBar::columnsFor(int height) const {
    int columns = 1;
    while (columns < 4 && heightWith(columns) > height)
        ++columns;
    return columns;
}

QSize ToolBar::sizeHint() const {
    return {columnsFor(height()) * buttonSize + 2 * margin, heightWith(1)};
}

void ToolBar::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    arrange();
}

void ToolBar::arrange() {
    const int columns = columnsFor(height());
    int top = margin;
    for (const Bar& bar : bars_) {
        top += bar.gapBefore;
        const int count = static_cast<int>(bar.buttons.size());
        bar.frame->setGeometry(margin, top, columns * buttonSize,
                               rows(count, columns) * buttonSize);
        for (int i = 0; i < count; ++i)
            bar.buttons[static_cast<std::size_t>(i)]->setGeometry(
                i % columns * buttonSize, i / columns * buttonSize, buttonSize, buttonSize);
        top += bar.frame->height();
    }
    setFixedWidth(columns * buttonSize + 2 * margin);
}

} // namespace kvn::shell
