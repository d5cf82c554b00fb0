#include "imaging/codecs/huffman_deflate.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "imaging/codecs/deflate_bits.h"
#include "imaging/codecs/huffman_code.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t blockBytes = std::size_t{64} << 10;
constexpr int longestLiteral = 14; // four of them and seven pending bits fit 64
constexpr int longestLengthCode = 7;
constexpr std::size_t endOfBlock = 256;
constexpr std::size_t symbols = 286;
constexpr std::size_t longestRun = 258;

// Length codes 257 to 285: the shortest run of each and its extra bits (RFC 1951, 3.2.5).
struct RunCode {
    std::uint16_t symbol;
    std::uint8_t extraBits;
    std::uint16_t extra;
};

RunCode runCode(std::size_t length) {
    if (length == longestRun) return {285, 0, 0};
    const std::size_t n = length - 3;
    if (n < 8) return {static_cast<std::uint16_t>(257 + n), 0, 0};
    const int extraBits = std::bit_width(n) - 3;
    const std::size_t group = n >> extraBits; // 4 to 7
    return {static_cast<std::uint16_t>(257 + 4 * extraBits + static_cast<int>(group)),
            static_cast<std::uint8_t>(extraBits),
            static_cast<std::uint16_t>(n & ((std::size_t{1} << extraBits) - 1))};
}

std::uint64_t load8(const std::uint8_t* at) {
    std::uint64_t value = 0;
    std::memcpy(&value, at, 8);
    return value;
}

// Hands out the block's tokens: groups of eight literals, single ones, and runs of the byte
// before. Only runs that cover a whole group are seen, which costs little and makes the test
// cheap.
template <typename Eight, typename One, typename Run>
void forTokens(const std::uint8_t* at, const std::uint8_t* end, bool hasBefore, const Eight& eight,
               const One& one, const Run& run) {
    if (!hasBefore && at < end) one(*at++);
    while (end - at >= 8) {
        if (load8(at) != load8(at - 1)) {
            eight(at);
            at += 8;
            continue;
        }
        const std::uint8_t* stop = at + 8;
        while (stop < end && *stop == at[-1])
            ++stop;
        while (stop - at >= 3) {
            const std::size_t length =
                std::min<std::size_t>(longestRun, static_cast<std::size_t>(stop - at));
            run(length);
            at += length;
        }
    }
    while (at < end)
        one(*at++);
}

struct Frequencies {
    std::array<std::uint32_t, symbols> literals{};
    bool hasRuns = false;
};

Frequencies count(std::span<const std::uint8_t> block, bool hasBefore) {
    Frequencies f;
    // Four counters a byte value, lest each increment waits for the one before.
    std::array<std::array<std::uint32_t, 256>, 4> part{};
    forTokens(
        block.data(), block.data() + block.size(), hasBefore,
        [&](const std::uint8_t* p) {
            for (std::size_t i = 0; i < 8; ++i)
                ++part[i & 3][p[i]];
        },
        [&](std::uint8_t byte) { ++part[0][byte]; },
        [&](std::size_t length) {
            ++f.literals[runCode(length).symbol];
            f.hasRuns = true;
        });
    for (std::size_t i = 0; i < 256; ++i)
        f.literals[i] = part[0][i] + part[1][i] + part[2][i] + part[3][i];
    f.literals[endOfBlock] = 1;
    return f;
}

struct Code {
    std::array<std::uint8_t, symbols> lengths{};
    std::array<std::uint16_t, symbols> codes{};
};

// One step of the run-length coding of code lengths: 0 to 15 stand for themselves.
struct LengthToken {
    std::uint8_t symbol;
    std::uint8_t extra;
    std::uint8_t extraBits;
};

std::vector<LengthToken> lengthTokens(std::span<const std::uint8_t> lengths) {
    std::vector<LengthToken> tokens;
    for (std::size_t i = 0; i < lengths.size();) {
        std::size_t same = 1;
        while (i + same < lengths.size() && lengths[i + same] == lengths[i])
            ++same;
        const std::uint8_t value = lengths[i];
        i += same;
        if (value != 0) {
            tokens.push_back({value, 0, 0});
            --same;
        }
        while (same >= 3) {
            const std::size_t most = value != 0 ? 6 : same <= 10 ? 10 : 138;
            const std::size_t n = std::min(same, most);
            if (value != 0) {
                tokens.push_back({16, static_cast<std::uint8_t>(n - 3), 2});
            } else if (n <= 10) {
                tokens.push_back({17, static_cast<std::uint8_t>(n - 3), 3});
            } else {
                tokens.push_back({18, static_cast<std::uint8_t>(n - 11), 7});
            }
            same -= n;
        }
        tokens.insert(tokens.end(), same, {value, 0, 0});
    }
    return tokens;
}

void writeHeader(const Code& code, BitWriter& bits) {
    constexpr std::array<std::uint8_t, 19> order{16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                 11, 4,  12, 3, 13, 2, 14, 1, 15};
    std::size_t literals = symbols;
    while (code.lengths[literals - 1] == 0)
        --literals;
    // Behind the literals, the one distance code there is: distance 1, in one bit.
    std::vector<std::uint8_t> lengths(code.lengths.begin(),
                                      code.lengths.begin() + static_cast<std::ptrdiff_t>(literals));
    lengths.push_back(1);
    const auto tokens = lengthTokens(lengths);

    std::array<std::uint32_t, 19> frequencies{};
    for (const LengthToken& token : tokens)
        ++frequencies[token.symbol];
    std::array<std::uint8_t, 19> tokenLengths{};
    std::array<std::uint16_t, 19> tokenCodes{};
    huffmanLengths(frequencies, longestLengthCode, tokenLengths);
    huffmanCodes(tokenLengths, tokenCodes);
    std::size_t used = order.size();
    while (used > 4 && tokenLengths[order[used - 1]] == 0)
        --used;

    bits.add(0b100, 3); // not the last block, codes of its own
    bits.add(literals - 257, 5);
    bits.add(0, 5);
    bits.add(used - 4, 4);
    bits.flush();
    for (std::size_t i = 0; i < used; ++i) {
        bits.add(tokenLengths[order[i]], 3);
        bits.flush();
    }
    for (const LengthToken& token : tokens) {
        bits.add(tokenCodes[token.symbol], tokenLengths[token.symbol]);
        bits.add(token.extra, token.extraBits);
        bits.flush();
    }
}

void writeBlock(std::span<const std::uint8_t> block, bool hasBefore, BitWriter& bits) {
    const Frequencies f = count(block, hasBefore);
    Code code;
    huffmanLengths(f.literals, longestLiteral, code.lengths);
    huffmanCodes(code.lengths, code.codes);
    // Code and length of a byte in one word, so that a literal costs one load.
    std::array<std::uint32_t, 256> literal{};
    for (std::size_t i = 0; i < 256; ++i)
        literal[i] = code.codes[i] | static_cast<std::uint32_t>(code.lengths[i]) << 16;
    const auto put = [&](std::uint8_t byte) {
        bits.add(literal[byte] & 0xffff, static_cast<int>(literal[byte] >> 16));
    };

    constexpr std::size_t headerBytes = 512;
    bits.reserve(block.size() * longestLiteral / 8 + headerBytes);
    writeHeader(code, bits);
    forTokens(
        block.data(), block.data() + block.size(), hasBefore,
        [&](const std::uint8_t* p) {
            for (std::size_t half = 0; half < 8; half += 4) {
                for (std::size_t i = 0; i < 4; ++i)
                    put(p[half + i]);
                bits.flush();
            }
        },
        [&](std::uint8_t byte) {
            put(byte);
            bits.flush();
        },
        [&](std::size_t length) {
            const RunCode run = runCode(length);
            bits.add(code.codes[run.symbol], code.lengths[run.symbol]);
            bits.add(run.extra, run.extraBits);
            bits.add(0, 1); // distance 1
            bits.flush();
        });
    bits.add(code.codes[endOfBlock], code.lengths[endOfBlock]);
    bits.flush();
}

} // namespace

void appendHuffmanBlocks(std::span<const std::uint8_t> data, Bytes& out) {
    BitWriter bits(out);
    for (std::size_t at = 0; at < data.size(); at += blockBytes)
        writeBlock(data.subspan(at, std::min(blockBytes, data.size() - at)), at > 0, bits);
    bits.sync();
}

} // namespace kvn::imaging
