#include "metadata/marker_list.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include "dialogs/look.h"

namespace kvn::metadata {

namespace {

constexpr int hintRole = Qt::UserRole;
constexpr int margin = 10; // pixels between a line's end and the list's edge
constexpr int lineGap = 8; // pixels that a line is higher than its text

class LineDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QFontMetrics metrics(option.font);
        const QSize usual = QStyledItemDelegate::sizeHint(option, index);
        const int hint = metrics.horizontalAdvance(index.data(hintRole).toString());
        return {usual.width() + hint + 4 * margin, metrics.height() + lineGap};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyledItemDelegate::paint(painter, option, index);
        const bool selected = option.state & QStyle::State_Selected;
        painter->setPen(selected ? option.palette.color(QPalette::HighlightedText)
                                 : dialogs::lookColor(QStringLiteral("dim")));
        painter->setFont(option.font);
        painter->drawText(option.rect.adjusted(0, 0, -margin, 0), Qt::AlignRight | Qt::AlignVCenter,
                          index.data(hintRole).toString());
    }

    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem&,
                     const QModelIndex& index) override {
        if (event->type() != QEvent::MouseButtonRelease) return false;
        const auto* mouse = static_cast<QMouseEvent*>(event);
        // With these keys a click selects lines.
        if (mouse->button() != Qt::LeftButton || mouse->modifiers() != Qt::NoModifier) return false;
        const bool checked = index.data(Qt::CheckStateRole) == Qt::Checked;
        return model->setData(index, checked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    }
};

} // namespace

MarkerList::MarkerList(QWidget* parent) : QListWidget(parent) {
    setItemDelegate(new LineDelegate(this));
    setSelectionMode(ExtendedSelection);
    setUniformItemSizes(true);
}

void MarkerList::addLine(const QString& text, const QString& hint, bool checked) {
    auto* item = new QListWidgetItem(text, this);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    item->setData(hintRole, hint);
    item->setData(Qt::AccessibleDescriptionRole, hint);
}

void MarkerList::checkAll(bool on) {
    for (int i = 0; i < count(); ++i)
        item(i)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
}

QSize MarkerList::sizeHint() const {
    const QSize frame(2 * frameWidth(), 2 * frameWidth());
    return QSize(sizeHintForColumn(0), sizeHintForRow(0) * count()) + frame;
}

void MarkerList::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || !currentItem()) return QListWidget::keyPressEvent(event);
    const bool checked = currentItem()->checkState() == Qt::Checked;
    QList<QListWidgetItem*> lines = selectedItems();
    if (!lines.contains(currentItem())) lines = {currentItem()};
    for (QListWidgetItem* line : lines)
        line->setCheckState(checked ? Qt::Unchecked : Qt::Checked);
}

} // namespace kvn::metadata
