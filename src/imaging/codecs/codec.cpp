#include "imaging/codecs/codec.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/pixel_buffer.h"

namespace kvn::imaging {

void ReadLimits::take(std::int64_t width, std::int64_t height, ImageType type, bool turned) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
    if (width < 1 || height < 1)
        throw RuntimeError(errors::invalidPicture, "The file names a picture of " + size + ".",
                           "Import");
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    const bool countable = width <= longest && height <= longest;
    // With the padding: narrow pictures take more memory than their pixels.
    const auto bytes = [type](std::int64_t across, std::int64_t down) {
        const std::uint64_t row = PixelBuffer::strideFor(rowBytes(type, static_cast<int>(across)));
        const auto rows = static_cast<std::uint64_t>(down);
        constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
        return row > most / rows ? most : row * rows;
    };
    std::uint64_t needed = countable ? bytes(width, height) : 0;
    if (countable && turned) needed = std::max(needed, bytes(height, width));
    if (!countable || needed > pixelBytes)
        throw RuntimeError(errors::outOfMemory,
                           "The picture of " + size + " is larger than the limit for files.",
                           "Import");
    pixelBytes -= needed;
}

std::vector<PageFacts> Codec::facts(std::span<const std::uint8_t> file, ReadLimits limits) const {
    Task quiet;
    std::vector<PageFacts> facts;
    for (const Page& page : read(file, limits, quiet).pages) {
        const Raster& raster = page.raster;
        facts.push_back(
            {raster.width(), raster.height(), raster.type(), bitsPerPixel(raster.type())});
    }
    return facts;
}

void Codec::write(std::span<const Page>, const WriteOptions&, ByteSink&, Task&) const {
    throw RuntimeError(errors::invalidCall,
                       "Files of the type " + std::string(name()) + " can only be read.", "Export");
}

std::span<const Codec* const> codecs() {
    static const std::array table{
        &jpegCodec(), &pngCodec(), &tiffCodec(), &gifCodec(), &bmpCodec(),  &psdCodec(),
        &pcxCodec(),  &icoCodec(), &wmfCodec(),  &emfCodec(), &wbmpCodec(), &tgaCodec(),
    };
    return table;
}

namespace {

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

bool hasExtension(const Codec& codec, std::string_view lower) {
    return std::ranges::find(codec.extensions(), lower) != codec.extensions().end();
}

} // namespace

const Codec* codecForContent(std::span<const std::uint8_t> file, std::string_view extension) {
    const std::string lower = lowerCase(extension);
    const Codec* first = nullptr;
    for (const Codec* codec : codecs()) {
        if (!codec->recognises(file)) continue;
        if (hasExtension(*codec, lower)) return codec;
        if (!first) first = codec;
    }
    return first;
}

const Codec* codecForType(FileType type) {
    for (const Codec* codec : codecs())
        if (codec->type() == type) return codec;
    return nullptr;
}

const Codec* codecForExtension(std::string_view extension) {
    const std::string lower = lowerCase(extension);
    for (const Codec* codec : codecs())
        if (hasExtension(*codec, lower)) return codec;
    return nullptr;
}

} // namespace kvn::imaging
