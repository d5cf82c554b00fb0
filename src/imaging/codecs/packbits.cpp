#include "imaging/codecs/packbits.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kvn::imaging {

namespace {

constexpr std::size_t longestPacket = 128;
// Shorter runs inside a literal cost more than they save.
constexpr std::size_t worthRun = 3;

std::uint64_t word(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, sizeof value);
    return std::endian::native == std::endian::little ? value : __builtin_bswap64(value);
}

// The first place from `at` on where three bytes are equal; the end if there is none.
const std::uint8_t* nextRun(const std::uint8_t* at, const std::uint8_t* end) {
    constexpr std::uint64_t ones = 0x0101010101010101, tops = 0x8080808080808080;
    constexpr std::ptrdiff_t reach = 8 + worthRun - 1;
    for (; end - at >= reach; at += 8) {
        const std::uint64_t here = word(at), next = word(at + 1), afterNext = word(at + 2);
        const std::uint64_t unequal = (here ^ next) | (next ^ afterNext);
        // The lowest zero byte of `unequal` gets its top bit.
        if (const std::uint64_t zeros = (unequal - ones) & ~unequal & tops; zeros != 0)
            return at + std::countr_zero(zeros) / 8;
    }
    for (; end - at >= static_cast<std::ptrdiff_t>(worthRun); ++at)
        if (at[0] == at[1] && at[0] == at[2]) return at;
    return end;
}

const std::uint8_t* endOfRun(const std::uint8_t* at, const std::uint8_t* end) {
    const std::uint64_t same = 0x0101010101010101 * std::uint64_t{*at};
    const std::uint8_t value = *at;
    for (; end - at >= 8; at += 8)
        if (const std::uint64_t unequal = word(at) ^ same; unequal != 0)
            return at + std::countr_zero(unequal) / 8;
    while (at != end && *at == value)
        ++at;
    return at;
}

std::uint8_t* putLiterals(const std::uint8_t* from, const std::uint8_t* end, std::uint8_t* to) {
    while (from != end) {
        const auto n = std::min(static_cast<std::size_t>(end - from), longestPacket);
        *to++ = static_cast<std::uint8_t>(n - 1);
        std::memcpy(to, from, n);
        from += n;
        to += n;
    }
    return to;
}

// What is left of a run is short of a packet; one or two bytes of it are a literal.
std::uint8_t* putRun(std::uint8_t value, std::size_t size, std::uint8_t* to) {
    while (size > 1) {
        const std::size_t n = std::min(size, longestPacket);
        *to++ = static_cast<std::uint8_t>(257 - n);
        *to++ = value;
        size -= n;
    }
    if (size == 1) {
        *to++ = 0;
        *to++ = value;
    }
    return to;
}

} // namespace

std::size_t unpackBits(std::span<const std::uint8_t> data, std::span<std::uint8_t> row) {
    constexpr std::uint8_t nothing = 128;
    std::size_t done = 0;
    for (std::size_t at = 0; at < data.size() && done < row.size();) {
        const std::uint8_t head = data[at++];
        if (head == nothing) continue;
        const std::size_t room = row.size() - done;
        if (head > nothing) {
            if (at == data.size()) break;
            const std::size_t n = std::min<std::size_t>(257u - head, room);
            std::memset(row.data() + done, data[at++], n);
            done += n;
        } else {
            const std::size_t n = std::min({head + std::size_t{1}, data.size() - at, room});
            std::memcpy(row.data() + done, data.data() + at, n);
            at += n;
            done += n;
        }
    }
    return done;
}

void appendPackedBits(std::span<const std::uint8_t> row, Bytes& out) {
    const std::size_t before = out.size();
    out.resize(before + row.size() + row.size() / longestPacket + 2);
    std::uint8_t* to = out.data() + before;
    const std::uint8_t* at = row.data();
    const std::uint8_t* const end = at + row.size();
    while (at != end) {
        const std::uint8_t* const run = nextRun(at, end);
        to = putLiterals(at, run, to);
        if (run == end) break;
        at = endOfRun(run, end);
        to = putRun(*run, static_cast<std::size_t>(at - run), to);
    }
    out.resize(static_cast<std::size_t>(to - out.data()));
}

} // namespace kvn::imaging
