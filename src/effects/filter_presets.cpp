// Filters at fixed strengths: one entry of a submenu each, no dialog.
#include <QVariant>

#include "document/frmMain.h"
#include "document/working_copy.h"
#include "effects/groups.h"
#include "engine/image_values.h"

namespace kvn::effects {
namespace {

constexpr Entry blurEntries[] = {
    preset(0, "Effects.Blur", {fixed(25), fixed(7), fixed(false)}),
    preset(1, "Effects.Blur", {fixed(50), fixed(7), fixed(false)}),
    preset(2, "Effects.Blur", {fixed(75), fixed(7), fixed(false)}),
    preset(3, "Effects.Blur", {fixed(100), fixed(7), fixed(false)}),
    preset(4, "Effects.GaussianBlur", {fixed(25)}),
    preset(5, "Effects.GaussianBlur", {fixed(50)}),
    preset(6, "Effects.GaussianBlur", {fixed(75)}),
    preset(7, "Effects.GaussianBlur", {fixed(100)}),
    preset(8, "Effects.GaussianBlur", {fixed(300)}),
    preset(9, "Effects.GaussianBlur", {fixed(500)}),
};
constexpr Entry edgeEntries[] = {
    preset(0, "Effects.EdgeDetection", {fixed(25)}),
    preset(1, "Effects.EdgeDetection", {fixed(50)}),
    preset(2, "Effects.EdgeDetection", {fixed(75)}),
    preset(3, "Effects.EdgeDetection", {fixed(100)}),
};
constexpr Entry sharpenEntries[] = {
    preset(0, "Effects.Sharpen", {fixed(25), fixed(3), fixed(true)}),
    preset(1, "Effects.Sharpen", {fixed(50), fixed(3), fixed(true)}),
    preset(2, "Effects.Sharpen", {fixed(75), fixed(3), fixed(true)}),
    preset(3, "Effects.Sharpen", {fixed(100), fixed(3), fixed(true)}),
};
constexpr Entry softenEntries[] = {
    preset(0, "Effects.Soften", {fixed(25)}),
    preset(1, "Effects.Soften", {fixed(50)}),
    preset(2, "Effects.Soften", {fixed(75)}),
    preset(3, "Effects.Soften", {fixed(100)}),
};
constexpr Entry vibrationEntries[] = {
    preset(0, "Effects.Vibration", {fixed(25)}),
    preset(1, "Effects.Vibration", {fixed(50)}),
    preset(2, "Effects.Vibration", {fixed(75)}),
    preset(3, "Effects.Vibration", {fixed(100)}),
};
constexpr Entry gammaEntries[] = {
    preset(0, "Effects.Gamma", {fixed(0.75)}),
    preset(1, "Effects.Gamma", {fixed(0.5)}),
    preset(2, "Effects.Gamma", {fixed(1.25)}),
    preset(3, "Effects.Gamma", {fixed(1.5)}),
};
constexpr Entry intensifyEntries[] = {
    preset(0, "Effects.Intensify", {fixed(25)}),  preset(1, "Effects.Intensify", {fixed(50)}),
    preset(2, "Effects.Intensify", {fixed(100)}), preset(3, "Effects.Intensify", {fixed(-25)}),
    preset(4, "Effects.Intensify", {fixed(-50)}), preset(5, "Effects.Intensify", {fixed(-100)}),
};
constexpr Entry unsharpEntries[] = {
    // level, strength, radius
    preset(0, "Effects.UnsharpMask", {fixed(0), fixed(1.0), fixed(2.4)}),
    preset(1, "Effects.UnsharpMask", {fixed(8), fixed(5.0), fixed(2.6)}),
    preset(2, "Effects.UnsharpMask", {fixed(0), fixed(29.0), fixed(5.0)}),
    preset(3, "Effects.UnsharpMask", {fixed(0), fixed(5.0), fixed(10.0)}),
};
constexpr Entry negativeEntries[] = {
    preset(0, "Effects.Negative", {fixedColor(0x0000FF)}), // red
    preset(1, "Effects.Negative", {fixedColor(0x00FF00)}),
    preset(2, "Effects.Negative", {fixedColor(0xFF0000)}),
};
constexpr Entry negativeWhiteEntries[] = {preset(-1, "Effects.Negative", {nothing})};
constexpr Entry flipEntries[] = {
    preset(0, "Geometry.Flip", {fixed(0)}),
    preset(1, "Geometry.Flip", {fixed(1)}),
};

constexpr Group blur{blurEntries};
constexpr Group edge{edgeEntries};
constexpr Group sharpen{sharpenEntries};
constexpr Group soften{softenEntries};
constexpr Group vibration{vibrationEntries};
constexpr Group gamma{gammaEntries};
constexpr Group intensify{intensifyEntries};
constexpr Group unsharp{unsharpEntries};
constexpr Group negative{negativeEntries};
constexpr Group negativeWhite{negativeWhiteEntries};
constexpr Group flip{flipEntries, Trap::RaiseError};

// Dilation, Erosion, Open, Close, TopHat, all with the same kernel.
void morphology(frmMain& document, int index) {
    document::SetImage2Buffer(document);
    const engine::Table kernel{3, 3, {1, 1, 1, 1, 2, 1, 1, 1, 1}};
    runOnCopy(document, "Effects.Morphology", {QVariant::fromValue(kernel), index});
    document::UpdateImage(document, document.ImgX->Image());
}

// The colour comes from a window with a preview, which runs the filter itself.
void negativeByColor(frmMain& document, int) {
    document::SetImage2Buffer(document);
    document::callMember(document, QStringLiteral("frmNegativeColor"));
    document::UpdateImage(document, document.ImgX->Image());
}

constexpr document::Command commands[] = {
    groupCommand<blur>("FiltersBlurAction"),
    groupCommand<edge>("EdgeDetectionAction"),
    groupCommand<sharpen>("FiltersSharpenAction"),
    groupCommand<soften>("FiltersSoftenAction"),
    groupCommand<vibration>("FiltersVibrationAction"),
    groupCommand<gamma>("FiltersGammaAction"),
    groupCommand<intensify>("FiltersIntensifyAction"),
    groupCommand<unsharp>("FiltersUnsharpMaskAction"),
    groupCommand<negative>("FiltersNegativeCols"),
    groupCommand<negativeWhite>("FiltersNegativeWhite"),
    {"FiltersNegativeColor", negativeByColor},
    {"FiltersMorpho", morphology},
    groupCommand<flip>("EffectsFlip"),
};

} // namespace

std::span<const document::Command> filterPresets() {
    return commands;
}

} // namespace kvn::effects
