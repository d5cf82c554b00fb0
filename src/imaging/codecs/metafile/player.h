// From a metafile to a picture: how large it gets, a rehearsal, then the drawing itself. What the
// two kinds of files have in common.
#pragma once

#include <optional>
#include <span>

#include "imaging/codecs/codec.h"
#include "imaging/codecs/metafile/drawing.h"

namespace kvn::imaging::metafile {

// What of the device is shown, and how large.
struct Sheet {
    draw::Box frame;                            // in the device's pixels
    bool mirrored = false;                      // the device's y axis runs upwards
    double width = 0, height = 0;               // in pixels of the picture
    double xDpi = 96, yDpi = 96;                // of that size, nominally
    PointD inches;                              // what the file says of its size
    PointD perMillimetre{96 / 25.4, 96 / 25.4}; // the device's own resolution
};

class Source {
  public:
    virtual ~Source() = default;
    virtual std::string_view name() const = 0;
    // None if the file does not say: it then follows from what is drawn.
    virtual std::optional<Sheet> sheet() const = 0;
    virtual Sheet sheetAround(const draw::Box& marks) const = 0;
    virtual void play(Drawing& drawing, Task& task, std::vector<std::string>& warnings) const = 0;
    // What to say of a file that draws nothing.
    virtual std::string whyEmpty() const = 0;
    std::span<const std::uint8_t> file;
};

// A file with one bitmap and nothing else gives that bitmap: its own pixels, type and palette.
// All else is drawn on white, Rgb24. Throws RuntimeError: invalidPicture, outOfMemory.
Picture readMetafile(const Source& source, FileType type, ReadLimits limits, Task& task);
std::vector<PageFacts> metafileFacts(const Source& source, ReadLimits limits);

} // namespace kvn::imaging::metafile
