// The list of the filters family.
#include "imaging/operations/families.h"
#include "imaging/operations/filters/blur.h"
#include "imaging/operations/filters/brightest.h"
#include "imaging/operations/filters/canny.h"
#include "imaging/operations/filters/convolve.h"
#include "imaging/operations/filters/detail.h"
#include "imaging/operations/filters/emboss.h"
#include "imaging/operations/filters/means.h"
#include "imaging/operations/filters/morphology.h"
#include "imaging/operations/filters/rank.h"

namespace kvn::imaging {

std::span<const Operation* const> filterOperations() {
    static constexpr const Operation* list[] = {
        &applyFilterOperation,   &applyMatrixOperation,  &arithmeticMeanOperation,
        &blurOperation,          &cannyEdgeOperation,    &despeckleOperation,
        &edgeDetectionOperation, &gaussianBlurOperation, &geometricMeanOperation,
        &harmonicMeanOperation,  &highPassOperation,     &maximumOperation,
        &maximum2Operation,      &medianCutOperation,    &embossOperation,
        &morphologyOperation,    &minimumOperation,      &sharpenOperation,
        &softenOperation,        &unsharpMaskOperation,  &vibrationOperation,
        &ypMeanOperation,
    };
    return list;
}

} // namespace kvn::imaging
