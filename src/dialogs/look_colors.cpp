#include "dialogs/look_colors.h"

#include <QRegularExpression>
#include <array>

namespace kvn::dialogs {

namespace {

struct Entry {
    const char* name;
    const char* light;
    const char* dark;
};

// Text on its ground keeps a contrast of at least 4.5 to 1 in both columns; dim text, 4 to 1.
constexpr std::array table = {
    Entry{"window", "#f6f7f8", "#26292d"},      // dialogs, the frame
    Entry{"panel", "#eceef1", "#1f2225"},       // tool bars, menu bar
    Entry{"strip", "#f1f3f5", "#222529"},       // option and status strips
    Entry{"workspace", "#c8ccd2", "#16181a"},   // behind the document windows
    Entry{"base", "#ffffff", "#1b1d20"},        // fields and lists
    Entry{"alternate", "#f7f8fa", "#202327"},   // every other line of a list
    Entry{"popup", "#ffffff", "#2b2f33"},       // menus, lists that drop down
    Entry{"text", "#20252b", "#e6e8eb"},        //
    Entry{"dim", "#69717b", "#979fa8"},         // hints, disabled text
    Entry{"line", "#dfe2e6", "#34383d"},        // between parts
    Entry{"border", "#bfc5cc", "#454b52"},      // around fields and buttons
    Entry{"button", "#ffffff", "#32363b"},      //
    Entry{"hover", "#e4e8ec", "#3b4046"},       //
    Entry{"pressed", "#d6dbe1", "#2a2d31"},     //
    Entry{"accent", "#1d6f86", "#57b3c9"},      // choice, focus, progress
    Entry{"accentHover", "#175d71", "#6cc3d7"}, // the default button under the pointer
    Entry{"accentText", "#ffffff", "#0e1519"},  // on accent
    Entry{"accentSoft", "#d3e7ec", "#2c4a53"},  // a pressed tool
    Entry{"link", "#1d6f86", "#74c4d6"},        //
    Entry{"danger", "#b3402e", "#ee8672"},      // errors, a close button under the pointer
};

const char* valueOf(const Entry& entry, Tone tone) {
    return tone == Tone::Light ? entry.light : entry.dark;
}

struct Role {
    QPalette::ColorRole role;
    const char* name;
    const char* disabled;
};

constexpr std::array roles = {
    Role{QPalette::Window, "window", "window"},
    Role{QPalette::WindowText, "text", "dim"},
    Role{QPalette::Base, "base", "window"},
    Role{QPalette::AlternateBase, "alternate", "window"},
    Role{QPalette::Text, "text", "dim"},
    Role{QPalette::PlaceholderText, "dim", "dim"},
    Role{QPalette::Button, "button", "window"},
    Role{QPalette::ButtonText, "text", "dim"},
    Role{QPalette::BrightText, "danger", "dim"},
    Role{QPalette::ToolTipBase, "popup", "popup"},
    Role{QPalette::ToolTipText, "text", "text"},
    Role{QPalette::Highlight, "accent", "border"},
    Role{QPalette::HighlightedText, "accentText", "accentText"},
    Role{QPalette::Link, "link", "dim"},
    Role{QPalette::LinkVisited, "link", "dim"},
    Role{QPalette::Light, "base", "base"},
    Role{QPalette::Midlight, "line", "line"},
    Role{QPalette::Mid, "border", "line"},
    Role{QPalette::Dark, "dim", "border"},
    Role{QPalette::Shadow, "workspace", "workspace"},
};

} // namespace

QColor toneColor(Tone tone, const QString& name) {
    for (const Entry& entry : table)
        if (name == QLatin1String(entry.name)) return QColor(valueOf(entry, tone));
    return {};
}

QPalette tonePalette(Tone tone) {
    QPalette palette;
    for (const Role& role : roles) {
        palette.setColor(role.role, toneColor(tone, QLatin1String(role.name)));
        palette.setColor(QPalette::Disabled, role.role,
                         toneColor(tone, QLatin1String(role.disabled)));
    }
    return palette;
}

QString toneSheet(Tone tone, const QString& sheet) {
    static const QRegularExpression mark(QStringLiteral("@([A-Za-z]+)"));
    QString result;
    qsizetype from = 0;
    for (auto marks = mark.globalMatch(sheet); marks.hasNext();) {
        const auto match = marks.next();
        const QString name = match.captured(1);
        result += QStringView(sheet).mid(from, match.capturedStart() - from);
        result += name == QLatin1String("tone")
                      ? QLatin1String(tone == Tone::Light ? "light" : "dark")
                      : toneColor(tone, name).name();
        from = match.capturedEnd();
    }
    return result.append(QStringView(sheet).mid(from));
}

} // namespace kvn::dialogs
