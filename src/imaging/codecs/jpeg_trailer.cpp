#include "imaging/codecs/jpeg_trailer.h"

#include <functional>

namespace kvn::imaging {

namespace {

using Block = std::span<const std::uint8_t>;

// At a block's end: kind (2 bytes), length with this (4 bytes), signature.
constexpr std::size_t footSize = 10;
constexpr std::uint32_t signature = 0xa1b2c3d4;
enum Kind : std::uint32_t { Texts = 1, Facts = 2 };

std::uint32_t number(Block bytes, std::size_t at, int size) {
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i)
        value = value << 8 | bytes[at++];
    return value;
}

// Those blocks, in the file's order, that `isWanted` by kind and content.
Bytes blocksOf(Block file, const std::function<bool(std::uint32_t, Block)>& isWanted) {
    Bytes blocks;
    while (file.size() >= footSize) {
        const std::size_t foot = file.size() - footSize;
        const std::uint32_t length = number(file, foot + 2, 4);
        if (number(file, foot + 6, 4) != signature || length < footSize || length > file.size())
            break;
        const Block block = file.last(length);
        if (isWanted(number(file, foot, 2), block.first(length - footSize)))
            blocks.insert(blocks.begin(), block.begin(), block.end());
        file = file.first(file.size() - length);
    }
    return blocks;
}

} // namespace

Bytes jpegTrailer(std::span<const std::uint8_t> file) {
    constexpr std::size_t longest = 1 << 20;
    return blocksOf(file, [](std::uint32_t kind, Block content) {
        return (kind == Texts || kind == Facts) && content.size() < longest;
    });
}

Bytes jpegTrailerFor(const Metadata& metadata, const Raster& picture, std::uint32_t mask) {
    constexpr std::uint32_t iptcMarker = 1U << 12;
    return blocksOf(metadata.trailer, [&](std::uint32_t kind, Block content) {
        if (kind == Texts) return (mask & iptcMarker) != 0;
        return content.size() >= 8 &&
               number(content, 0, 4) == static_cast<std::uint32_t>(picture.width()) &&
               number(content, 4, 4) == static_cast<std::uint32_t>(picture.height());
    });
}

} // namespace kvn::imaging
