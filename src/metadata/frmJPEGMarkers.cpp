#include "metadata/frmJPEGMarkers.h"

#include <QDialogButtonBox>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/look.h"
#include "dialogs/place.h"
#include "metadata/marker_list.h"

namespace kvn::metadata {

namespace {

constexpr int markers = 14;
constexpr int leastWidth = 300; // pixels, so that the title is not cut

// What files usually have in a marker; the others are used by few programs, each in its own way.
QString usualContent(int marker) {
    switch (marker) {
    case 1:
        return QStringLiteral("EXIF, XMP");
    case 2:
        return QStringLiteral("Color profile");
    case 13:
        return QStringLiteral("IPTC");
    default:
        return {};
    }
}

} // namespace

frmJPEGMarkers::frmJPEGMarkers(QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      lstJPEGMarkers(new MarkerList(this)) {
    setObjectName(QStringLiteral("frmJPEGMarkers"));
    setWindowTitle(QStringLiteral("JPEG Markers to Save"));
    lstJPEGMarkers->setObjectName(QStringLiteral("lstJPEGMarkers"));
    lstJPEGMarkers->setAccessibleName(windowTitle());
    lstJPEGMarkers->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(lstJPEGMarkers, &QListWidget::itemChanged, this, &frmJPEGMarkers::listChanged);
    connect(lstJPEGMarkers, &QWidget::customContextMenuRequested, this,
            &frmJPEGMarkers::showListMenu);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOK"));
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Cancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(16, 16, 16, 14);
    column->setSpacing(12);
    column->addWidget(lstJPEGMarkers, 1);
    column->addWidget(buttons);
    setMinimumWidth(leastWidth);
    dialogs::applySkin(this, QString());
}

void frmJPEGMarkers::LoadList() {
    Loading = true;
    lstJPEGMarkers->clear();
    for (int i = 1; i <= markers; ++i)
        lstJPEGMarkers->addLine(QStringLiteral("JPEG_APP%1").arg(i), usualContent(i),
                                (Markers >> (i - 1) & 1) != 0);
    lstJPEGMarkers->setCurrentRow(0);
    Loading = false;
    resize(sizeHint().boundedTo(dialogs::availableSize(*this)));
    dialogs::centreOnOwner(*this);
}

void frmJPEGMarkers::listChanged() {
    if (Loading) return;
    Markers = 0;
    for (int i = 0; i < lstJPEGMarkers->count(); ++i)
        if (lstJPEGMarkers->item(i)->checkState() == Qt::Checked) Markers |= 1U << i;
}

void frmJPEGMarkers::showListMenu(const QPoint& at) {
    MarkerList* list = lstJPEGMarkers;
    QMenu menu(this);
    menu.addAction(QStringLiteral("&Check All"), this, [list] { list->checkAll(true); });
    menu.addAction(QStringLiteral("C&lear All"), this, [list] { list->checkAll(false); });
    menu.exec(list->viewport()->mapToGlobal(at));
}

void frmJPEGMarkers::reject() {
    Cancelled = true;
    QDialog::reject();
}

} // namespace kvn::metadata
