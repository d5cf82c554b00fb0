#include "dialogs/look_style.h"

#include <QPainter>
#include <QStyleOption>
#include <array>

#include "dialogs/look.h"

namespace kvn::dialogs {

namespace {

struct NamedIcon {
    QStyle::StandardPixmap which;
    const char* name;
};
constexpr std::array icons = {
    NamedIcon{QStyle::SP_MessageBoxInformation, "dialog-information"},
    NamedIcon{QStyle::SP_MessageBoxQuestion, "dialog-question"},
    NamedIcon{QStyle::SP_MessageBoxWarning, "dialog-warning"},
    NamedIcon{QStyle::SP_MessageBoxCritical, "dialog-error"},
    NamedIcon{QStyle::SP_ArrowBack, "go-previous"},
    NamedIcon{QStyle::SP_ArrowForward, "go-next"},
    NamedIcon{QStyle::SP_FileDialogToParent, "go-up"},
    NamedIcon{QStyle::SP_FileDialogNewFolder, "folder-new"},
    NamedIcon{QStyle::SP_FileDialogListView, "view-list-icons"},
    NamedIcon{QStyle::SP_FileDialogDetailedView, "view-list-details"},
    NamedIcon{QStyle::SP_DirIcon, "folder"},
    NamedIcon{QStyle::SP_DirHomeIcon, "user-home"},
    NamedIcon{QStyle::SP_FileIcon, "text-x-generic"},
    NamedIcon{QStyle::SP_ComputerIcon, "computer"},
    NamedIcon{QStyle::SP_DriveHDIcon, "drive-harddisk"},
};

constexpr std::array titleButtons = {QStyle::SC_TitleBarMinButton, QStyle::SC_TitleBarMaxButton,
                                     QStyle::SC_TitleBarNormalButton,
                                     QStyle::SC_TitleBarCloseButton};

// The strokes of a title button, in a square of 8 by 8 around `centre`.
void drawGlyph(QStyle::SubControl button, QPointF centre, QPainter& painter) {
    const QRectF box(centre.x() - 4, centre.y() - 4, 8, 8);
    switch (button) {
    case QStyle::SC_TitleBarMinButton:
        painter.drawLine(QPointF(box.left(), centre.y() + 3), QPointF(box.right(), centre.y() + 3));
        break;
    case QStyle::SC_TitleBarMaxButton:
        painter.drawRect(box);
        break;
    case QStyle::SC_TitleBarNormalButton:
        painter.drawRect(box.adjusted(0, 2, -2, 0));
        painter.drawPolyline(QPolygonF{box.topLeft() + QPointF(2, 0), box.topRight(),
                                       box.bottomRight() - QPointF(0, 2)});
        break;
    default:
        painter.drawLine(box.topLeft(), box.bottomRight());
        painter.drawLine(box.bottomLeft(), box.topRight());
        break;
    }
}

} // namespace

LookStyle::LookStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void LookStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                   QPainter* painter, const QWidget* widget) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionTitleBar*>(option);
    if (control == CC_TitleBar && bar)
        drawTitleBar(*bar, *painter, widget);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void LookStyle::drawTitleBar(const QStyleOptionTitleBar& bar, QPainter& painter,
                             const QWidget* widget) const {
    const bool active = bar.titleBarState & Qt::WindowActive;
    painter.fillRect(bar.rect,
                     lookColor(active ? QStringLiteral("button") : QStringLiteral("panel")));
    painter.setPen(lookColor(QStringLiteral("line")));
    painter.drawLine(bar.rect.bottomLeft(), bar.rect.bottomRight());
    if (!bar.icon.isNull()) {
        constexpr int side = 16;
        QRect place(0, 0, side, side);
        place.moveCenter(
            proxy()->subControlRect(CC_TitleBar, &bar, SC_TitleBarSysMenu, widget).center());
        bar.icon.paint(&painter, place);
    }
    const QRect label = proxy()->subControlRect(CC_TitleBar, &bar, SC_TitleBarLabel, widget);
    painter.setPen(lookColor(active ? QStringLiteral("text") : QStringLiteral("dim")));
    painter.drawText(label.adjusted(4, 0, -4, 0), Qt::AlignVCenter | Qt::TextSingleLine,
                     bar.fontMetrics.elidedText(bar.text, Qt::ElideMiddle, label.width() - 8));
    for (const SubControl button : titleButtons)
        drawTitleButton(bar, button, painter, widget);
}

void LookStyle::drawTitleButton(const QStyleOptionTitleBar& bar, SubControl button,
                                QPainter& painter, const QWidget* widget) const {
    const bool minimised = bar.titleBarState & Qt::WindowMinimized;
    const bool maximised = bar.titleBarState & Qt::WindowMaximized;
    const bool wanted = button == SC_TitleBarNormalButton ? minimised || maximised
                        : button == SC_TitleBarMaxButton  ? !maximised
                        : button == SC_TitleBarMinButton  ? !minimised
                                                          : true;
    const QRect place = proxy()->subControlRect(CC_TitleBar, &bar, button, widget);
    if (!wanted || !place.isValid()) return;
    const bool hot = (bar.activeSubControls & button) && (bar.state & State_MouseOver);
    const bool closes = button == SC_TitleBarCloseButton;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (hot) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(lookColor(closes ? QStringLiteral("danger") : QStringLiteral("hover")));
        painter.drawRoundedRect(place, 4, 4);
    }
    const bool active = bar.titleBarState & Qt::WindowActive;
    const QColor ink = hot && closes
                           ? lookColor(QStringLiteral("base"))
                           : lookColor(active ? QStringLiteral("text") : QStringLiteral("dim"));
    painter.setPen(QPen(ink, 1.2));
    painter.setBrush(Qt::NoBrush);
    drawGlyph(button, QRectF(place).center(), painter);
    painter.restore();
}

// The frame of a document window: one line.
void LookStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                              QPainter* painter, const QWidget* widget) const {
    if (element != PE_FrameWindow) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    painter->save();
    painter->setPen(lookColor(option->state & State_Active ? QStringLiteral("border")
                                                           : QStringLiteral("line")));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

int LookStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                           const QWidget* widget) const {
    switch (metric) {
    case PM_MessageBoxIconSize:
        return 40;
    case PM_TitleBarHeight:
        return 28;
    case PM_MdiSubWindowFrameWidth:
        return 3;
    case PM_ToolBarIconSize:
        return 22;
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
        return 16;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int LookStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* data) const {
    switch (hint) {
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_EtchDisabledText:
    case SH_ComboBox_Popup:
        return 0;
    case SH_MessageBox_CenterButtons:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

QIcon LookStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                              const QWidget* widget) const {
    for (const NamedIcon& entry : icons) {
        if (entry.which != which) continue;
        const QIcon named = icon(QLatin1String(entry.name));
        if (!named.isNull()) return named;
    }
    return QProxyStyle::standardIcon(which, option, widget);
}

} // namespace kvn::dialogs
