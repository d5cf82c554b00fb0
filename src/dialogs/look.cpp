#include "dialogs/look.h"

#include <QApplication>
#include <QFile>
#include <QStyle>
#include <QWidget>
#include <algorithm>
#include <array>

#include "dialogs/desktop_tone.h"
#include "dialogs/look_colors.h"
#include "dialogs/look_style.h"

// The resources lie in a static library, where nothing else would pull them in. The macro has to
// stand outside every namespace.
static void initResources() {
    Q_INIT_RESOURCE(kestrelvane);
}

namespace kvn::dialogs {

namespace {

constexpr std::array skins = {"Side Toolbar", "Toolbar", "Toolbar2"};
constexpr const char* skinProperty = "kvnSkin";

// Applies the look and follows the desktop. Lives as long as the application.
class Look : public QObject {
  public:
    explicit Look(QApplication& app);

    Tone tone() const { return tone_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    Tone wanted() const;
    void apply(Tone tone);
    void follow();
    void readDesktopPalette();

    QApplication& app_;
    DesktopTone desktop_;
    QString sheet_;
    Tone tone_ = Tone::Light;
    bool applying_ = false;
};

Look* current = nullptr;

QString resourceText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

Look::Look(QApplication& app)
    : QObject(&app), app_(app), desktop_(this),
      sheet_(resourceText(QStringLiteral(":/kvn/look/look.qss"))) {
    app.setStyle(new LookStyle);
    connect(&desktop_, &DesktopTone::changed, this, &Look::follow);
    apply(wanted());
    app.installEventFilter(this);
}

Tone Look::wanted() const {
    const QByteArray told = qgetenv("KESTRELVANE_LOOK");
    if (told == "dark") return Tone::Dark;
    if (told == "light") return Tone::Light;
    return desktop_.tone();
}

void Look::apply(Tone tone) {
    applying_ = true;
    tone_ = tone;
    QIcon::setFallbackThemeName(tone == Tone::Dark ? QStringLiteral("breeze-dark")
                                                   : QStringLiteral("breeze"));
    app_.setPalette(tonePalette(tone));
    app_.setStyleSheet(toneSheet(tone, sheet_));
    applying_ = false;
}

void Look::follow() {
    if (wanted() != tone_) apply(wanted());
}

// Our own palette hides the desktop's, so it is taken away for the look at the other.
void Look::readDesktopPalette() {
    applying_ = true;
    app_.setPalette(QPalette());
    desktop_.readPalette();
    app_.setPalette(tonePalette(tone_));
    applying_ = false;
}

// Qt tells of a change of the desktop's theme by events to the application and every window.
bool Look::eventFilter(QObject* watched, QEvent* event) {
    const bool told = watched == &app_ && (event->type() == QEvent::ThemeChange ||
                                           event->type() == QEvent::ApplicationPaletteChange);
    if (told && !applying_) {
        readDesktopPalette();
        follow();
    }
    return false;
}

} // namespace

void installLook(QApplication& app) {
    initResources();
    if (!current) {
        current = new Look(app);
        QObject::connect(current, &QObject::destroyed, [] { current = nullptr; });
    }
    QApplication::setWindowIcon(applicationIcon());
}

bool isDarkLook() {
    return current && current->tone() == Tone::Dark;
}

QColor lookColor(const QString& name) {
    return toneColor(current ? current->tone() : Tone::Light, name);
}

void applySkin(QWidget* widget, const QString& skin) {
    if (!widget) return;
    const bool known = std::any_of(skins.begin(), skins.end(),
                                   [&](const char* name) { return skin == QLatin1String(name); });
    const QVariant wanted = known ? skin : QString();
    if (widget->property(skinProperty) == wanted) return;
    widget->setProperty(skinProperty, wanted);
    widget->setAttribute(Qt::WA_StyledBackground, known);
    // The style sheet looks at the property only when it is asked again.
    widget->style()->unpolish(widget);
    widget->style()->polish(widget);
    widget->update();
}

} // namespace kvn::dialogs
