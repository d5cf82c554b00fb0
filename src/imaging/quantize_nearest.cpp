#include "imaging/quantize_nearest.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace kvn::imaging {

namespace {

// Cells are found in two steps: the candidates of a region serve all its cells.
constexpr std::size_t regionBits = 2; // an axis

int square(int value) {
    return value * value;
}

} // namespace

NearestColors::NearestColors(const Palette& palette, bool withAlpha, int threads)
    : axes_(withAlpha ? 4 : 3), bits_(withAlpha ? 4 : 5) {
    for (Rgba color : palette.colors()) {
        if (!withAlpha) color.a = 255;
        entries_.push_back(spotOf(color));
    }
    const std::size_t cells = std::size_t{1} << (bits_ * axes_);
    std::vector<std::vector<Block>> found(cells);
    Task quiet;
    quiet.threads = threads;
    parallelRows(
        1 << (regionBits * axes_), quiet,
        [&](int r0, int r1) {
            for (int region = r0; region < r1; ++region)
                fillRegion(static_cast<std::size_t>(region), found);
        },
        1);
    starts_.reserve(cells + 1);
    for (const auto& blocks : found) {
        starts_.push_back(static_cast<std::uint32_t>(blocks_.size()));
        blocks_.insert(blocks_.end(), blocks.begin(), blocks.end());
    }
    starts_.push_back(static_cast<std::uint32_t>(blocks_.size()));
}

int NearestColors::find(const Spot& spot) const {
    int best = 0, bestDistance = std::numeric_limits<int>::max();
    const Blocks blocks = blocksAt(spot);
    for (const Block* block = blocks.begin; block != blocks.end; ++block)
        for (std::size_t i = 0; i < blockSize; ++i) {
            int distance = 0;
            for (std::size_t k = 0; k < 4; ++k)
                distance += square(spot[k] - block->channel[k][i]);
            if (distance >= bestDistance) continue;
            bestDistance = distance;
            best = block->entry[i];
        }
    return best;
}

NearestColors::Cell NearestColors::boundsOf(std::size_t cell, std::size_t bits) const {
    Cell bounds{};
    const int side = 1 << (8 - bits);
    for (std::size_t k = axes_; k-- > 0; cell >>= bits) {
        bounds.low[k] = static_cast<int>(cell & ((std::size_t{1} << bits) - 1)) * side;
        bounds.high[k] = bounds.low[k] + side - 1;
    }
    if (axes_ < 4) bounds.low[3] = bounds.high[3] = entries_.front()[3];
    return bounds;
}

NearestColors::Entries NearestColors::candidates(const Cell& cell, const Entries& from) const {
    std::vector<int> least;
    int bound = std::numeric_limits<int>::max();
    for (const std::int16_t entry : from) {
        int nearest = 0, farthest = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            const int below = cell.low[k] - spot(entry)[k], above = spot(entry)[k] - cell.high[k];
            nearest += square(std::max({below, above, 0}));
            farthest += square(std::max(std::abs(below), std::abs(above)));
        }
        least.push_back(nearest);
        bound = std::min(bound, farthest);
    }
    Entries kept;
    for (std::size_t i = 0; i < from.size(); ++i)
        if (least[i] <= bound) kept.push_back(from[i]);
    return kept;
}

std::vector<NearestColors::Block> NearestColors::blocksFor(const Entries& entries) const {
    std::vector<Block> blocks((entries.size() + blockSize - 1) / blockSize);
    for (std::size_t i = 0; i < blocks.size() * blockSize; ++i) {
        const std::int16_t entry = entries[i < entries.size() ? i : 0];
        Block& block = blocks[i / blockSize];
        block.entry[i % blockSize] = entry;
        for (std::size_t k = 0; k < 4; ++k)
            block.channel[k][i % blockSize] = static_cast<std::int16_t>(spot(entry)[k]);
    }
    return blocks;
}

void NearestColors::fillRegion(std::size_t region, std::vector<std::vector<Block>>& found) const {
    Entries all(entries_.size());
    std::iota(all.begin(), all.end(), std::int16_t{0});
    const Entries near = candidates(boundsOf(region, regionBits), all);
    const Cell bounds = boundsOf(region, regionBits);
    const int side = 1 << (8 - bits_);
    const std::size_t cells = std::size_t{1} << ((bits_ - regionBits) * axes_);
    for (std::size_t i = 0; i < cells; ++i) {
        Spot corner = bounds.low;
        std::size_t rest = i;
        for (std::size_t k = 0; k < axes_; ++k) {
            const std::size_t bits = bits_ - regionBits;
            corner[k] += static_cast<int>(rest & ((std::size_t{1} << bits) - 1)) * side;
            rest >>= bits;
        }
        const std::size_t cell = cellOf(corner);
        found[cell] = blocksFor(candidates(boundsOf(cell, bits_), near));
    }
}

} // namespace kvn::imaging
