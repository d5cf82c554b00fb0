// The list of the tone family.
#include "imaging/operations/families.h"
#include "imaging/operations/tone/curves.h"

namespace kvn::imaging {

std::span<const Operation* const> toneOperations() {
    static constexpr const Operation* list[] = {
        &brightnessContrastOperation, &gammaOperation,     &intensifyOperation,
        &negativeOperation,           &posterizeOperation, &solarizeOperation,
    };
    return list;
}

} // namespace kvn::imaging
