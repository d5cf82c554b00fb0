// The list of the resampling family.
#include "imaging/operations/resample/resample.h"

#include "imaging/operations/families.h"
#include "imaging/operations/resample/deskew.h"

namespace kvn::imaging {

std::span<const Operation* const> resampleOperations() {
    static constexpr const Operation* list[] = {
        &autoCropOperation, &autoDeskewOperation, &perspectiveOperation, &perspectiveMapOperation,
        &resizeOperation,   &rotateOperation,     &skewOperation,
    };
    return list;
}

} // namespace kvn::imaging
