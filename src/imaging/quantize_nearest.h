// Finding the nearest of up to 256 palette colours, exactly and fast.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/palette.h"
#include "imaging/quantize_metric.h"

namespace kvn::imaging {

// The space is cut into cells. To each cell belong the entries that are nearest to some point of
// it, and a search looks at those only (S. W. Thomas, "Efficient inverse color map computation",
// 1991). Cells are filled when first visited, so each thread has a NearestColors of its own.
class NearestColors {
  public:
    // Entries that are searched together: red and green in pairs, blue and alpha in pairs. Unused
    // places repeat the first entry.
    static constexpr std::size_t blockSize = 8;
    struct alignas(32) Block {
        std::array<std::int16_t, 2 * blockSize> redGreen;
        std::array<std::int16_t, 2 * blockSize> blueAlpha;
        std::array<std::int32_t, blockSize> entry;
    };
    struct Blocks {
        const Block* begin;
        const Block* end;
    };

    // Without alpha every entry counts as opaque. The palette may not be empty.
    NearestColors(const Palette& palette, bool withAlpha);

    // What is to be searched for the colour; valid until the next call. One block at least. The
    // space must be the one with alpha or without, as the constructor was told.
    template <bool withAlpha>
    Blocks blocksAt(PackedSpot spot) {
        Cell& cell = cells_[numberOf < withAlpha ? 4 : 3 > (spot, cellBits(withAlpha))];
        if (cell.count == 0) fill(cell, spot);
        const Block* begin = blocks_.data() + cell.start;
        return {begin, begin + cell.count};
    }
    bool withAlpha() const { return axes_ == 4; }
    const std::vector<Spot>& entries() const { return entries_; }

  private:
    struct Cell {
        std::uint32_t start = 0;
        std::uint32_t count = 0; // 0: not yet filled
    };
    using Entries = std::vector<std::int16_t>;

    // Bits of a cell's number, an axis.
    static constexpr int cellBits(bool withAlpha) { return withAlpha ? 5 : 6; }
    static constexpr int regionBits(bool withAlpha) { return withAlpha ? 2 : 3; }

    template <int axes>
    static std::size_t numberOf(PackedSpot spot, int bits) {
        const std::uint64_t mask = (1u << bits) - 1;
        std::uint64_t number = 0;
        for (int k = 0; k < axes; ++k)
            number = number << bits | ((spot >> (16 * k + 8 - bits)) & mask);
        return number;
    }
    void fill(Cell& cell, PackedSpot spot);
    Entries candidates(const Spot& spot, int bits, const Entries& from) const;

    std::vector<Spot> entries_;
    std::size_t axes_;
    std::vector<Cell> cells_;
    std::vector<Block> blocks_;
    // The candidates of larger cells, from which those of the cells are taken.
    std::vector<Entries> regions_;
};

} // namespace kvn::imaging
