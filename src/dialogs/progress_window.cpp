#include "dialogs/progress_window.h"

#include <QCloseEvent>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/look.h"
#include "dialogs/progress_bar.h"

namespace kvn::dialogs {

namespace {

constexpr int barHeight = 8;
constexpr int barWidth = 340;
constexpr Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                  Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

} // namespace

ProgressWindow::ProgressWindow(QWidget* owner)
    : QDialog(owner, flags), picProgress_(new ProgressBar), lblProgressText_(new QLabel),
      btnCancel_(new QPushButton(QStringLiteral("&Cancel"))) {
    setObjectName(QStringLiteral("frmProgress"));
    picProgress_->setFixedHeight(barHeight);
    picProgress_->setMinimumWidth(barWidth);
    lblProgressText_->setObjectName(QStringLiteral("lblProgressText"));
    lblProgressText_->setTextFormat(Qt::PlainText);
    lblProgressText_->setWordWrap(true);
    btnCancel_->setObjectName(QStringLiteral("btnCancel"));
    btnCancel_->setAccessibleName(QStringLiteral("Cancel"));
    btnCancel_->setToolTip(QStringLiteral("Stop the work and leave the picture as it was"));
    connect(btnCancel_, &QPushButton::clicked, this, &ProgressWindow::cancelClicked);

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(20, 18, 20, 16);
    rows->setSpacing(12);
    rows->addWidget(lblProgressText_);
    rows->addWidget(picProgress_);
    rows->addWidget(btnCancel_, 0, Qt::AlignRight);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    applySkin(this, QString());
}

void ProgressWindow::setOwner(QWidget* owner) {
    QWidget* top = owner ? owner->window() : nullptr;
    if (top != parentWidget()) setParent(top, flags);
}

void ProgressWindow::setMessage(const QString& message) {
    lblProgressText_->setText(message);
}

void ProgressWindow::setStart() {
    setWindowTitle(QStringLiteral("Progress"));
    picProgress_->setPercent(0);
}

void ProgressWindow::setPercent(int percent) {
    setWindowTitle(QStringLiteral("Progress %1%").arg(percent));
    picProgress_->setPercent(percent);
}

void ProgressWindow::reject() {
    emit cancelClicked();
}

void ProgressWindow::closeEvent(QCloseEvent* event) {
    if (!isVisible()) return;
    event->ignore();
    emit cancelClicked();
}

} // namespace kvn::dialogs
