// The list of the texture family.
#include "imaging/operations/families.h"
#include "imaging/operations/texture/halftone.h"
#include "imaging/operations/texture/mosaic.h"
#include "imaging/operations/texture/noise.h"

namespace kvn::imaging {

std::span<const Operation* const> textureOperations() {
    static constexpr const Operation* list[] = {&halftoneOperation, &mosaicOperation,
                                                &noiseOperation};
    return list;
}

} // namespace kvn::imaging
