// The screen of a GIF on which frame after frame is laid, as a viewer shows it.
//
// It stays a palette picture as long as one colour table serves everything that is on it, and
// then has that table in the file's order. Otherwise it becomes a true-colour picture, until a
// frame replaces it wholly.
#pragma once

#include <cstdint>
#include <span>

#include "imaging/codecs/gif_file.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

class GifCanvas {
  public:
    // All clear, whatever background colour the file names.
    explicit GifCanvas(Size screen) : size_(screen) {}

    // Lays the frame's pixels on the screen and gives what is to be seen: Indexed8 or
    // Indexed8Alpha (a table with a transparent entry), else Rgb24 or, with clear pixels, Rgba32.
    // `pixels` are the frame's indices, row by row in the order shown; rows may be missing.
    Raster show(const GifFrame& frame, std::span<const std::uint8_t> pixels, Task& task);
    // What happens to the frame's rectangle before the next one.
    void dispose(const GifFrame& frame);

  private:
    struct Screen {
        Raster raster;  // empty: all clear
        Palette table;  // of the frames, opaque; for the palette form
        int clear = -1; // its entry for clear pixels
        bool indexed() const { return !raster.isEmpty() && hasPalette(raster.type()); }
    };

    bool startsAfresh(const GifFrame& frame, std::span<const std::uint8_t> pixels) const;
    bool fitsTable(const GifFrame& frame, std::span<const std::uint8_t> pixels) const;
    void start(const GifFrame& frame, bool covers);
    bool makeClearable();
    void toTrueColor();
    void draw(const GifFrame& frame, std::span<const std::uint8_t> pixels);

    Size size_;
    Screen now_;
    Screen before_; // under the frame shown last, if that is to be taken back
};

} // namespace kvn::imaging
