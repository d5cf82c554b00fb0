// Finding the nearest of up to 256 palette colours, exactly and fast.
#pragma once

#include <array>
#include <cstdint>
#include <map>
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
        std::uint32_t& cell = cells_[numberOf < withAlpha ? 4 : 3 > (spot, cellBits_)];
        if (cell == 0) cell = fill(spot);
        const Block* begin = blocks_.data() + (cell >> countBits);
        return {begin, begin + (cell & ((1u << countBits) - 1))};
    }
    bool withAlpha() const { return axes_ == 4; }
    const std::vector<Spot>& entries() const { return entries_; }

  private:
    // A cell is the number of its first block, and in the low bits how many it has; 0 if it has
    // not been filled.
    static constexpr int countBits = 6;
    using Entries = std::vector<std::int16_t>;

    template <int axes>
    static std::size_t numberOf(PackedSpot spot, int bits) {
        const std::uint64_t mask = (1u << bits) - 1;
        std::uint64_t number = 0;
        for (int k = 0; k < axes; ++k)
            number = number << bits | ((spot >> (16 * k + 8 - bits)) & mask);
        return number;
    }
    std::uint32_t fill(PackedSpot spot);
    void addBlocks(const Entries& found);
    Entries candidates(const Spot& spot, int bits, const Entries& from) const;

    std::vector<Spot> entries_;
    std::size_t axes_;
    int cellBits_; // of a cell's number, an axis
    std::vector<std::uint32_t> cells_;
    std::vector<Block> blocks_;
    // Cells with the same entries share their blocks, which keeps the blocks in the near caches.
    std::map<Entries, std::uint32_t> known_;
    // The candidates of larger cells, from which those of the cells are taken.
    int regionBits_;
    std::vector<Entries> regions_;
};

} // namespace kvn::imaging
