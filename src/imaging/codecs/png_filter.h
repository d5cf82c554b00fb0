// PNG's five row filters (PNG 1.2, chapter 6), both ways.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kvn::imaging {

// Picks the filter whose residues have the smallest sum of absolute values, taken as signed
// bytes, and writes filter number and residues: the usual rule for 8-bit samples.
class PngRowFilter {
  public:
    // `pixelBytes`: whole bytes of a pixel, at least 1.
    PngRowFilter(std::size_t rowBytes, std::size_t pixelBytes);

    // `above` is null for the first row of a picture. `to` takes 1 + rowBytes bytes.
    void filter(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* to);

  private:
    std::size_t rowBytes_, pixelBytes_;
    std::vector<std::uint8_t> row_, above_; // with blank bytes before the first pixel
    std::vector<std::uint8_t> trial_;
};

// Undoes the filter `filter` on a row: `residues` has `rowBytes` bytes, `above` is the decoded row
// before (zeros for the first), `row` takes the result. False for an unknown filter.
bool unfilterPngRow(int filter, const std::uint8_t* residues, const std::uint8_t* above,
                    std::uint8_t* row, std::size_t rowBytes, std::size_t pixelBytes);

} // namespace kvn::imaging
