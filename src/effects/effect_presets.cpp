// Effects at fixed strengths. "Custom..." and "X Colors..." of their submenus ask for the numbers.
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/services.h"
#include "document/working_copy.h"
#include "effects/groups.h"
#include "engine/operations.h"

namespace kvn::effects {
namespace {

constexpr int custom = 0; // index 1 is the separator below it

// --- Drop Shadow: offset x, offset y, colour, blur, increase canvas

constexpr const char* shadow = "Geometry.DropShadow";
constexpr Row shadowRows[] = {
    text("OffsetX:", "10"),    text("OffsetY:", "10"),    text("Opacity:", "125"),
    color("Shadow Color:", 0), text("BlurLevel:", "255"), check("Increase Canvas:", true),
};
constexpr quint32 yellow = 0x00FFFF, pink = 0xC080FF; // 24-bit values, red in the low byte
constexpr Entry shadowEntries[] = {
    asking(custom, "Drop Shadow", shadowRows, shadow,
           {integer(0), integer(1), colorOf(3, 2), real(4), flag(5)}),
    preset(2, shadow, {fixed(10), fixed(10), nothing, fixed(255.0), fixed(true)}),
    preset(3, shadow, {fixed(10), fixed(10), nothing, fixed(63.0), fixed(true)}),
    preset(4, shadow, {fixed(3), fixed(3), nothing, fixed(255.0), fixed(false)}),
    preset(5, shadow, {fixed(20), fixed(30), fixedColor(yellow, 127), fixed(255.0), fixed(true)}),
    preset(6, shadow, {fixed(-10), fixed(10), fixedColor(pink, 127), fixed(255.0), fixed(true)}),
};

// --- Gauzy: blur, sharpen, clarity, mode

constexpr const char* gauzy = "Geometry.Gauzy";
constexpr const char* gauzyModes[] = {"Desaturated", "Full Color", "High Contrast", "Max", "Min"};
constexpr Row gauzyRows[] = {
    text("Blur [0..100]:", "20"), text("Sharpen [0..100]:", "20"), text("Clarity [0..100]:", "20"),
    list("Mode:", gauzyModes, -1), // -1 goes on unless the user chooses
};
constexpr Entry gauzyEntries[] = {
    asking(custom, "Gauzy", gauzyRows, gauzy, {integer(0), integer(1), integer(2), item(3)}),
    preset(2, gauzy, {fixed(50), fixed(60), fixed(50), fixed(0)}),
    preset(3, gauzy, {fixed(50), fixed(60), fixed(100), fixed(2)}),
    preset(4, gauzy, {fixed(50), fixed(60), fixed(50), fixed(1)}),
    preset(5, gauzy, {fixed(20), fixed(60), fixed(50), fixed(3)}),
};

// --- Scribble: line darkness, filter, filter first

constexpr const char* scribble = "Geometry.Scribble";
constexpr const char* scribbleFilters[] = {"Blurred", "Filtered", "Posterized", "Despeckled"};
constexpr Row scribbleRows[] = {
    text("Line Darkness [0..100]:", "20"),
    list("Filter:", scribbleFilters, 0),
    check("Filter First"),
};
constexpr Entry scribbleEntries[] = {
    asking(custom, "Scribble", scribbleRows, scribble, {integer(0), item(1), flag(2)}),
    preset(2, scribble, {fixed(100), fixed(0), fixed(true)}),
    preset(3, scribble, {fixed(50), fixed(1), fixed(true)}),
    preset(4, scribble, {fixed(50), fixed(2), fixed(true)}),
    preset(5, scribble, {fixed(30), fixed(3), fixed(false)}),
};

// --- Stipple: size, filter, filter first

constexpr const char* stipple = "Geometry.Stipple";
constexpr const char* stippleFilters[] = {"Arithmetic Mean", "Minimum", "Maximum", "Geometric Mean",
                                          "Yp Mean"};
constexpr Row stippleRows[] = {
    text("Size [0..100]:", "20"),
    list("Filter:", stippleFilters, 0),
    check("Filter First"),
};
constexpr Entry stippleEntries[] = {
    asking(custom, "Stipple", stippleRows, stipple, {integer(0), item(1), flag(2)}),
    preset(2, stipple, {fixed(50), fixed(0), fixed(true)}),
    preset(3, stipple, {fixed(100), fixed(3), fixed(true)}),
    preset(4, stipple, {fixed(75), fixed(4), fixed(true)}),
    preset(5, stipple, {fixed(20), fixed(1), fixed(false)}),
};

// --- Thumbnail: width, height (0 keeps the aspect), method

constexpr Entry thumbnailEntries[] = {
    preset(0, "Geometry.Resize", {fixed(100), fixed(0), fixed(3)}), // Decimate
    preset(1, "Geometry.Resize", {fixed(100), fixed(0), fixed(0)}), // Bi-Linear
};

// --- Dither: colours

constexpr const char* dither = "Geometry.Dither";
constexpr Entry colors(int index) {
    return preset(index, dither, {fixed(2 << index), fixed(true), fixed(true)});
}
constexpr Row ditherRows[] = {text("Number of colors [2..255]:", "255")};
constexpr Entry ditherEntries[] = {
    colors(0),
    colors(1),
    colors(2),
    colors(3),
    colors(4),
    colors(5),
    colors(6),
    colors(7),
    asking(9, "Dither Image", ditherRows, dither, {integer(0), fixed(true), fixed(true)}),
};

constexpr Group dropShadows{shadowEntries};
constexpr Group gauzies{gauzyEntries};
constexpr Group scribbles{scribbleEntries};
constexpr Group stipples{stippleEntries};
constexpr Group thumbnails{thumbnailEntries, Trap::Numbered};
constexpr Group dithers{ditherEntries, Trap::PlainBox};

// --- AutoDeskew

void autoDeskew(frmMain& document, int) {
    document::SetImage2Buffer(document);
    engine::ImgX& copy = *document.imgxAction;
    if (copy.Info().ColorDepth() != 1) {
        plainBox(document, QStringLiteral("You can only use AutoDeskew on 1-bit images."));
        return;
    }
    const engine::ImgX& shown = *document.ImgX;
    if (shown.HasRegion())
        copy.Geometry().AutoDeskew(2, 4, 1, shown.RegionLeft(), shown.RegionTop(),
                                   shown.RegionWidth(), shown.RegionHeight(), {});
    else
        copy.Geometry().AutoDeskew(2, 4, 1, 0, 0, 0, 0, {});
    document::UpdateImage(document, document.ImgX->Image());
}

constexpr document::Command commands[] = {
    groupCommand<dropShadows>("EffectsDropShadow"),
    groupCommand<gauzies>("EffectsGauzy"),
    groupCommand<scribbles>("EffectsScribble"),
    groupCommand<stipples>("EffectsStipple"),
    groupCommand<thumbnails>("EffectsThumbnail"),
    groupCommand<dithers>("EffectsDither"),
    {"EffectsAutoDeskew", autoDeskew},
};

} // namespace

std::span<const document::Command> effectPresets() {
    return commands;
}

} // namespace kvn::effects
