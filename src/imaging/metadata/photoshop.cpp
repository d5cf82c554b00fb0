#include "imaging/metadata/photoshop.h"

#include <algorithm>
#include <array>

namespace kvn::imaging {

namespace {

constexpr std::array<std::uint8_t, 4> blockStart{'8', 'B', 'I', 'M'};
constexpr int iptcBlock = 0x0404;

} // namespace

Bytes iptcInPhotoshop(std::span<const std::uint8_t> blocks) {
    // Each: "8BIM", 16-bit number, a name with its length before it, 32-bit size, content; name
    // and content are padded to even lengths.
    std::size_t at = 0;
    while (at + 12 <= blocks.size()) {
        if (!std::equal(blockStart.begin(), blockStart.end(), blocks.begin() + at)) return {};
        const int number = blocks[at + 4] << 8 | blocks[at + 5];
        const std::size_t name = (blocks[at + 6] + std::size_t{2}) & ~std::size_t{1};
        at += 6 + name;
        if (at + 4 > blocks.size()) return {};
        std::size_t size = 0;
        for (int i = 0; i < 4; ++i)
            size = size << 8 | blocks[at++];
        if (size > blocks.size() - at) return {};
        const auto content = blocks.subspan(at, size);
        if (number == iptcBlock) return {content.begin(), content.end()};
        at += size + size % 2;
    }
    return {};
}

Bytes photoshopFromIptc(std::span<const std::uint8_t> iptc) {
    constexpr std::size_t head = 12; // mark, number, empty name, size
    Bytes block(head + (iptc.size() + 1) / 2 * 2);
    std::ranges::copy(blockStart, block.begin());
    block[4] = iptcBlock >> 8;
    block[5] = iptcBlock & 0xff;
    for (std::size_t i = 0; i < 4; ++i)
        block[8 + i] = static_cast<std::uint8_t>(iptc.size() >> (24 - 8 * i));
    std::ranges::copy(iptc, block.begin() + head);
    return block;
}

} // namespace kvn::imaging
