// The one interface of all file formats, and the table that finds the one for a file.
//
// Every file is hostile until read: a codec checks the header against the limits before it
// allocates, never trusts a count or an offset, and gives what could be read or throws
// RuntimeError(invalidPicture). It never crashes, hangs, or shows old memory.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "imaging/byte_io.h"
#include "imaging/picture.h"
#include "imaging/task.h"

namespace kvn::imaging {

// How much one file may ask for. Checked from its headers before anything is allocated.
struct ReadLimits {
    std::uint64_t pixelBytes = std::uint64_t{2} << 30; // memory of all decoded pages together
    int maxPages = 65536;
    // Throws RuntimeError(outOfMemory) with a message that names the size when a page of this
    // size would pass the limit; otherwise takes its bytes off the budget. Throws invalidPicture
    // for a side below 1. A page that is `turned` by a right angle after it has been read counts
    // as the larger of its two forms: what stands on its side has more padding, or less.
    void take(std::int64_t width, std::int64_t height, ImageType type, bool turned = false);
};

struct WriteOptions {
    int jpegQuality = 75;  // clamped to 1..100
    int jpegSmoothing = 0; // clamped to 0..100
    bool jpegProgressive = false;
    int tiffCompression = 0; // 0 none, 1 G3, 2 G4, 3 JPEG, 4 Packbits, 5 Deflate, 6 LZW
    bool bmpRle = false;
    bool wmfPlaceable = true;
    std::uint32_t jpegMarkers = 0x3fff; // bit i-1: APPi is written
};

// What a file says of itself without its pixels being decoded.
struct PageFacts {
    int width = 0;
    int height = 0;
    ImageType type = ImageType::Rgb24;
    int fileBits = 0; // bits a pixel in the file
};

class Codec {
  public:
    virtual ~Codec() = default;

    virtual FileType type() const = 0;
    virtual std::string_view name() const = 0;
    // Lower case, without the dot, the usual one first.
    virtual std::span<const std::string_view> extensions() const = 0;
    // By content alone.
    virtual bool recognises(std::span<const std::uint8_t> file) const = 0;

    virtual Picture read(std::span<const std::uint8_t> file, ReadLimits limits,
                         Task& task) const = 0;
    // One entry a page. The default decodes the file.
    virtual std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                         ReadLimits limits) const;

    virtual bool canWrite() const { return false; }
    virtual bool holdsPages() const { return false; } // several pages in one file
    // Writes `pages` (just one unless holdsPages()), each from any of the seven types, in the
    // closest form the format has. Throws RuntimeError: invalidCall for what the format's fields
    // cannot hold, deviceIo, diskFull. The default throws.
    virtual void write(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
                       Task& task) const;
};

// All codecs, one object each, made on first use. Order is the order of recognition.
std::span<const Codec* const> codecs();

// The codec for the content; `extension` (without dot, any case) decides only between codecs
// that both recognise it, and for formats without a signature. Null if there is none.
const Codec* codecForContent(std::span<const std::uint8_t> file, std::string_view extension);
const Codec* codecForType(FileType type);
const Codec* codecForExtension(std::string_view extension);

} // namespace kvn::imaging
