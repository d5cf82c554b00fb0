#include "imaging/metadata/for_writing.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/thumbnail.h"

namespace kvn::imaging {

namespace {

Bytes trueExif(const Bytes& exif, const Raster& picture, int orientation) {
    using enum ExifBlock::Directory;
    const auto width = static_cast<std::uint32_t>(picture.width());
    const auto height = static_cast<std::uint32_t>(picture.height());
    ExifBlock block(exif);
    const auto lies = static_cast<std::uint16_t>(orientation);
    const bool isTurned = block.number(Main, ExifBlock::orientation).value_or(1) != lies;
    refreshThumbnail(block, picture, isTurned);
    if (lies == 1)
        block.setNumber(Main, ExifBlock::orientation, 1);
    else
        block.putMainNumber(ExifBlock::orientation, lies);
    block.setNumber(Main, ExifBlock::imageWidth, width);
    block.setNumber(Main, ExifBlock::imageLength, height);
    block.setNumber(Camera, ExifBlock::pixelXDimension, width);
    block.setNumber(Camera, ExifBlock::pixelYDimension, height);
    return block.bytes();
}

// Where the number behind the property's name stands, as attribute (name="6") or as element
// (<name>6</name>). Empty if there is none.
std::string_view numberBehind(std::string_view packet, std::string_view name) {
    for (std::size_t at = packet.find(name); at != std::string_view::npos;
         at = packet.find(name, at + 1)) {
        std::size_t begin = at + name.size();
        if (packet.substr(begin, 1) == ">") {
            ++begin;
        } else if (packet.substr(begin, 2) == "=\"" || packet.substr(begin, 2) == "='") {
            begin += 2;
        } else {
            continue;
        }
        std::size_t end = begin;
        while (end < packet.size() && packet[end] >= '0' && packet[end] <= '9')
            ++end;
        if (end > begin) return packet.substr(begin, end - begin);
    }
    return {};
}

Bytes trueXmp(const Bytes& xmp, const Raster& picture, int orientation) {
    std::string packet(xmp.begin(), xmp.end());
    const std::pair<std::string_view, int> properties[] = {
        {"tiff:Orientation", orientation},          {"tiff:ImageWidth", picture.width()},
        {"tiff:ImageLength", picture.height()},     {"exif:PixelXDimension", picture.width()},
        {"exif:PixelYDimension", picture.height()},
    };
    for (const auto& [name, value] : properties) {
        const std::string_view old = numberBehind(packet, name);
        if (old.empty()) continue;
        packet.replace(static_cast<std::size_t>(old.data() - packet.data()), old.size(),
                       std::to_string(value));
    }
    return {packet.begin(), packet.end()};
}

// The profile's header names its colour space in bytes 16 to 19.
bool profileFits(const Bytes& icc, bool gray) {
    constexpr std::size_t at = 16;
    if (icc.size() < at + 4) return false;
    const std::string_view space(reinterpret_cast<const char*>(icc.data()) + at, 4);
    return space == (gray ? "GRAY" : "RGB ");
}

} // namespace

Metadata metadataForWriting(const Metadata& metadata, const Raster& picture, bool gray,
                            int orientation) {
    Metadata written = metadata;
    if (!written.exif.empty()) written.exif = trueExif(written.exif, picture, orientation);
    if (!written.xmp.empty()) written.xmp = trueXmp(written.xmp, picture, orientation);
    if (!profileFits(written.icc, gray)) written.icc.clear();
    return written;
}

} // namespace kvn::imaging
