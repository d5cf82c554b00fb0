#include "imaging/codecs/psd_zip.h"

#include <algorithm>
#include <limits>

#include <zlib.h>

#include "basic/error.h"

namespace kvn::imaging {

namespace {

// As many of `most` bytes as the stream gives.
Bytes inflated(std::span<const std::uint8_t> stream, std::size_t most) {
    z_stream zlib{};
    if (inflateInit(&zlib) != Z_OK) throw std::bad_alloc();
    Bytes data(most);
    std::size_t done = 0, used = 0;
    constexpr std::size_t largest = std::numeric_limits<uInt>::max();
    for (int state = Z_OK; state == Z_OK && done < most;) {
        const auto in = static_cast<uInt>(std::min(stream.size() - used, largest));
        const auto out = static_cast<uInt>(std::min(most - done, largest));
        zlib.next_in = const_cast<Bytef*>(stream.data() + used);
        zlib.avail_in = in;
        zlib.next_out = data.data() + done;
        zlib.avail_out = out;
        state = inflate(&zlib, Z_NO_FLUSH);
        used += in - zlib.avail_in;
        done += out - zlib.avail_out;
    }
    inflateEnd(&zlib);
    data.resize(done);
    return data;
}

void addUpBytes(std::uint8_t* row, std::size_t size) {
    for (std::size_t i = 1; i < size; ++i)
        row[i] = static_cast<std::uint8_t>(row[i] + row[i - 1]);
}

void addUpWords(std::uint8_t* row, std::size_t size) {
    for (std::size_t i = 2; i + 1 < size; i += 2) {
        const int sum = (row[i] << 8 | row[i + 1]) + (row[i - 2] << 8 | row[i - 1]);
        row[i] = static_cast<std::uint8_t>(sum >> 8);
        row[i + 1] = static_cast<std::uint8_t>(sum);
    }
}

// The first bytes of all samples stand before all second bytes, and so on.
void joinFloats(std::uint8_t* row, std::size_t size, Bytes& copy) {
    copy.assign(row, row + size);
    const std::size_t width = size / 4;
    for (std::size_t x = 0; x < width; ++x)
        for (std::size_t b = 0; b < 4; ++b)
            row[4 * x + b] = copy[b * width + x];
}

void addUp(Bytes& rows, std::size_t rowBytes, int bits) {
    Bytes copy;
    for (std::size_t at = 0; at + rowBytes <= rows.size(); at += rowBytes) {
        if (bits == 16) {
            addUpWords(rows.data() + at, rowBytes);
            continue;
        }
        addUpBytes(rows.data() + at, rowBytes);
        if (bits == 32) joinFloats(rows.data() + at, rowBytes, copy);
    }
}

} // namespace

void unzipPsd(PsdFile& psd, const ReadLimits& limits) {
    const std::uint64_t rowBytes = (std::uint64_t(psd.width) * std::uint64_t(psd.bits) + 7) / 8;
    const std::uint64_t rows = std::uint64_t(psd.height) * std::uint64_t(psd.colors + psd.alpha);
    if (rowBytes * rows > limits.pixelBytes)
        throw RuntimeError(errors::outOfMemory,
                           "The PSD file's pixels are larger than the limit for files.", "Import");
    Bytes data = inflated(psd.pixels, static_cast<std::size_t>(rowBytes * rows));
    // Half a row of differences is no row yet.
    data.resize(data.size() / rowBytes * rowBytes);
    if (psd.differences && psd.bits > 1) addUp(data, static_cast<std::size_t>(rowBytes), psd.bits);
    psd.unzipped = std::move(data);
    psd.pixels = psd.unzipped;
}

} // namespace kvn::imaging
