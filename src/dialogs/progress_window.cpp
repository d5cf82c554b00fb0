#include "dialogs/progress_window.h"

#include <QCloseEvent>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "dialogs/look.h"

namespace kvn::dialogs {

namespace {

constexpr int barHeight = 8;
constexpr int barWidth = 340;
constexpr Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                  Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

} // namespace

ProgressWindow::ProgressWindow(QWidget* owner)
    : QDialog(owner, flags), picProgress_(new QFrame), picInner_(new QFrame(picProgress_)),
      lblProgressText_(new QLabel), btnCancel_(new QPushButton(QStringLiteral("&Cancel"))) {
    setObjectName(QStringLiteral("frmProgress"));
    picProgress_->setObjectName(QStringLiteral("picProgress"));
    picProgress_->setFixedHeight(barHeight);
    picProgress_->setMinimumWidth(barWidth);
    picProgress_->setAccessibleName(QStringLiteral("Progress"));
    picInner_->setObjectName(QStringLiteral("picInner"));
    lblProgressText_->setObjectName(QStringLiteral("lblProgressText"));
    lblProgressText_->setTextFormat(Qt::PlainText);
    lblProgressText_->setWordWrap(true);
    btnCancel_->setObjectName(QStringLiteral("btnCancel"));
    btnCancel_->setAccessibleName(QStringLiteral("Cancel"));
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
    setBar(0);
}

void ProgressWindow::setPercent(int percent) {
    setWindowTitle(QStringLiteral("Progress %1%").arg(percent));
    picProgress_->setAccessibleDescription(QStringLiteral("%1%").arg(percent));
    setBar(percent / 100.0);
}

void ProgressWindow::setBar(double share) {
    share_ = std::clamp(share, 0.0, 1.0);
    const int width = static_cast<int>(picProgress_->width() * share_ + 0.5);
    picInner_->setGeometry(0, 0, std::max(1, width), picProgress_->height());
}

void ProgressWindow::reject() {
    emit cancelClicked();
}

void ProgressWindow::closeEvent(QCloseEvent* event) {
    if (!isVisible()) return;
    event->ignore();
    emit cancelClicked();
}

void ProgressWindow::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    setBar(share_);
}

} // namespace kvn::dialogs
