// The numbered commands of the Effects and Transforms menus.
#include <QLineEdit>

#include "basic/error.h"
#include "basic/numbers.h"
#include "document/frmMain.h"
#include "document/tools.h"
#include "effects/groups.h"
#include "effects/lists.h"
#include "effects/parameters.h"
#include "engine/operations.h"

namespace kvn::effects {
namespace {

constexpr quint32 white = 0xFFFFFF;

// --- Resize

constexpr const char* methods[] = {
    "Bi-Linear",       "Bi-Cubic",        "Simple",         "Decimate",        "Default",
    "Box Filter",      "Triangle Filter", "Hamming Filter", "Triangle Filter", "Gaussian Filter",
    "Bell Filter",     "B-Spline Filter", "Cubic1 Filter",  "Cubic2 Filter",   "Triangle Filter",
    "Lanczos3 Filter", "Mitchell Filter", "Sinc Filter",    "Hermite Filter",  "Triangle Filter",
    "Hanning Filter",  "Catrom Filter"};
constexpr int decimate = 3;
enum ResizeRow { widthRow, heightRow, methodRow, keepRow };
constexpr Row resizeRows[] = {
    pictureWidth("Width:"),
    pictureHeight("Height:"),
    list("Method:", methods, decimate),
    check("Keep Aspect Ratio:", true),
};

// The other side follows the one that was typed. A number that fits no side leaves it alone.
void keepAspect(frmMain& document, frmDialog& dialog, int row) {
    if (row > heightRow || !dialog.isChecked(keepRow)) return;
    const double width = document.imgxAction->Info().Width();
    const double height = document.imgxAction->Info().Height();
    const double factor = row == widthRow ? height / width : width / height;
    try {
        const int other = toInt32(dialog.number(row) * factor);
        dialog.txtText(row == widthRow ? heightRow : widthRow)->setText(QString::number(other));
    } catch (const RuntimeError&) {
    }
}

constexpr Entry resize() {
    Entry entry = asking(2, "Resize", resizeRows, "Geometry.Resize",
                         {integer(widthRow), integer(heightRow), item(methodRow)});
    entry.follow = keepAspect;
    return entry;
}

// --- Add Border

constexpr Row borderRows[] = {
    text("Border Thickness", "10"),
    color("Border Color", 0),
    text("Border Opacity", "255"),
};

void addBorder(frmMain& document, frmDialog& dialog) {
    if (!ask(document, dialog, "Add Border", borderRows)) return;
    const engine::Info info = document.imgxAction->Info();
    const double thickness = toInt32(dialog.number(0));
    const engine::Color color =
        engine::Utility().ColorFromValue(dialog.color(1), toByte(dialog.number(2)));
    document.imgxAction->Geometry().ResizeCanvas(toInt32(thickness + thickness + info.Width()),
                                                 toInt32(thickness + thickness + info.Height()),
                                                 color, toInt32(thickness), toInt32(thickness), {});
}

// --- Warp Image

void armWarp(frmMain& document, frmDialog&) {
    plainBox(document, QStringLiteral("Drag a line to warp the image"));
    if (!document.WarpArmed) document.modeBeforeWarp = document.ImgX->ToolMode();
    document.imgxAction->setToolMode(document::lineMode);
    document.ImgX->setToolMode(document::lineMode); // the user drags on the shown picture
    document.WarpArmed = true;
}

// --- rows of the others

constexpr Row canvasRows[] = {
    pictureWidth("Width:"), pictureHeight("Height:"),      text("Offset X:", "0"),
    text("Offset Y:", "0"), color("Background Color:", 0), text("Opacity:", "255"),
};
constexpr Row rotateRows[] = {text("Angle:", "90"), color("Background Color:", 0)};
constexpr const char* directions[] = {"Horizontal", "Vertical"};
constexpr Row skewRows[] = {
    list("Direction:", directions, 0),
    text("Offset:", "40"),
    color("BackColor:", white),
    check("Fast"),
};
constexpr Row replaceRows[] = {
    color("Old Color:", white),
    color("New Color:", white),
    text("Tolerance [0..100]:", "1"),
    text("Opacity [0..255]:", "255"),
};
constexpr Row bevelRows[] = {
    text("Bevel Size:", "10"),
    text("Left Bright Percent:", "140"),
    text("Top Bright Percent:", "140"),
    text("Right Bright Percent:", "80"),
    text("Bottom Bright Percent:", "80"),
    text("Smoothness [0..500]:", "100"),
};
constexpr Row crackleRows[] = {text("Depth [1..100]:", "50"), text("Mode [0..4]:", "0")};
constexpr Row stretchRows[] = {
    text("Low Limit:", "0"),
    text("High Limit:", "255"),
    list("Channel Mask:", channelMasks, allChannels),
};
constexpr Row equalizeRows[] = {
    text("Low Threshold:", "0"),
    text("High Threshold:", "255"),
    list("Channel Mask:", channelMasks, allChannels),
};
constexpr const char* blurStyles[] = {"Linear", "Radial", "Zoom"};
constexpr Row motionRows[] = {
    text("Distance:", "10"),
    text("Steps:", "2"),
    text("Angle:", "90"),
    list("Style:", blurStyles, 0),
};
constexpr Row embossRows[] = {
    text("Depth:", "5"),
    text("Angle:", "45"),
    text("Softness:", "100"),
    color("Shadow Color:", 0),
    text("Shadow Opacity:", "255"),
    color("Highlight Color:", white),
    text("Highlight Opacity:", "255"),
};
constexpr Row hugoRows[] = {
    text("Width:", "100"),        text("Height:", "100"),
    text("Octaves:", "3"),        text("Smoothness [0..100]:", "50"),
    text("Size [0..100]:", "50"),
};
constexpr Row perlinRows[] = {
    text("Width:", "100"),
    text("Height:", "100"),
    text("Size [0..100]:", "50"),
};

// --- the group. Indexes that are missing here are submenus and separators.

constexpr Entry entries[] = {
    resize(),
    asking(3, "Resize Canvas", canvasRows, "Geometry.ResizeCanvas",
           {integer(0), integer(1), colorOf(4, 5), integer(2), integer(3)}),
    asking(4, "Rotate", rotateRows, "Geometry.Rotate", {single(0), colorOf(1), fixed(0)}),
    asking(5, "Skew", skewRows, "Geometry.Skew", {item(0), integer(1), colorOf(2), flag(3)}),
    // The opacity gives the colours none: only whether it is zero matters.
    asking(9, "Replace Color", replaceRows, "Geometry.ReplaceColor",
           {colorOf(0), colorOf(1), real(2), notZero(3)}),
    handled(11, addBorder),
    asking(12, "Bevel Edge", bevelRows, "Geometry.BevelEdge",
           {integer(0), integer(1), integer(2), integer(3), integer(4), real(5)}),
    asking(13, "Crackle", crackleRows, "Geometry.Crackle", {integer(0), integer(1)}),
    asking(16, "Histogram Stretch", stretchRows, "Geometry.HistogramStretch",
           {integer(0), integer(1), item(2)}),
    // Users know it under the title of its sister.
    asking(17, "Histogram Stretch", equalizeRows, "Geometry.HistogramEqualize",
           {integer(0), integer(1), item(2)}),
    asking(18, "Motion Blur", motionRows, "Geometry.MotionBlur",
           {real(0), integer(1), real(2), item(3)}),
    handled(23, armWarp),
    asking(24, "Emboss Shape", embossRows, "Geometry.EmbossShape",
           {integer(0), integer(1), integer(2), colorOf(3, 4), colorOf(5, 6)}),
    asking(26, "Hugo Noise", hugoRows, "Geometry.HugoNoise",
           {integer(0), integer(1), integer(2), integer(3), integer(4)}),
    asking(27, "Perlin Noise", perlinRows, "Geometry.PerlinNoise",
           {integer(0), integer(1), integer(2)}),
};

constexpr Group effects{entries, Trap::RaiseError, true};

constexpr document::Command commands[] = {groupCommand<effects>("Effects")};

} // namespace

std::span<const document::Command> effectsGroup() {
    return commands;
}

} // namespace kvn::effects
