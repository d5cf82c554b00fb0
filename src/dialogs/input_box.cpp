#include "dialogs/input_box.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "dialogs/look.h"
#include "dialogs/place.h"

namespace kvn::dialogs {

namespace {

constexpr int leastWidth = 340;
constexpr int mostWidth = 560;

// As wide as the longest line asks for, within limits.
int promptWidth(const QLabel& label, const QString& prompt) {
    int width = 0;
    for (const QString& line : prompt.split(QLatin1Char('\n')))
        width = std::max(width, label.fontMetrics().horizontalAdvance(line));
    return std::clamp(width, leastWidth, mostWidth);
}

} // namespace

InputBox::InputBox(const QString& prompt, const QString& title, const QString& text, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      txtInput_(new QLineEdit(text)) {
    setObjectName(QStringLiteral("InputBox"));
    setWindowTitle(title);
    auto* label = new QLabel(prompt);
    label->setObjectName(QStringLiteral("lblPrompt"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFixedWidth(promptWidth(*label, prompt));
    txtInput_->setObjectName(QStringLiteral("txtInput"));
    txtInput_->setAccessibleName(prompt);
    txtInput_->selectAll();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("OK"));
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOK"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Cancel"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(20, 18, 20, 16);
    rows->setSpacing(12);
    rows->addWidget(label);
    rows->addWidget(txtInput_);
    rows->addSpacing(4);
    rows->addWidget(buttons);
    rows->setSizeConstraint(QLayout::SetFixedSize);
    applySkin(this, QString());
    adjustSize();
    centreOnOwner(*this);
}

QString InputBox::answer() const {
    return result() == QDialog::Accepted ? txtInput_->text() : QString();
}

} // namespace kvn::dialogs
