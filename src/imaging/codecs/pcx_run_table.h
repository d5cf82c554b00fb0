// Eight bytes of PCX run lengths at a time: what they are, by which of them are 0xC0 or above.
#pragma once

#include <array>
#include <cstdint>

namespace kvn::imaging {

struct PcxBlock {
    // Which byte each decoded one is taken from, if all runs are of one byte.
    std::array<std::uint8_t, 8> from{};
    // How many are decoded from the bytes before each. Read together with `from`: 16 bytes.
    std::array<std::uint8_t, 8> madeBefore{};
    std::uint64_t marks = 0; // 0xFF where a run starts that has its value among the eight
    std::uint8_t taken = 0;
    std::uint8_t made = 0;
};

// Bit i of the index: byte i is 0xC0 or above. What follows such a byte is a value, whatever it is.
inline constexpr auto pcxBlocks = [] {
    std::array<PcxBlock, 256> blocks{};
    for (unsigned high = 0; high < 256; ++high) {
        PcxBlock& block = blocks[high];
        unsigned in = 0;
        while (in < 8) {
            const bool isMark = (high >> in & 1) != 0;
            if (isMark && in == 7) break;
            block.madeBefore[in] = block.made;
            if (isMark) block.marks |= std::uint64_t{0xff} << 8 * in;
            in += isMark ? 1 : 0;
            block.from[block.made++] = static_cast<std::uint8_t>(in++);
        }
        block.taken = static_cast<std::uint8_t>(in);
    }
    return blocks;
}();

} // namespace kvn::imaging
