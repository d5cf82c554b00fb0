// Finds the last block of a finished deflate stream, which means reading every code in it.

#include <array>
#include <stdexcept>
#include <vector>

#include "imaging/codecs/deflate.h"
#include "imaging/codecs/deflate_bits.h"
#include "imaging/codecs/huffman_code.h"

namespace kvn::imaging {

namespace {

constexpr int longestCode = 15;
constexpr int endOfBlock = 256;

// Every 15-bit window, to the symbol that it begins with and its length.
class DecodeTable {
  public:
    void build(std::span<const std::uint8_t> lengths) {
        std::array<std::uint16_t, 320> codes{};
        huffmanCodes(lengths, std::span(codes).first(lengths.size()));
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            const int length = lengths[symbol];
            if (length == 0) continue;
            for (std::size_t window = codes[symbol]; window < table_.size();
                 window += std::size_t{1} << length)
                table_[window] = static_cast<std::uint16_t>(symbol << 4 | std::size_t(length));
        }
    }
    int take(BitReader& bits) const {
        const std::uint16_t entry = table_[bits.peek(longestCode)];
        bits.skip(entry & 15u);
        return entry >> 4;
    }

  private:
    std::vector<std::uint16_t> table_ = std::vector<std::uint16_t>(std::size_t{1} << longestCode);
};

class Walker {
  public:
    explicit Walker(std::span<const std::uint8_t> stream) : bits_(stream) {}

    // The bit at which the last block begins; position() is then the bit behind it.
    std::size_t findLast() {
        for (;;) {
            const std::size_t begin = bits_.position();
            const bool last = bits_.take(1) != 0;
            skipBlock();
            if (bits_.atEnd()) throw std::logic_error("deflate stream without an end");
            if (last) return begin;
        }
    }
    std::size_t position() const { return bits_.position(); }

  private:
    void skipBlock() {
        switch (bits_.take(2)) {
        case 0:
            return skipStored();
        case 1:
            useFixedCodes();
            break;
        default:
            readCodes();
            break;
        }
        skipTokens();
    }
    void skipStored() {
        bits_.alignToByte();
        const std::uint32_t size = bits_.take(16);
        bits_.skip(16 + std::size_t{size} * 8);
    }
    void useFixedCodes();
    void readCodes();
    void skipTokens();

    BitReader bits_;
    DecodeTable literals_, distances_;
};

void Walker::useFixedCodes() {
    std::array<std::uint8_t, 288> lengths{};
    for (std::size_t i = 0; i < lengths.size(); ++i)
        lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
    literals_.build(lengths);
    std::array<std::uint8_t, 32> fives{};
    fives.fill(5);
    distances_.build(fives);
}

void Walker::readCodes() {
    constexpr std::array<std::uint8_t, 19> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                 11, 4,  12, 3, 13, 2, 14, 1, 15};
    const std::size_t literals = bits_.take(5) + 257u;
    const std::size_t total = literals + bits_.take(5) + 1u;
    const std::size_t tokens = bits_.take(4) + 4u;
    std::array<std::uint8_t, 19> tokenLengths{};
    for (std::size_t i = 0; i < tokens; ++i)
        tokenLengths[order[i]] = static_cast<std::uint8_t>(bits_.take(3));
    literals_.build(tokenLengths);

    std::array<std::uint8_t, 320> lengths{};
    for (std::size_t i = 0; i < total;) {
        const int token = literals_.take(bits_);
        std::size_t repeat = 1;
        std::uint8_t value = static_cast<std::uint8_t>(token);
        if (token >= 16) {
            value = token == 16 && i > 0 ? lengths[i - 1] : std::uint8_t{0};
            repeat = token == 16   ? 3 + bits_.take(2)
                     : token == 17 ? 3 + bits_.take(3)
                                   : 11 + bits_.take(7);
        }
        for (; repeat > 0 && i < total; --repeat)
            lengths[i++] = value;
    }
    const std::span all(lengths);
    literals_.build(all.first(literals));
    distances_.build(all.subspan(literals, total - literals));
}

void Walker::skipTokens() {
    for (;;) {
        const int symbol = literals_.take(bits_);
        if (symbol == endOfBlock || bits_.atEnd()) return;
        if (symbol < endOfBlock) continue;
        // Extra bits grow by one with every fourth length and every second distance code.
        if (symbol >= 265 && symbol < 285) bits_.skip(static_cast<std::size_t>(symbol - 261) / 4);
        const int distance = distances_.take(bits_);
        if (distance >= 4) bits_.skip(static_cast<std::size_t>(distance) / 2 - 1);
    }
}

} // namespace

void openDeflateStream(Bytes& out, std::size_t begin) {
    Walker walker(std::span<const std::uint8_t>(out).subspan(begin));
    const std::size_t last = walker.findLast();
    out[begin + last / 8] &= static_cast<std::uint8_t>(~(1u << (last % 8)));
    BitWriter bits(out, static_cast<int>(walker.position() % 8));
    bits.sync();
}

} // namespace kvn::imaging
