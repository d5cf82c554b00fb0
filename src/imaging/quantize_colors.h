// Sets of few colours, and finding the colours of a picture.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

// Up to 256 different colours in the order in which they came, and the place of each. Colours
// are in packed form.
class ColorSet {
  public:
    static constexpr std::size_t capacity = 256;

    // False if the colour is new and the set is full.
    bool add(std::uint32_t color) {
        if (find(color) >= 0) return true;
        if (colors_.size() == capacity) return false;
        const std::size_t slot = slotOf(color);
        keys_[slot] = color;
        places_[slot] = static_cast<std::int16_t>(colors_.size());
        colors_.push_back(color);
        return true;
    }
    // The place of the colour, -1 if it is not there.
    int find(std::uint32_t color) const { return places_[slotOf(color)]; }
    const std::vector<std::uint32_t>& colors() const { return colors_; }

    ColorSet() { places_.fill(-1); }

  private:
    static constexpr std::uint32_t slots = 2048;

    // The slot of the colour, or the free one where it belongs. Never more than an eighth is
    // taken, so the walk is short and ends.
    std::size_t slotOf(std::uint32_t color) const {
        std::uint32_t slot = (color * 0x9E3779B1u) >> 21;
        while (places_[slot] >= 0 && keys_[slot] != color)
            slot = (slot + 1) % slots;
        return slot;
    }

    std::array<std::uint32_t, slots> keys_;
    std::array<std::int16_t, slots> places_;
    std::vector<std::uint32_t> colors_;
};

// The colours of the picture in order of first appearance, row by row; nothing if there are more
// than `limit` (at most 256). Without alpha every colour counts as opaque.
std::optional<ColorSet> collectColors(const Raster& source, bool withAlpha, std::size_t limit,
                                      Task& task);

// The picture as places in the set, which must hold all its colours. The result's type is
// Indexed8 or Indexed8Alpha; its palette is left to the caller.
Raster placesOf(const Raster& source, const ColorSet& colors, ImageType type, Task& task);

} // namespace kvn::imaging
