// Up to 256 colours in the order of the file they came from.
#pragma once

#include <cstddef>
#include <vector>

#include "imaging/rgba.h"

namespace kvn::imaging {

class Palette {
  public:
    static constexpr std::size_t maxSize = 256;

    Palette() = default;
    // Colours beyond the 256th are dropped.
    explicit Palette(std::vector<Rgba> colors);

    static Palette blackAndWhite();
    static Palette grayRamp();

    std::size_t size() const { return colors_.size(); }
    bool isEmpty() const { return colors_.empty(); }
    // An index past the end is opaque black: files hold such pixels.
    Rgba operator[](std::size_t index) const {
        return index < colors_.size() ? colors_[index] : Rgba{};
    }
    // Grows the palette with opaque black up to `index` if need be. Throws subscriptOutOfRange
    // beyond 255.
    void set(std::size_t index, Rgba color);
    const std::vector<Rgba>& colors() const { return colors_; }

    bool hasTransparency() const;
    // The index with the smallest squared distance in red, green, blue and alpha; the lowest one
    // of several. 0 for an empty palette.
    int nearest(Rgba color) const;
    // The index of exactly this colour, or -1.
    int find(Rgba color) const;
    // The index of this colour, which comes to the end if it is missing and there is room for it
    // among `room` colours; else nearest().
    int place(Rgba color, std::size_t room = maxSize);

    bool operator==(const Palette&) const = default;

  private:
    std::vector<Rgba> colors_;
};

} // namespace kvn::imaging
