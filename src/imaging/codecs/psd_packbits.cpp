#include "imaging/codecs/psd_packbits.h"

#include <algorithm>
#include <cstring>

namespace kvn::imaging {

namespace {

constexpr std::size_t longestPacket = 128;

std::size_t runLength(std::span<const std::uint8_t> row, std::size_t at) {
    const std::size_t most = std::min(row.size() - at, longestPacket);
    std::size_t n = 1;
    while (n < most && row[at + n] == row[at])
        ++n;
    return n;
}

} // namespace

std::size_t unpackPsdRow(std::span<const std::uint8_t> data, std::span<std::uint8_t> row) {
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

Bytes packPsdRow(std::span<const std::uint8_t> row) {
    // Shorter runs inside a literal cost more than they save.
    constexpr std::size_t worthRun = 3;
    Bytes out;
    for (std::size_t at = 0; at < row.size();) {
        const std::size_t run = runLength(row, at);
        if (run >= worthRun) {
            out.push_back(static_cast<std::uint8_t>(257 - run));
            out.push_back(row[at]);
            at += run;
            continue;
        }
        std::size_t end = at + 1;
        while (end < row.size() && end - at < longestPacket && runLength(row, end) < worthRun)
            ++end;
        out.push_back(static_cast<std::uint8_t>(end - at - 1));
        out.insert(out.end(), row.data() + at, row.data() + end);
        at = end;
    }
    return out;
}

} // namespace kvn::imaging
