#include "shell/menu_access.h"

#include <QAccessible>
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTimer>
#include <QWindow>

namespace kvn::shell {

namespace {

class ItemAccess : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    ItemAccess(QAction* action, QWidget* owner) : action_(action), owner_(owner) {}

    bool isValid() const override { return owner_ && action_; }
    QObject* object() const override { return action_; }
    QWindow* window() const override { return owner_ ? owner_->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(owner_);
    }
    QAccessibleInterface* child(int index) const override {
        return index == 0 && action_->menu()
                   ? QAccessible::queryAccessibleInterface(action_->menu())
                   : nullptr;
    }
    int childCount() const override { return action_->menu() ? 1 : 0; }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return child && action_->menu() && child->object() == action_->menu() ? 0 : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        QAccessibleInterface* menu = child(0);
        return menu && menu->rect().contains(x, y) ? menu : nullptr;
    }
    QAccessible::Role role() const override {
        return action_->isSeparator() ? QAccessible::Separator : QAccessible::MenuItem;
    }
    void setText(QAccessible::Text, const QString&) override {}
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QRect rect() const override;
    QAccessible::State state() const override;
    QString text(QAccessible::Text kind) const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& name) const override;

  private:
    // The item under the pointer or the arrow keys.
    bool isCurrent() const {
        if (const auto* menu = qobject_cast<QMenu*>(owner_.data()))
            return menu->activeAction() == action_;
        return static_cast<QMenuBar*>(owner_.data())->activeAction() == action_;
    }

    QAction* action_; // goes before this, which the cache then deletes
    QPointer<QWidget> owner_;
};

QRect ItemAccess::rect() const {
    if (!owner_) return {};
    const auto* menu = qobject_cast<QMenu*>(owner_);
    const QRect inside = menu ? menu->actionGeometry(action_)
                              : static_cast<QMenuBar*>(owner_.data())->actionGeometry(action_);
    return inside.translated(owner_->mapToGlobal(QPoint()));
}

QAccessible::State ItemAccess::state() const {
    QAccessible::State state;
    if (!owner_) return state;
    state.invisible = !owner_->isVisible() || !action_->isVisible();
    state.disabled = action_->isSeparator() || !action_->isEnabled();
    state.checkable = action_->isCheckable();
    state.checked = action_->isChecked();
    state.focusable = !state.disabled;
    state.focused = isCurrent();
    state.hasPopup = action_->menu() != nullptr;
    return state;
}

QString ItemAccess::text(QAccessible::Text kind) const {
    switch (kind) {
    case QAccessible::Name:
        return menuCaption(action_->text());
    case QAccessible::Description:
    case QAccessible::Help:
        return action_->statusTip();
    case QAccessible::Accelerator:
        return action_->shortcut().toString(QKeySequence::NativeText);
    default:
        return {};
    }
}

QStringList ItemAccess::actionNames() const {
    if (action_->isSeparator()) return {};
    return {action_->menu() ? showMenuAction() : pressAction()};
}

// A command may open a window and wait for its end: whoever asked from outside does not.
void ItemAccess::doAction(const QString& name) {
    if (!action_->isEnabled() || !owner_) return;
    if (name == pressAction()) QTimer::singleShot(0, action_, &QAction::trigger);
    if (name != showMenuAction()) return;
    if (auto* bar = qobject_cast<QMenuBar*>(owner_))
        bar->setActiveAction(action_);
    else if (auto* menu = qobject_cast<QMenu*>(owner_))
        menu->setActiveAction(action_);
}

QStringList ItemAccess::keyBindingsForAction(const QString& name) const {
    QStringList keys;
    if (actionNames().contains(name))
        for (const QKeySequence& key : action_->shortcuts())
            keys += key.toString(QKeySequence::NativeText);
    return keys;
}

QAccessibleInterface* itemAccess(const QString&, QObject* object) {
    auto* action = qobject_cast<QAction*>(object);
    if (!action) return nullptr;
    for (QObject* owner : action->associatedObjects())
        if (qobject_cast<QMenu*>(owner) || qobject_cast<QMenuBar*>(owner))
            return new ItemAccess(action, static_cast<QWidget*>(owner));
    return nullptr;
}

} // namespace

QString menuCaption(QString caption) {
    caption.replace(QStringLiteral("&&"), QString(QChar(1)));
    caption.remove(u'&');
    return caption.replace(QChar(1), u'&');
}

void installMenuAccess() {
    static const bool once = [] {
        QAccessible::installFactory(itemAccess);
        return true;
    }();
    Q_UNUSED(once);
}

} // namespace kvn::shell
