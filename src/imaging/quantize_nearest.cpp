#include "imaging/quantize_nearest.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace kvn::imaging {

namespace {

int square(int value) {
    return value * value;
}

} // namespace

// Small cells have few entries; large ones stay in the near caches, which a small palette, with
// few entries a cell anyway, gains more from.
NearestColors::NearestColors(const Palette& palette, bool withAlpha)
    : axes_(withAlpha ? 4 : 3), cellBits_((withAlpha ? 4 : 5) + (palette.size() > 64)),
      cells_(std::size_t{1} << (static_cast<std::size_t>(cellBits_) * axes_)),
      regionBits_(withAlpha ? 2 : 3),
      regions_(std::size_t{1} << (static_cast<std::size_t>(regionBits_) * axes_)) {
    for (Rgba color : palette.colors()) {
        if (!withAlpha) color.a = 255;
        entries_.push_back(spotOf(color));
    }
}

std::uint32_t NearestColors::fill(PackedSpot packed) {
    const Spot spot = unpackedSpot(packed);
    Entries& region =
        regions_[withAlpha() ? numberOf<4>(packed, regionBits_) : numberOf<3>(packed, regionBits_)];
    if (region.empty()) {
        Entries all(entries_.size());
        std::iota(all.begin(), all.end(), std::int16_t{0});
        region = candidates(spot, regionBits_, all);
    }
    Entries found = candidates(spot, cellBits_, region);
    if (const auto it = known_.find(found); it != known_.end()) return it->second;
    const std::size_t count = (found.size() + blockSize - 1) / blockSize;
    const auto cell = static_cast<std::uint32_t>(blocks_.size() << countBits | count);
    addBlocks(found);
    known_.emplace(std::move(found), cell);
    return cell;
}

void NearestColors::addBlocks(const Entries& found) {
    for (std::size_t first = 0; first < found.size(); first += blockSize) {
        Block& block = blocks_.emplace_back();
        for (std::size_t i = 0; i < blockSize; ++i) {
            const std::int16_t entry = found[first + i < found.size() ? first + i : 0];
            const Spot& place = entries_[static_cast<std::size_t>(entry)];
            block.entry[i] = entry;
            for (std::size_t k = 0; k < 2; ++k) {
                block.redGreen[2 * i + k] = static_cast<std::int16_t>(place[k]);
                block.blueAlpha[2 * i + k] = static_cast<std::int16_t>(place[2 + k]);
            }
        }
    }
}

// Those of `from` that may be nearest to a point of the cell that holds the spot: no other is
// nearer than they are, even where they are nearest and it is farthest.
NearestColors::Entries NearestColors::candidates(const Spot& spot, int bits,
                                                 const Entries& from) const {
    const int side = 1 << (8 - bits);
    std::vector<int> least;
    int bound = std::numeric_limits<int>::max();
    for (const std::int16_t entry : from) {
        const Spot& place = entries_[static_cast<std::size_t>(entry)];
        int nearest = 0, farthest = 0;
        for (std::size_t k = 0; k < axes_; ++k) {
            const int low = spot[k] & ~(side - 1), high = low + side - 1;
            const int below = low - place[k], above = place[k] - high;
            nearest += square(std::max({below, above, 0}));
            farthest += square(std::max(-below, -above));
        }
        least.push_back(nearest);
        bound = std::min(bound, farthest);
    }
    Entries kept;
    for (std::size_t i = 0; i < from.size(); ++i)
        if (least[i] <= bound) kept.push_back(from[i]);
    return kept;
}

} // namespace kvn::imaging
