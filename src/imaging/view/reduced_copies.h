// Copies of a picture at a half, a quarter, an eighth ... of its size, so that a small zoom need
// not look at every pixel each time. Each is the mean of two by two pixels of the one before.
// They are made in tiles when they are first wanted, and again where the picture has changed.
#pragma once

#include <cstdint>
#include <vector>

#include "imaging/pixel_buffer.h"
#include "imaging/view/samples.h"

namespace kvn::imaging {

class ReducedCopies {
  public:
    // For a picture of this size and form. Takes no memory for pixels yet.
    void reset(Size picture, SampleForm form);
    // Gives the memory back; the copies are made again when wanted.
    void drop();
    // The picture has changed there.
    void invalidate(const Rect& changed);

    // Copies are numbered from 1, the half, to count(), which is one pixel in size.
    int count() const { return static_cast<int>(levels_.size()); }
    // Odd sides are rounded up; the last pixel is then the mean of what there is.
    Size size(int level) const { return levels_[static_cast<std::size_t>(level - 1)].size; }
    // Valid for the parts that require() was called for.
    const std::uint8_t* row(int level, int y) const {
        return levels_[static_cast<std::size_t>(level - 1)].pixels.row(y);
    }

    // Makes what is missing of `rect` (in pixels of that copy, inside it), on all cores. `reader`
    // and `picture` are those of the picture that reset() and invalidate() told of.
    void require(const SampleReader& reader, const ConstView& picture, int level, const Rect& rect);

    std::size_t bytes() const;

  private:
    struct Level {
        Size size;
        PixelBuffer pixels; // null until first wanted
        int tilesAcross = 0;
        std::vector<std::uint8_t> made; // a flag for each tile, row by row
    };
    struct Origin {
        const SampleReader& reader;
        const ConstView& picture;
    };
    struct Scratch;

    void take(Level& level);
    std::vector<Rect> missing(const Level& level, const Rect& rect) const;
    void halve(const SampleReader& reader, const ConstView& picture, int level, const Rect& part,
               std::uint8_t* pixels) const;
    void makeRow(const Origin& origin, int level, const Rect& part, Scratch& scratch,
                 std::uint8_t* out) const;
    const std::uint8_t* sourceRow(const Origin& origin, int level, const Rect& part, int index,
                                  Scratch& scratch) const;

    SampleForm form_ = SampleForm::Rgb;
    Size picture_;
    std::vector<Level> levels_;
};

} // namespace kvn::imaging
