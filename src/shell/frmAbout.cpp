#include "shell/frmAbout.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "dialogs/asking.h"
#include "dialogs/look.h"
#include "shell/version.h"

namespace kvn::shell {

namespace {

constexpr int iconSize = 96;

QLabel* line(const char* name, const QString& text, double scale, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(QString::fromLatin1(name));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(scale > 1);
    label->setFont(font);
    return label;
}

// The facts as text that can be selected and copied.
class SystemInformation : public QDialog {
  public:
    SystemInformation(const QString& text, QWidget* owner) : QDialog(owner) {
        setObjectName(QStringLiteral("frmSystemInfo"));
        setWindowTitle(QStringLiteral("System Information"));
        auto* box = new QPlainTextEdit(text, this);
        box->setObjectName(QStringLiteral("txtInfo"));
        box->setAccessibleName(windowTitle());
        box->setReadOnly(true);
        box->setTabChangesFocus(true);
        box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
        auto* copy = buttons->addButton(QStringLiteral("&Copy"), QDialogButtonBox::ActionRole);
        copy->setObjectName(QStringLiteral("cmdCopy"));
        copy->setToolTip(QStringLiteral("Copy all of it to the clipboard"));
        buttons->button(QDialogButtonBox::Close)->setDefault(true);
        connect(copy, &QPushButton::clicked, this,
                [text] { QGuiApplication::clipboard()->setText(text); });
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        auto* column = new QVBoxLayout(this);
        column->addWidget(box);
        column->addWidget(buttons);
        resize(620, 440);
        dialogs::applySkin(this, QString());
    }
};

} // namespace

frmAbout::frmAbout(dialogs::Asking& asking, QWidget* owner, Facts facts)
    : QDialog(owner), asking_(asking), facts_(std::move(facts)) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About OML Kestrel Vane"));
    auto* picture = new QLabel(this);
    picture->setObjectName(QStringLiteral("picIcon"));
    picture->setAccessibleName(QStringLiteral("Program icon"));
    picture->setPixmap(dialogs::applicationIcon().pixmap(iconSize));
    auto* texts = new QVBoxLayout;
    texts->addWidget(line("lblTitle", QStringLiteral("OML Kestrel Vane"), 1.6, this));
    texts->addWidget(line("lblVersion", QStringLiteral("Version ") + programVersion(), 1.0, this));
    texts->addSpacing(8);
    texts->addWidget(line("lblDescription",
                          QStringLiteral("Opens, repairs, changes and saves pictures."), 1.0,
                          this));
    texts->addWidget(line("lblLicense",
                          QStringLiteral("Free software under the GNU General Public License, "
                                         "version 3 or later."),
                          1.0, this));
    texts->addStretch();
    auto* top = new QHBoxLayout;
    top->addWidget(picture, 0, Qt::AlignTop);
    top->addSpacing(12);
    top->addLayout(texts, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOK"));
    auto* info =
        buttons->addButton(QStringLiteral("&System Info..."), QDialogButtonBox::ActionRole);
    info->setObjectName(QStringLiteral("cmdSysInfo"));
    info->setToolTip(QStringLiteral("Show what the program runs on"));
    connect(info, &QPushButton::clicked, this, &frmAbout::showSystemInformation);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(18, 18, 18, 12);
    column->setSpacing(14);
    column->addLayout(top);
    column->addWidget(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);
    dialogs::applySkin(this, QString());
}

void frmAbout::showSystemInformation() {
    const QString text = factsText(facts_());
    if (text.isEmpty()) {
        asking_.message({.text = QStringLiteral("System Information Is Unavailable At This Time"),
                         .title = {},
                         .icon = dialogs::Icon::None,
                         .buttons = dialogs::Buttons::Ok,
                         .owner = this});
        return;
    }
    SystemInformation window(text, this);
    asking_.showModal(window);
}

} // namespace kvn::shell
