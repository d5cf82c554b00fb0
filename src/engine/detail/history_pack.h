// Lossless packing of rows of 8-bit samples at close to the speed of memory.
//
// A byte is predicted by the one above it (in the first row by the pixel to the left). The
// differences, folded so that small ones of either sign become small numbers, are kept in groups
// with as many bits each as the largest of the group needs. There is no search for repeats and
// no entropy code: the noise of a photograph gives neither much to find, and both cost more time
// than a step back may take.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn::engine::detail {

struct PackShape {
    std::size_t width = 0;      // bytes of a row
    int rows = 0;               //
    std::size_t pixelBytes = 1; // distance to the same channel of the next pixel

    std::size_t size() const { return width * static_cast<std::size_t>(rows); }
};

// The most bytes that packRows may write.
std::size_t packedBound(const PackShape& shape);

// Returns the number of bytes written to `out`. Rows of `data` are `stride` bytes apart.
std::size_t packRows(const PackShape& shape, const std::uint8_t* data, std::size_t stride,
                     std::uint8_t* out);

// The way back, for what packRows wrote with the same shape.
void unpackRows(const PackShape& shape, const std::uint8_t* packed, std::uint8_t* data,
                std::size_t stride);

} // namespace kvn::engine::detail
