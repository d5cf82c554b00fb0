// A GIF file as a row of frames, their pixels still packed. It knows nothing of how frames are
// laid over each other.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "imaging/geometry.h"
#include "imaging/metadata.h"
#include "imaging/palette.h"

namespace kvn::imaging {

enum class GifDisposal { Keep, Clear, Restore };

struct GifFrame {
    Rect rect; // may lie outside the screen
    bool interlaced = false;
    Palette palette;      // opaque, in the file's order
    int transparent = -1; // index, -1 for none
    GifDisposal disposal = GifDisposal::Keep;
    int codeSize = 0;
    Bytes data; // LZW codes without their block lengths
};

class GifFile {
  public:
    // Throws RuntimeError(invalidPicture) without a readable screen descriptor.
    explicit GifFile(std::span<const std::uint8_t> file);
    ~GifFile();
    GifFile(const GifFile&) = delete;
    GifFile& operator=(const GifFile&) = delete;

    // The screen; one without size takes that of its first frame, once next() has given it.
    Size screen() const;
    int colorBits() const; // of the screen's colour table, 1 to 8
    // The next frame, or nothing at the end. A frame that is cut off comes with what there is of
    // it, if any, and is the last.
    std::optional<GifFrame> next();

    double fraction() const; // how much of the file has been read, 0 to 1

    // What stands between and behind the frames, complete after the last one.
    const std::string& comment() const;
    const Bytes& xmp() const;
    const Bytes& icc() const;
    // What was wrong, empty if nothing.
    const std::string& trouble() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

bool isGif(std::span<const std::uint8_t> file);

// How many frames the file announces, found by skipping from block to block; 0 without a header.
int countGifFrames(std::span<const std::uint8_t> file);

} // namespace kvn::imaging
