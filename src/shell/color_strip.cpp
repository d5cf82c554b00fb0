#include "shell/color_strip.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QPainter>
#include <QToolButton>

#include "dialogs/look.h"
#include "document/program_state.h"
#include "shell/gradient_strip.h"

namespace kvn::shell {

namespace {

QColor colorOf(quint32 value) {
    return QColor(static_cast<int>(value & 0xFF), static_cast<int>(value >> 8 & 0xFF),
                  static_cast<int>(value >> 16 & 0xFF));
}

} // namespace

// Shows its colour in full at any time, also where nothing can be chosen.
class ColorWell : public QAbstractButton {
  public:
    ColorWell(int index, const QString& title, QWidget* parent) : QAbstractButton(parent) {
        setObjectName(QStringLiteral("SelColor(%1)").arg(index));
        setAccessibleName(title);
        setStatusTip(title + QStringLiteral(" (choosing one is not available yet)"));
        setFixedSize(index == 0 ? QSize(36, 26) : QSize(26, 20));
        title_ = title;
        setEnabled(false);
    }
    void setColor(quint32 color) {
        color_ = color;
        const QString name = colorOf(color).name();
        setToolTip(title_ + QStringLiteral(": ") + name);
        setAccessibleDescription(name);
        update();
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
        painter.setBrush(colorOf(color_));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
    }

  private:
    quint32 color_ = 0;
    QString title_;
};

ColorStrip::ColorStrip(document::ProgramState& state, QWidget* parent)
    : QFrame(parent), state_(state), gradient_(new GradientStrip(this)) {
    setObjectName(QStringLiteral("ColorsBg"));
    setAccessibleName(QStringLiteral("Colors"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(6);
    wells_[0] = new ColorWell(0, QStringLiteral("Foreground color"), this);
    wells_[1] = new ColorWell(1, QStringLiteral("Background color"), this);
    for (int well : {0, 1})
        connect(wells_[static_cast<std::size_t>(well)], &QAbstractButton::clicked, this,
                [this, well] {
                    activeWell_ = static_cast<qint16>(well);
                    emit wellClicked(well);
                });
    // The strip runs from the background's colour to the foreground's.
    row->addWidget(wells_[1]);
    row->addWidget(gradient_);
    row->addWidget(wells_[0]);
    auto* shift = addButton("ShiftColors", QStringLiteral("Swap colors"), "tool-colors-swap");
    auto* restore =
        addButton("RestoreColors", QStringLiteral("Black and white"), "tool-colors-reset");
    row->addWidget(shift);
    row->addWidget(restore);
    connect(gradient_, &GradientStrip::picked, this, &ColorStrip::setSelColor);
    connect(shift, &QToolButton::clicked, this, [this] {
        std::swap(state_.ForeColor, state_.BackColor);
        SyncGradient();
        emit exchanged();
    });
    connect(restore, &QToolButton::clicked, this, [this] {
        state_.ForeColor = 0;
        state_.BackColor = 0xFFFFFF;
        SyncGradient();
        emit exchanged();
    });
    SyncGradient();
}

QToolButton* ColorStrip::addButton(const char* name, const QString& title, const char* iconName) {
    auto* button = new QToolButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setAccessibleName(title);
    button->setToolTip(title);
    button->setStatusTip(title);
    button->setIcon(dialogs::icon(QString::fromLatin1(iconName)));
    button->setIconSize({18, 18});
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

quint32 ColorStrip::SelColor(int well) const {
    return well == 0 ? state_.ForeColor : state_.BackColor;
}

QColor ColorStrip::qtColor(int well) const {
    return colorOf(SelColor(well));
}

void ColorStrip::setSelColor(int well, quint32 color) {
    (well == 0 ? state_.ForeColor : state_.BackColor) = color & 0xFFFFFF;
    SyncGradient();
}

void ColorStrip::SyncGradient() {
    wells_[0]->setColor(state_.ForeColor);
    wells_[1]->setColor(state_.BackColor);
    gradient_->draw(state_.ForeColor, state_.BackColor);
}

} // namespace kvn::shell
