#include "imaging/metadata/copy.h"

#include <algorithm>

#include "basic/error.h"
#include "imaging/byte_io.h"
#include "imaging/codecs/jpeg_metadata.h"
#include "imaging/metadata/exif_block.h"

namespace kvn::imaging {

namespace {

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

// What the copied EXIF block must say to fit the destination.
Bytes fittedExif(const Bytes& exif, const JpegOutline& destination) {
    using enum ExifBlock::Directory;
    const auto width = static_cast<std::uint32_t>(destination.frame->width);
    const auto height = static_cast<std::uint32_t>(destination.frame->height);
    const auto orientation =
        ExifBlock(jpegMetadata(destination).exif).number(Main, ExifBlock::orientation).value_or(1);
    ExifBlock block(exif);
    const bool isTold = block.number(Main, ExifBlock::orientation).has_value();
    if (isTold || orientation != 1)
        block.putMainNumber(ExifBlock::orientation, static_cast<std::uint16_t>(orientation));
    block.setNumber(Main, ExifBlock::imageWidth, width);
    block.setNumber(Main, ExifBlock::imageLength, height);
    block.setNumber(Camera, ExifBlock::pixelXDimension, width);
    block.setNumber(Camera, ExifBlock::pixelYDimension, height);
    return block.bytes();
}

} // namespace

Bytes jpegWithMetadataOf(std::span<const std::uint8_t> source,
                         std::span<const std::uint8_t> destination) {
    const JpegOutline from = checkedOutline(source, "source");
    const JpegOutline to = checkedOutline(destination, "destination");
    Metadata copied = jpegMetadata(from);
    if (!copied.exif.empty()) copied.exif = fittedExif(copied.exif, to);
    copied.icc.clear();
    std::erase_if(copied.jpegMarkers, [](const JpegMarker& marker) {
        return marker.number != 1 && marker.number != 13;
    });

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
    constexpr std::uint32_t all = 0x3fff;
    for (const JpegMarker& marker : jpegSegmentsFor(copied, all))
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
    replaceFile(destination, [&](ByteSink& sink) { sink.write(result.data(), result.size()); });
}

} // namespace kvn::imaging
