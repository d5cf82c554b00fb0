// The one layer of a picture that has no others: its colours are not blended with white, as those
// of the merged picture are, and so nothing is lost where alpha is low.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "imaging/metadata.h"

namespace kvn::imaging {

// Channels in the order of the colours, alpha last; each begins with its compression's number.
using PsdChannels = std::vector<std::span<const std::uint8_t>>;

// The channels of the only layer in the layer section of a file of 8 bits a channel, if it has
// alpha and shows just what the merged picture shows: it covers the picture, is visible and
// opaque, and has no mask, effect or unknown property. Empty otherwise.
PsdChannels coveringPsdLayer(std::span<const std::uint8_t> section, int width, int height,
                             int colors);

// The layer section up to the channels' data, which are to follow in their order, and then the
// end: `dataBytes` are their sizes.
struct PsdLayerFrame {
    Bytes start;
    Bytes end;
};
PsdLayerFrame psdLayerFrame(int width, int height, const std::vector<std::uint64_t>& dataBytes);

} // namespace kvn::imaging
