// The list of the filters family.
#include "imaging/operations/families.h"
#include "imaging/operations/filters/blur.h"
#include "imaging/operations/filters/means.h"
#include "imaging/operations/filters/rank.h"

namespace kvn::imaging {

std::span<const Operation* const> filterOperations() {
    static constexpr const Operation* list[] = {
        &arithmeticMeanOperation, &blurOperation,         &gaussianBlurOperation,
        &geometricMeanOperation,  &harmonicMeanOperation, &maximumOperation,
        &medianCutOperation,      &minimumOperation,      &sharpenOperation,
        &softenOperation,         &ypMeanOperation,
    };
    return list;
}

} // namespace kvn::imaging
