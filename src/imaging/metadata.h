// What a file says beside its pixels, kept as the bytes it stood in, so that it can be written
// back untouched. Parsers look at it, only the named functions edit it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kvn::imaging {

using Bytes = std::vector<std::uint8_t>;

// A JPEG application marker that is none of those below: number 0 to 15 and its content. Where
// `Metadata::comment` does not tell a file's comments exactly (several, or zeros at the end), they
// stand here too.
struct JpegMarker {
    static constexpr int comment = 30;

    int number = 0;
    Bytes data;
    bool operator==(const JpegMarker&) const = default;
};

// A PNG chunk that is none of those below and stays true when the pixels change.
struct PngChunk {
    std::string name;
    Bytes data;
    bool operator==(const PngChunk&) const = default;
};

struct Metadata {
    Bytes exif;      // a TIFF structure, without the "Exif\0\0" before it
    Bytes iptc;      // the IPTC-IIM records alone
    Bytes photoshop; // image resource blocks ("8BIM...") as they stood, IPTC included
    Bytes xmp;       // the packet, without the name before it
    Bytes icc;       // the profile
    std::string comment;
    std::vector<JpegMarker> jpegMarkers;
    Bytes trailer; // behind a JPEG picture's end, see jpeg_trailer.h
    std::vector<PngChunk> pngChunks;
    std::vector<std::pair<std::string, std::string>> text; // PNG text chunks, UTF-8
    double gamma = 0;                                      // as the PNG says, 0 if it does not
    double xDpi = 0;                                       // dots per inch, 0 if unknown
    double yDpi = 0;

    bool operator==(const Metadata&) const = default;
};
using MetadataRef = std::shared_ptr<const Metadata>;

} // namespace kvn::imaging
