#include "shell/menu_tree.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QStatusTipEvent>

#include "dialogs/look.h"
#include "shell/menu/tree.h"
#include "shell/menu_access.h"

namespace kvn::shell {

namespace {

QString text(std::string_view view) {
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QList<QKeySequence> shortcuts(std::string_view keys) {
    QList<QKeySequence> list;
    for (const QString& key : text(keys).split(u' ', Qt::SkipEmptyParts))
        list.append(QKeySequence(key, QKeySequence::PortableText));
    return list;
}

// A preset says no more than its caption: its menu explains it.
QString explanation(const menu::Item& item, std::string_view above) {
    if (!item.hint.empty() || above.empty()) return text(item.hint);
    QString caption = text(item.caption);
    return text(above) + QStringLiteral(": ") +
           caption.replace(QStringLiteral("&&"), QStringLiteral("&"));
}

void explain(QAction& action, const QString& hint, bool available) {
    const QString full = available ? hint : hint + QStringLiteral(" (not available yet)");
    action.setStatusTip(full);
    action.setToolTip(full);
    action.setWhatsThis(full);
}

} // namespace

QString menuObjectName(std::string_view name, int index) {
    return index == menu::single ? text(name) : QStringLiteral("%1(%2)").arg(text(name)).arg(index);
}

MenuTree::MenuTree(QMenuBar& bar, const Available& available) : bar_(bar), available_(available) {
    installMenuAccess();
    for (const menu::Item& item : menu::tree()) {
        QMenu* menu = addMenu(item, {}, bar);
        bar.addMenu(menu);
        addNode(item, menu->menuAction(), nullptr);
    }
}

QMenu* MenuTree::addMenu(const menu::Item& item, std::string_view hint, QWidget& parent) {
    auto* menu = new QMenu(text(item.caption), &parent);
    menu->setObjectName(menuObjectName(item.name, item.index));
    menu->installEventFilter(this);
    menu->setAccessibleName(menuCaption(text(item.caption)));
    if (!item.icon.empty()) menu->setIcon(dialogs::icon(text(item.icon)));
    explain(*menu->menuAction(), explanation(item, hint), true);
    // Qt explains the items of menus that the bar opened, and of no context menu.
    connect(menu, &QMenu::hovered, this,
            [this](QAction* action) { action->showStatusText(bar_.window()); });
    fill(*menu, item.children, item.hint);
    return menu;
}

bool MenuTree::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseMove)
        if (auto* menu = qobject_cast<QMenu*>(watched)) {
            QAction* item = menu->actionAt(static_cast<QMouseEvent*>(event)->position().toPoint());
            if (item && !item->isEnabled()) item->showStatusText(bar_.window());
        }
    return false;
}

void MenuTree::fill(QMenu& menu, std::span<const menu::Item> items, std::string_view hint) {
    for (const menu::Item& item : items) {
        if (item.isSeparator()) {
            addNode(item, menu.addSeparator(), &menu);
        } else if (item.isMenu) {
            QMenu* child = addMenu(item, hint, menu);
            menu.addMenu(child);
            addNode(item, child->menuAction(), &menu);
        } else {
            QAction* action = makeAction(item, hint, menu);
            menu.addAction(action);
            addNode(item, action, &menu);
        }
    }
}

QAction* MenuTree::makeAction(const menu::Item& item, std::string_view hint, QMenu& parent) {
    auto* action = new QAction(text(item.caption), &parent);
    action->setCheckable(item.checkable);
    action->setChecked(item.checked);
    action->setShortcuts(shortcuts(item.shortcut));
    if (!item.icon.empty()) action->setIcon(dialogs::icon(text(item.icon)));
    explain(*action, explanation(item, hint), available_(item));
    return action;
}

MenuTree::Node& MenuTree::addNode(const menu::Item& item, QAction* action, QMenu* parent) {
    nodes_.push_back(std::make_unique<Node>());
    Node& node = *nodes_.back();
    node = {item, action, parent, item.enabled,
            item.isMenu || item.isSeparator() || available_(item)};
    action->setObjectName(menuObjectName(item.name, item.index));
    action->setEnabled(node.enabled && node.available);
    action->setVisible(item.visible);
    byName_.insert({text(item.name), item.index}, &node);
    // A click inverts a check mark before anyone hears of it. The mark is the command's to set.
    connect(action, &QAction::triggered, this, [this, &node] {
        if (node.action->isCheckable()) node.action->setChecked(!node.action->isChecked());
        emit chosen(node.item);
    });
    return node;
}

const MenuTree::Node* MenuTree::find(const QString& name, int index) const {
    return byName_.value({name, index}, nullptr);
}

MenuTree::Node* MenuTree::find(const QString& name, int index) {
    return byName_.value({name, index}, nullptr);
}

QAction* MenuTree::action(const QString& name, int index) const {
    const Node* node = find(name, index);
    return node ? node->action : nullptr;
}

QMenu* MenuTree::menuOf(const QString& name, int index) const {
    const QAction* found = action(name, index);
    return found ? found->menu() : nullptr;
}

void MenuTree::setEnabled(const QString& name, int index, bool on) {
    Node* node = find(name, index);
    if (!node) return;
    node->enabled = on;
    node->action->setEnabled(on && node->available);
}

bool MenuTree::isEnabled(const QString& name, int index) const {
    const Node* node = find(name, index);
    return node && node->enabled;
}

void MenuTree::setAllEnabled(bool on) {
    for (const auto& node : nodes_) {
        node->enabled = on;
        node->action->setEnabled(on && node->available);
    }
}

void MenuTree::setChecked(const QString& name, int index, bool on) {
    Node* node = find(name, index);
    if (!node) return;
    node->action->setCheckable(true);
    node->action->setChecked(on);
}

bool MenuTree::isChecked(const QString& name, int index) const {
    const Node* node = find(name, index);
    return node && node->action->isChecked();
}

void MenuTree::setCaption(const QString& name, int index, const QString& caption) {
    if (Node* node = find(name, index)) node->action->setText(caption);
}

void MenuTree::setVisible(const QString& name, int index, bool on) {
    if (Node* node = find(name, index)) node->action->setVisible(on);
}

void MenuTree::popUp(const QString& name, const QPoint& place) {
    QMenu* menu = menuOf(name);
    if (!menu || !menu->menuAction()->isEnabled()) return;
    const auto silence = [this] {
        QStatusTipEvent nothing{QString()};
        QCoreApplication::sendEvent(bar_.window(), &nothing);
    };
    connect(menu, &QMenu::aboutToHide, this, silence, Qt::SingleShotConnection);
    menu->popup(place);
}

void MenuTree::setDetail(const QString& name, int index, const QString& detail) {
    Node* node = find(name, index);
    if (!node) return;
    const QString hint = explanation(node->item, {});
    explain(*node->action, detail.isEmpty() ? hint : hint + QStringLiteral(": ") + detail,
            node->available);
}

void MenuTree::addToGroup(const QString& name, int index) {
    const Node* model = find(name, 0);
    if (!model || !model->parent) return;
    menu::Item item = model->item;
    item.index = index;
    item.checked = false;
    QAction* action = makeAction(item, {}, *model->parent);
    QAction* before = nullptr; // right behind the group's last item
    const QList<QAction*> actions = model->parent->actions();
    if (const Node* last = find(name, index - 1))
        before = actions.value(actions.indexOf(last->action) + 1, nullptr);
    model->parent->insertAction(before, action);
    addNode(item, action, model->parent);
}

void MenuTree::resizeGroup(const QString& name, int first, int count) {
    for (int index = first; index < first + count; ++index)
        if (!find(name, index)) addToGroup(name, index);
    for (int index = first + count; Node* node = find(name, index); ++index) {
        byName_.remove({name, index});
        delete node->action;
        std::erase_if(nodes_, [&](const auto& entry) { return entry.get() == node; });
    }
}

} // namespace kvn::shell
