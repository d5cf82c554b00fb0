// A picture's rows without padding, as libraries take it that know no stride.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "imaging/raster.h"

namespace kvn::bench {

inline std::vector<std::uint8_t> packed(const imaging::Raster& raster) {
    const std::size_t bytes = raster.rowBytes();
    std::vector<std::uint8_t> result(bytes * static_cast<std::size_t>(raster.height()));
    for (int y = 0; y < raster.height(); ++y)
        std::copy_n(raster.view().row(y), bytes,
                    result.begin() + static_cast<std::ptrdiff_t>(bytes) * y);
    return result;
}

} // namespace kvn::bench
