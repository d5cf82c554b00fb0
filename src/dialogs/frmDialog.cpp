#include "dialogs/frmDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QStyle>
#include <algorithm>
#include <memory>

#include "basic/error.h"
#include "basic/numbers.h"
#include "dialogs/asking.h"
#include "dialogs/look.h"
#include "dialogs/number_box.h"
#include "dialogs/place.h"
#include "dialogs/row_layout.h"

namespace kvn::dialogs {

namespace {

constexpr const char* groups[] = {"txtText", "cmdColor", "cmbCombo", "chkCheck", "optOption"};

QString elementName(const char* group, int row) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(group)).arg(row);
}

// Numbers show as the program shows every number: with a point, without needless digits.
QString shownText(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::fromStdString(numberText(value.toDouble()));
    default:
        return value.toString();
    }
}

bool truth(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool) return value.toBool();
    return booleanFromText(shownText(value).toStdString());
}

// The caption without the marks of access keys, as it is spoken.
QString spoken(const QString& caption) {
    QString text = caption;
    text.replace(QLatin1String("&&"), QString(QChar(1)));
    text.remove(QLatin1Char('&'));
    text.replace(QChar(1), QLatin1Char('&'));
    return text.trimmed();
}

int textWidth(const QWidget& widget, const QString& text) {
    return widget.fontMetrics().horizontalAdvance(spoken(text));
}

} // namespace

frmDialog::frmDialog(Asking& asking, QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      asking_(asking), scroller_(new QScrollArea(this)), page_(new QWidget),
      picBottom_(new QWidget(this)), options_(new QButtonGroup(this)) {
    setObjectName(QStringLiteral("frmDialog"));
    scroller_->setFrameShape(QFrame::NoFrame);
    scroller_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroller_->setFocusPolicy(Qt::NoFocus);
    scroller_->setWidget(page_);
    page_->setObjectName(QStringLiteral("page"));
    makeBottom();
    place();
}

// The boxes write into themselves from LastText when they lose the focus, so they go before it.
frmDialog::~frmDialog() {
    adding_ = true;
    delete scroller_;
}

void frmDialog::makeBottom() {
    picBottom_->setObjectName(QStringLiteral("picBottom"));
    cmdOK_ = new QPushButton(QStringLiteral("OK"), picBottom_);
    cmdOK_->setObjectName(QStringLiteral("cmdOK"));
    cmdOK_->setDefault(true);
    cmdOK_->setToolTip(QStringLiteral("Go on with these values (Enter)"));
    cmdCancel_ = new QPushButton(QStringLiteral("Cancel"), picBottom_);
    cmdCancel_->setObjectName(QStringLiteral("cmdCancel"));
    cmdCancel_->setToolTip(QStringLiteral("Leave without a change (Esc)"));
    connect(cmdOK_, &QPushButton::clicked, this, &frmDialog::accept);
    connect(cmdCancel_, &QPushButton::clicked, this, &frmDialog::reject);
}

void frmDialog::AddControl(const QString& label, const QVariant& value, int kind) {
    const QScopedValueRollback<bool> guard(adding_, true);
    const int row = ControlCount();
    auto caption = std::make_unique<QLabel>(page_);
    QWidget* control = makeControl(row, kind, label, value);
    caption->setObjectName(elementName("lblLabel", row));
    caption->setTextFormat(Qt::PlainText);
    const bool captioned = kind != Check && kind != Option;
    caption->setVisible(captioned);
    if (captioned) caption->setText(label);
    if (captioned && control) caption->setBuddy(control);
    if (control) {
        control->setObjectName(elementName(groups[kind], row));
        control->setAccessibleName(spoken(label));
        control->show();
    }
    rows_.push_back({kind, caption.release(), control});
    place();
}

QWidget* frmDialog::makeControl(int row, int kind, const QString& label, const QVariant& value) {
    switch (kind) {
    case Text:
        return makeText(row, value);
    case Color:
        return makeColor(row, value);
    case Combo:
        return makeCombo(row);
    case Check:
    case Option:
        return makeSwitch(row, kind, label, value);
    default:
        return nullptr;
    }
}

QWidget* frmDialog::makeText(int row, const QVariant& value) {
    auto* box = new NumberBox(LastText, page_);
    box->setText(shownText(value));
    box->setToolTip(QStringLiteral("Up and Down change the number by 1, Page Up and Page Down by "
                                   "10"));
    connect(box, &QLineEdit::textChanged, this, [this, row] { changed(row); });
    return box;
}

QWidget* frmDialog::makeColor(int row, const QVariant& value) {
    auto* button = new ColorButton(page_);
    button->setBackColor(static_cast<quint32>(value.toLongLong()));
    connect(button, &QPushButton::clicked, this, [this, row] { chooseColor(row); });
    return button;
}

QWidget* frmDialog::makeCombo(int row) {
    auto* list = new QComboBox(page_);
    // Without a placeholder the first item would be chosen by itself.
    list->setPlaceholderText(QStringLiteral(" "));
    connect(list, &QComboBox::currentIndexChanged, this, [this, row] { changed(row); });
    return list;
}

QWidget* frmDialog::makeSwitch(int row, int kind, const QString& label, const QVariant& value) {
    const bool on = truth(value);
    if (kind == Check) {
        auto* box = new QCheckBox(label, page_);
        box->setChecked(on);
        connect(box, &QCheckBox::toggled, this, [this, row] { changed(row); });
        return box;
    }
    auto* button = new QRadioButton(label, page_);
    options_->addButton(button, row);
    button->setChecked(on);
    return button;
}

void frmDialog::chooseColor(int row) {
    ColorButton* button = cmdColor(row);
    try {
        if (const auto chosen = asking_.color(button->BackColor(), this))
            button->setBackColor(*chosen);
    } catch (const RuntimeError&) {
        return; // the colour stays as it was
    }
    changed(row);
}

void frmDialog::changed(int row) {
    if (adding_ || row >= ControlCount()) return;
    emit ControlChanged(static_cast<qint16>(row), rows_[static_cast<std::size_t>(row)].control);
}

// Sizes follow from the rows, the font and the texts alone, so this may run at any time.
void frmDialog::place() {
    ensurePolished();
    RowLayout layout(fontMetrics().height());
    for (const Row& row : rows_) {
        if (row.label->text().size() > 0) layout.needLabel(textWidth(*this, row.label->text()));
        if (row.kind == Check || row.kind == Option)
            layout.needControl(row.kind, row.control->sizeHint().width());
        if (row.kind == Combo) layout.needControl(Combo, row.control->sizeHint().width());
    }
    for (int i = 0; i < ControlCount(); ++i) {
        const Row& row = rows_[static_cast<std::size_t>(i)];
        row.label->setGeometry(layout.label(i, row.kind));
        if (row.control) row.control->setGeometry(layout.control(i, row.kind));
    }
    const QSize whole = layout.dialog(ControlCount());
    const int room = availableSize(*this).height();
    const int height = std::min(whole.height(), room);
    const bool scrolls = height < whole.height();
    const int bar = scrolls ? style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
    const int top = height - layout.bottomHeight();
    page_->resize(whole.width(), whole.height() - layout.bottomHeight());
    scroller_->setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    scroller_->setGeometry(0, 0, whole.width() + bar, top);
    picBottom_->setGeometry(0, top, whole.width() + bar, layout.bottomHeight());
    cmdOK_->setGeometry(layout.okButton());
    cmdCancel_->setGeometry(layout.cancelButton());
    setFixedSize(whole.width() + bar, height);
}

// The keyboard goes through the rows as they stand, then to the buttons.
void frmDialog::orderFocus() {
    QWidget *first = nullptr, *last = nullptr;
    for (const Row& row : rows_) {
        if (!row.control) continue;
        if (last)
            setTabOrder(last, row.control);
        else
            first = row.control;
        last = row.control;
    }
    // Among option buttons the keys start from the chosen one.
    if (first && rows_.front().kind == Option && options_->checkedButton())
        first = options_->checkedButton();
    if (first) first->setFocus(Qt::TabFocusReason);
    if (last) setTabOrder(last, cmdOK_);
    setTabOrder(cmdOK_, cmdCancel_);
}

void frmDialog::showEvent(QShowEvent* event) {
    place(); // lists have got their items since AddControl
    orderFocus();
    centreOnOwner(*this);
    QDialog::showEvent(event);
}

void frmDialog::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        applySkin(this, QString());
        applySkin(picBottom_, QStringLiteral("Toolbar2"));
    }
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) place();
    QDialog::changeEvent(event);
}

void frmDialog::accept() {
    hide();
}

void frmDialog::reject() {
    Cancelled = true;
    hide();
}

// The user's close is refused, so that the rows stay readable; the caller's own goes through.
void frmDialog::closeEvent(QCloseEvent* event) {
    if (!isVisible()) return;
    event->ignore();
    reject();
}

QWidget* frmDialog::control(int row, int kind) const {
    const bool exists =
        row >= 0 && row < ControlCount() && rows_[static_cast<std::size_t>(row)].kind == kind;
    if (!exists)
        throw RuntimeError(errors::subscriptOutOfRange,
                           "Control array element '" + std::to_string(row) + "' doesn't exist",
                           groups[kind]);
    return rows_[static_cast<std::size_t>(row)].control;
}

QLabel* frmDialog::lblLabel(int row) const {
    if (row < 0 || row >= ControlCount())
        throw RuntimeError(errors::subscriptOutOfRange, "Subscript out of range", "lblLabel");
    return rows_[static_cast<std::size_t>(row)].label;
}

QLineEdit* frmDialog::txtText(int row) const {
    return static_cast<QLineEdit*>(control(row, Text));
}
ColorButton* frmDialog::cmdColor(int row) const {
    return static_cast<ColorButton*>(control(row, Color));
}
QComboBox* frmDialog::cmbCombo(int row) const {
    return static_cast<QComboBox*>(control(row, Combo));
}
QCheckBox* frmDialog::chkCheck(int row) const {
    return static_cast<QCheckBox*>(control(row, Check));
}
QRadioButton* frmDialog::optOption(int row) const {
    return static_cast<QRadioButton*>(control(row, Option));
}

double frmDialog::number(int row) const {
    return numericPrefix(txtText(row)->text().toStdString());
}
quint32 frmDialog::color(int row) const {
    return cmdColor(row)->BackColor();
}
int frmDialog::listIndex(int row) const {
    return cmbCombo(row)->currentIndex();
}

bool frmDialog::isChecked(int row) const {
    const bool isOption =
        row >= 0 && row < ControlCount() && rows_[static_cast<std::size_t>(row)].kind == Option;
    return isOption ? optOption(row)->isChecked() : chkCheck(row)->isChecked();
}

void frmDialog::setList(int row, const QStringList& items, int index) {
    QComboBox* list = cmbCombo(row);
    list->addItems(items);
    list->setCurrentIndex(index);
}

} // namespace kvn::dialogs
