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
    // Entries that are searched together. Unused places repeat the first entry.
    static constexpr std::size_t blockSize = 8;
    struct Block {
        std::array<std::array<std::int16_t, blockSize>, 4> channel;
        std::array<std::int16_t, blockSize> entry;
    };
    struct Blocks {
        const Block* begin;
        const Block* end;
    };

    // Without alpha every entry counts as opaque. The palette may not be empty.
    NearestColors(const Palette& palette, bool withAlpha);

    // What is to be searched for the colour; valid until the next call. One block at least.
    Blocks blocksAt(const Spot& spot) {
        Cell& cell = cells_[numberOf(spot, cellBits_)];
        if (cell.count == 0) fill(cell, spot);
        const Block* begin = blocks_.data() + cell.start;
        return {begin, begin + cell.count};
    }
    const std::vector<Spot>& entries() const { return entries_; }

  private:
    struct Cell {
        std::uint32_t start = 0;
        std::uint32_t count = 0; // 0: not yet filled
    };
    using Entries = std::vector<std::int16_t>;

    std::size_t numberOf(const Spot& spot, int bits) const {
        std::size_t number = 0;
        for (std::size_t k = 0; k < axes_; ++k)
            number = number << bits | static_cast<std::size_t>(spot[k] >> (8 - bits));
        return number;
    }
    void fill(Cell& cell, const Spot& spot);
    Entries candidates(const Spot& spot, int bits, const Entries& from) const;

    std::vector<Spot> entries_;
    std::size_t axes_;
    int cellBits_; // an axis
    std::vector<Cell> cells_;
    std::vector<Block> blocks_;
    // The candidates of larger cells, from which those of the cells are taken.
    int regionBits_;
    std::vector<Entries> regions_;
};

} // namespace kvn::imaging
