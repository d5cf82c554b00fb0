// The last step of the means that are no plain averages: from the sum of the terms back to values.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::imaging {

enum class MeanKind {
    Geometric, // term: ln v / ln 255
    Harmonic,  // term: 1 / v
    PowerPlus, // term: (v / 255)^2
    PowerMinus // term: v^-2
};

// means[i] is the mean of the terms, in 2^-30; below 0 where a value 0 makes the result 0. Rounded
// to bytes.
void valuesOfMeans(MeanKind kind, const std::int32_t* means, std::uint8_t* out, std::size_t count);

} // namespace kvn::imaging
