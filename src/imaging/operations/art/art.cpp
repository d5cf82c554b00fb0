// The list of the art family.
#include "imaging/operations/art/art.h"

#include "imaging/operations/families.h"

namespace kvn::imaging {

std::span<const Operation* const> artOperations() {
    static constexpr const Operation* list[] = {
        &bevelEdgeOperation, &crackleOperation,    &dropShadowOperation, &embossShapeOperation,
        &gauzyOperation,     &motionBlurOperation, &scribbleOperation,   &stippleOperation,
    };
    return list;
}

} // namespace kvn::imaging
