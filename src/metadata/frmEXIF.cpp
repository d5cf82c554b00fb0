#include "metadata/frmEXIF.h"

#include <QKeyEvent>
#include <QVBoxLayout>

#include "dialogs/look.h"
#include "dialogs/place.h"
#include "metadata/find_bar.h"
#include "metadata/tag_box.h"

namespace kvn::metadata {

namespace {

constexpr QSize usualSize(540, 600);

QString textOf(const QList<engine::MetadataItem>& items) {
    QString text;
    for (const engine::MetadataItem& item : items)
        text += item.Name + QStringLiteral(" = ") + item.Value + QStringLiteral("\r\n");
    return text;
}

} // namespace

frmEXIF::frmEXIF(QWidget* owner)
    : QWidget(owner, Qt::Window), txtExif(new TagBox(this)), find_(new FindBar(*txtExif, this)) {
    setObjectName(QStringLiteral("frmEXIF"));
    setWindowTitle(QStringLiteral("EXIF Data"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(txtExif, 1);
    column->addWidget(find_);
    setFocusProxy(txtExif);
    connect(txtExif, &TagBox::findRequested, find_, &FindBar::open);
    dialogs::applySkin(this, QString());
    resize(usualSize.boundedTo(dialogs::availableSize(*this)));
    dialogs::centreOnOwner(*this);
}

void frmEXIF::list(const QList<engine::MetadataItem>& items, QWidget* owner) {
    auto* window = owner->findChild<frmEXIF*>(QString(), Qt::FindDirectChildrenOnly);
    if (!window) window = new frmEXIF(owner);
    window->txtExif->setLines(textOf(items));
    window->show();
    window->raise();
    window->activateWindow();
}

void frmEXIF::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Find)) return find_->open();
    if (event->matches(QKeySequence::FindNext)) return find_->step(true);
    if (event->matches(QKeySequence::FindPrevious)) return find_->step(false);
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

} // namespace kvn::metadata
