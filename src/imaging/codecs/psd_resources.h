// The image resources of a PSD file: what it says beside its pixels.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "imaging/metadata.h"

namespace kvn::imaging {

struct PsdResources {
    Metadata metadata;
    std::optional<std::size_t> colorCount;       // of an indexed picture's palette
    std::optional<std::size_t> transparentIndex; // likewise
};

// Broken blocks end the list. Blocks that are about this file's own layers, channels, thumbnail
// or size are left out of the metadata's image resources.
PsdResources readPsdResources(std::span<const std::uint8_t> section);

// The section's content, without its length.
Bytes psdResourcesOf(const Metadata& metadata, const PsdResources& more);

} // namespace kvn::imaging
