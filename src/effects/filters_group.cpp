// The numbered commands of the Filters menu.
#include "dialogs/asking.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "effects/groups.h"
#include "effects/lists.h"
#include "effects/parameters.h"
#include "engine/operations.h"

namespace kvn::effects {
namespace {

// --- Red Eye Reduction

constexpr Row redEyeRows[] = {
    text("Saturation Level [0..100]:", "50"),
    text("Color Range [0..100]:", "50"),
};

// The rectangle to search, in the working copy's pixels. With a selection the copy is nothing
// else; a region without one lies in the whole picture.
struct Box {
    int left, top, width, height;
};
Box redEyeBox(const frmMain& document) {
    const engine::Info copy = document.imgxAction->Info();
    if (document.services().state.HasSelection) return {0, 0, copy.Width(), copy.Height()};
    const engine::ImgX& shown = *document.ImgX;
    return {shown.RegionLeft(), shown.RegionTop(), shown.RegionWidth(), shown.RegionHeight()};
}

void redEye(frmMain& document, frmDialog& dialog) {
    if (!document.ImgX->HasRegion()) {
        plainBox(document, QStringLiteral("Please select a region to apply the red eye filter to"));
        return;
    }
    if (!ask(document, dialog, "Red Eye Reduction", redEyeRows)) return;
    const Box box = redEyeBox(document);
    QVariantList arguments{box.left, box.top, box.left + box.width, box.top + box.height};
    arguments += read({integer(0), integer(1)}, &dialog);
    runOnCopy(document, "Effects.RedEyeReduction", arguments);
}

// --- Duotone

void duotone(frmMain& document, frmDialog&) {
    const document::Services& services = document.services();
    const auto chosen = services.asking.color(services.state.ForeColor, &document);
    if (!chosen) return;
    document.imgxAction->Effects().Duotone(engine::Utility().ColorFromValue(*chosen, 255), {});
}

// --- Normalized Difference

void normalizedDifference(frmMain& document, frmDialog&) {
    engine::ImgX& copy = *document.imgxAction;
    copy.Channels().Split({});
    engine::Image red(document.services().engine);
    red.setTraceIdentity(document.DocIndex, QStringLiteral("Image"));
    red.Images().Add(copy.Images().Item(0), 0, 1, {});
    red.Effects().NormalizedDifference(copy.Images().Item(1), 0, 1.0, 0.0, {});
    copy.Import().FromImgX(red, 0,
                           QStringLiteral("Normalized Difference (Red Channel - Green Channel)"));
}

// --- windows with a preview. Each is a command of its own, entered by the folder that has it.

void brightnessContrast(frmMain& document, frmDialog&) {
    document::callMember(document, QStringLiteral("frmBrightContrast"));
}
void colorize(frmMain& document, frmDialog&) {
    document::callMember(document, QStringLiteral("frmColorize"));
}

// --- rows of the others

constexpr Row autoRows[] = {
    text("Low Threshold:", "8"),
    text("High Threshold:", "248"),
    check("Even Distribution"),
};
constexpr Row embossRows[] = {
    text("Angle:", "45"),
    text("Elevation:", "45"),
    text("Offset:", "4"),
    check("Use image as texture"),
};
constexpr Row medianRows[] = {text("Filter Size:", "3"), check("Ignore Alpha")};
constexpr Row meanRows[] = {text("Filter Size:", "3"), check("Ignore Alpha", true)};
constexpr Row ypRows[] = {
    text("Filter Size:", "3"),
    check("Remove Positive Outliers"),
    check("Ignore Alpha", true),
};
constexpr Row mosaicRows[] = {
    text("Block X Size:", "10"),
    text("Block Y Size:", "10"),
    list("Channels:", channelMasks, allChannels),
};
constexpr const char* noiseTypes[] = {"Gaussian", "Negative Exponential", "Rayleigh", "Uniform"};
constexpr Row noiseRows[] = {
    list("Noise Type:", noiseTypes, 0),
    text("Variance:", "100"),
    check("Monochromatic"),
    check("Ignore Alpha", true),
};
constexpr Row thresholdRows[] = {
    text("Low [0..255]:", "30"),
    text("High [0..255]:", "255"),
    check("Ignore Alpha", true),
};
constexpr Row cannyRows[] = {
    text("Intensity:", "100"),
    text("Low [0..100]:", "40"),
    text("High [0..100]:", "40"),
};
constexpr Row halftoneRows[] = {text("Max Dot Size:", "3"), check("Smooth Dots")};
constexpr Row tintRows[] = {text("Tint [-100..100]:", "0")};
constexpr Row saturationRows[] = {text("Saturation Level [0.0..10.0]", "1")};
constexpr Row highPassRows[] = {text("Radius", "20")};

// --- the group. Indexes that are missing here are submenus and separators.

constexpr Entry entries[] = {
    asking(0, "AutoBrightness", autoRows, "Effects.AutoBrightness", {byte(0), byte(1), flag(2)}),
    handled(2, brightnessContrast),
    handled(3, colorize),
    preset(4, "Effects.Despeckle"),
    asking(6, "Emboss", embossRows, "Effects.Emboss",
           {integer(0), integer(1), integer(2), flag(3)}),
    asking(9, "Median Cut", medianRows, "Effects.MedianCut", {integer(0), flag(1)}),
    asking(11, "Mosaic", mosaicRows, "Effects.Mosaic", {integer(0), integer(1), item(2)}),
    handled(13, redEye),
    handled(23, normalizedDifference),
    asking(24, "Arithmetic Mean", meanRows, "Effects.ArithmeticMean", {integer(0), flag(1)}),
    asking(25, "Harmonic Mean", meanRows, "Effects.HarmonicMean", {integer(0), flag(1)}),
    asking(26, "Yp Mean", ypRows, "Effects.YpMean", {integer(0), flag(1), flag(2)}),
    asking(30, "Geometric Mean", meanRows, "Effects.GeometricMean", {integer(0), flag(1)}),
    asking(31, "Noise", noiseRows, "Effects.Noise", {item(0), integer(1), flag(2), flag(3)}),
    asking(32, "Threshold", thresholdRows, "Effects.Threshold", {integer(0), integer(1), flag(2)}),
    asking(33, "Canny Edge Detection", cannyRows, "Effects.CannyEdge",
           {integer(0), integer(1), integer(2)}),
    handled(34, duotone),
    preset(35, "Effects.Posterize"),
    asking(36, "Halftone", halftoneRows, "Effects.Halftone", {integer(0), flag(1)}),
    preset(37, "Effects.Solarize", {fixed(0)}),
    asking(38, "Tint", tintRows, "Effects.Tint", {integer(0)}),
    asking(39, "Saturation", saturationRows, "Effects.Saturation", {real(0)}),
    asking(40, "High Pass", highPassRows, "Effects.HighPass", {real(0)}),
};

constexpr Group filters{entries, Trap::RaiseError, true};

constexpr document::Command commands[] = {groupCommand<filters>("Filters")};

} // namespace

std::span<const document::Command> filtersGroup() {
    return commands;
}

} // namespace kvn::effects
