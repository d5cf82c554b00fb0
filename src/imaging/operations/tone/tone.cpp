// The list of the tone family.
#include "imaging/operations/families.h"
#include "imaging/operations/tone/color_mixes.h"
#include "imaging/operations/tone/curves.h"
#include "imaging/operations/tone/levels.h"

namespace kvn::imaging {

std::span<const Operation* const> toneOperations() {
    static constexpr const Operation* list[] = {
        &autoBrightnessOperation,
        &brightnessContrastOperation,
        &colorizeOperation,
        &duotoneOperation,
        &gammaOperation,
        &histogramEqualizeOperation,
        &histogramStretchOperation,
        &intensifyOperation,
        &negativeOperation,
        &normalizedDifferenceOperation,
        &posterizeOperation,
        &replaceColorOperation,
        &saturationOperation,
        &solarizeOperation,
        &thresholdOperation,
        &tintOperation,
    };
    return list;
}

} // namespace kvn::imaging
