// The list of the channel family.
#include "imaging/operations/channels/adjust.h"
#include "imaging/operations/channels/alpha.h"
#include "imaging/operations/channels/rearrange.h"
#include "imaging/operations/families.h"

namespace kvn::imaging {

std::span<const Operation* const> channelOperations() {
    static constexpr const Operation* list[] = {
        &adjustHslLiteralOperation,
        &adjustHslPercentOperation,
        &adjustLiteralOperation,
        &adjustPercentOperation,
        &alphaByColorOperation,
        &alphaFromImageOperation,
        &alphaTableOperation,
        &antialiasAlphaOperation,
        &clearAlphaOperation,
        &constantAlphaOperation,
        &desaturateOperation,
        &flattenAlphaOperation,
        &shiftOperation,
        &splitOperation,
        &swizzleOperation,
    };
    return list;
}

} // namespace kvn::imaging
