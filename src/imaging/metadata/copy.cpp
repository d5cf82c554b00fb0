#include "imaging/metadata/copy.h"

#include <algorithm>
#include <array>

#include "basic/error.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/jpeg_metadata.h"
#include "imaging/exif.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/for_writing.h"
#include "imaging/metadata/orientation.h"

namespace kvn::imaging {

namespace {

constexpr std::uint32_t allMarkers = 0x3fff;

void appendSegment(Bytes& to, int marker, std::span<const std::uint8_t> data) {
    const std::size_t length = data.size() + 2;
    for (const std::size_t byte :
         {std::size_t{0xff}, static_cast<std::size_t>(marker), length >> 8, length & 0xff})
        to.push_back(static_cast<std::uint8_t>(byte));
    to.insert(to.end(), data.begin(), data.end());
}

// The kinds that are exchanged; markers 1 and 13 hold nothing else in usual files.
bool isExchanged(const JpegSegment& segment) {
    return segment.marker == JpegSegment::comment ||
           (segment.isApplication() && (segment.application() == 1 || segment.application() == 13));
}

JpegOutline checkedOutline(std::span<const std::uint8_t> file, const char* which) {
    JpegOutline outline;
    if (isJpeg(file)) outline = outlineJpeg(file);
    if (!outline.frame)
        throw RuntimeError(errors::invalidPicture,
                           std::string("The ") + which + " is not a JPEG file.", "CopyMetadata");
    return outline;
}

// The pixels as the file has them, not turned upright.
Raster storedPixels(std::span<const std::uint8_t> jpeg, int orientation) {
    Task quiet;
    const Raster upright = jpegCodec().read(jpeg, {}, quiet).pages.front().raster;
    const int back = orientation == 6 ? 8 : orientation == 8 ? 6 : orientation;
    return turnedUpright(upright, back, quiet);
}

// What is copied, fitted to the destination.
Metadata copiedFrom(const JpegOutline& source, const JpegOutline& destination,
                    std::span<const std::uint8_t> destinationFile) {
    Metadata copied = jpegMetadata(source);
    copied.icc.clear();
    std::erase_if(copied.jpegMarkers, [](const JpegMarker& marker) {
        return marker.number != 1 && marker.number != 13;
    });
    // A picture that lies on its side says so even if nothing else is told.
    constexpr std::array<std::uint8_t, 14> bareBlock{'I', 'I', 42, 0, 8};
    const int orientation = exifOrientation(jpegMetadata(destination).exif);
    if (copied.exif.empty() && orientation != 1)
        copied.exif.assign(bareBlock.begin(), bareBlock.end());
    return metadataForWriting(copied, storedPixels(destinationFile, orientation), false,
                              orientation);
}

void put(const std::string& path, const Bytes& bytes) {
    replaceFile(path, [&](ByteSink& sink) { sink.write(bytes.data(), bytes.size()); });
}

} // namespace

Bytes jpegWithMetadataOf(std::span<const std::uint8_t> source,
                         std::span<const std::uint8_t> destination) {
    const JpegOutline from = checkedOutline(source, "source");
    const JpegOutline to = checkedOutline(destination, "destination");
    const Metadata copied = copiedFrom(from, to, destination);

    Bytes result;
    result.reserve(source.size() + destination.size());
    std::size_t at = 0;
    const auto keepUntil = [&](std::size_t end) {
        result.insert(result.end(), destination.begin() + static_cast<std::ptrdiff_t>(at),
                      destination.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    };
    // JFIF wants to be the first segment.
    const bool hasJfif = !to.segments.empty() && to.segments.front().marker == 0xe0;
    keepUntil(hasJfif ? to.segments.front().end : 2);
    for (const JpegMarker& marker : jpegSegmentsFor(copied, allMarkers))
        appendSegment(result, 0xe0 + marker.number, marker.data);
    for (const JpegSegment& segment : from.segments)
        if (segment.marker == JpegSegment::comment)
            appendSegment(result, JpegSegment::comment, segment.data);
    for (const JpegSegment& segment : to.segments) {
        if (!isExchanged(segment)) continue;
        keepUntil(segment.begin);
        at = segment.end;
    }
    keepUntil(destination.size());
    return result;
}

void copyMetadata(const std::string& source, const std::string& destination) {
    const FileBytes from(source);
    Bytes result;
    {
        const FileBytes to(destination);
        result = jpegWithMetadataOf(from.bytes(), to.bytes());
    }
    put(destination, result);
}

void copyMetadata(const std::string& source, const Page& page, const WriteOptions& options,
                  const std::string& destination, Task& task) {
    const FileBytes from(source);
    WriteOptions whole = options;
    whole.jpegMarkers = allMarkers;
    MemorySink picture;
    jpegCodec().write({&page, 1}, whole, picture, task);
    put(destination, jpegWithMetadataOf(from.bytes(), picture.bytes()));
}

} // namespace kvn::imaging
