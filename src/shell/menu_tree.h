// The menu bar made from the menu tables, and the state of its items by name and index. It knows
// neither what a command does nor when an item may be used; see menu_rules.h and
// command_router.h for that.
#pragma once

#include <QHash>
#include <QObject>
#include <QPair>
#include <functional>
#include <memory>
#include <vector>

#include "document/roles.h"
#include "shell/menu/item.h"

class QAction;
class QMenu;
class QMenuBar;
class QWidget;

namespace kvn::shell {

class MenuTree : public QObject, public document::MenuState {
    Q_OBJECT

  public:
    using Available = std::function<bool(const menu::Item&)>;

    // Fills the bar. Items that `available` does not know stay grey whatever the rules say.
    MenuTree(QMenuBar& bar, const Available& available);

    void setEnabled(const QString& name, int index, bool on) override;
    bool isEnabled(const QString& name, int index) const override;
    void setChecked(const QString& name, int index, bool on) override;
    bool isChecked(const QString& name, int index) const override;
    void setCaption(const QString& name, int index, const QString& caption) override;
    void setVisible(const QString& name, int index, bool on) override;
    void resizeGroup(const QString& name, int first, int count) override;
    void popUp(const QString& name, const QPoint& place) override;

    void setAllEnabled(bool on);
    // What an item's explanation ends with, such as the step that Undo takes back.
    void setDetail(const QString& name, int index, const QString& detail);
    // Null for an item that does not exist.
    QAction* action(const QString& name, int index = menu::single) const;
    QMenu* menuOf(const QString& name, int index = menu::single) const;

  signals:
    // The user chose an item. Its check mark is as it was before the click.
    void chosen(const menu::Item& item);

  protected:
    // Explains also the grey item under the pointer, which Qt passes over.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Node {
        menu::Item item;
        QAction* action = nullptr;
        QMenu* parent = nullptr;
        bool enabled = true; // what the rules say
        bool available = true;
    };
    using Key = QPair<QString, int>;

    void fill(QMenu& menu, std::span<const menu::Item> items, std::string_view hint);
    QMenu* addMenu(const menu::Item& item, std::string_view hint, QWidget& parent);
    Node& addNode(const menu::Item& item, QAction* action, QMenu* parent);
    QAction* makeAction(const menu::Item& item, std::string_view hint, QMenu& parent);
    void addToGroup(const QString& name, int index);
    const Node* find(const QString& name, int index) const;
    Node* find(const QString& name, int index);

    QMenuBar& bar_;
    Available available_;
    std::vector<std::unique_ptr<Node>> nodes_;
    QHash<Key, Node*> byName_;
};

// The object name of an item: its name, with the index behind it in a group.
QString menuObjectName(std::string_view name, int index);

} // namespace kvn::shell
