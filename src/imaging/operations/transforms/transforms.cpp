// The list of the distortions.
#include "imaging/operations/transforms/transforms.h"

#include "imaging/operations/families.h"

namespace kvn::imaging {

std::span<const Operation* const> transformOperations() {
    static constexpr const Operation* list[] = {
        &bumpMapOperation, &customOperation, &lensOperation,   &lineSliceOperation,
        &marbleOperation,  &offsetOperation, &perlinOperation, &pinchOperation,
        &randomOperation,  &rippleOperation, &spinOperation,   &spinWaveOperation,
        &warpOperation,    &waveOperation,   &wowOperation,    &zigZagOperation,
    };
    return list;
}

} // namespace kvn::imaging
