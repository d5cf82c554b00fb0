// Finding the nearest of up to 256 palette colours, exactly and fast.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "imaging/palette.h"
#include "imaging/quantize_metric.h"
#include "imaging/task.h"

namespace kvn::imaging {

// The space is cut into cells. For each cell stand the entries that are nearest to some point of
// it; a search looks at those only. An entry belongs to a cell unless another one is nearer to
// all of it (S. W. Thomas, "Efficient inverse color map computation", 1991).
class NearestColors {
  public:
    // Entries a block: searched together. Unused places repeat the first entry.
    static constexpr int blockSize = 8;
    struct Block {
        std::array<std::array<std::int16_t, blockSize>, 4> channel;
        std::array<std::int16_t, blockSize> entry;
    };
    struct Blocks {
        const Block* begin;
        const Block* end;
    };

    // Without alpha every entry counts as opaque. The palette may not be empty.
    NearestColors(const Palette& palette, bool withAlpha, int threads);

    Blocks blocksAt(const Spot& spot) const { return blocksOf(cellOf(spot)); }
    // The entry with the smallest distance, the lowest of several.
    int find(const Spot& spot) const;
    int size() const { return static_cast<int>(entries_.size()); }
    const Spot& spot(int entry) const { return entries_[static_cast<std::size_t>(entry)]; }

  private:
    struct Cell {
        Spot low, high; // both included
    };
    using Entries = std::vector<std::int16_t>;

    std::size_t cellOf(const Spot& spot) const {
        std::size_t cell = 0;
        for (std::size_t k = 0; k < axes_; ++k)
            cell = cell << bits_ | static_cast<std::size_t>(spot[k] >> (8 - bits_));
        return cell;
    }
    Blocks blocksOf(std::size_t cell) const {
        return {blocks_.data() + starts_[cell], blocks_.data() + starts_[cell + 1]};
    }
    Cell boundsOf(std::size_t cell, std::size_t bits) const;
    void fillRegion(std::size_t region, std::vector<std::vector<Block>>& found) const;
    Entries candidates(const Cell& cell, const Entries& from) const;
    std::vector<Block> blocksFor(const Entries& entries) const;

    std::vector<Spot> entries_;
    std::size_t axes_;
    std::size_t bits_; // of a cell's number, an axis
    std::vector<std::uint32_t> starts_;
    std::vector<Block> blocks_;
};

} // namespace kvn::imaging
