#include "imaging/codecs/png_filter.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kvn::imaging {

namespace {

// Wider registers where the machine has them, from the same plain loops.
#if defined(__x86_64__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define KVN_WIDE __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define KVN_WIDE
#endif

enum Filter { None, Sub, Up, Average, Paeth, filterCount };

KVN_WIDE void subtract(int filter, const std::uint8_t* __restrict row,
                       const std::uint8_t* __restrict left, const std::uint8_t* __restrict above,
                       const std::uint8_t* __restrict corner, std::uint8_t* __restrict to,
                       std::size_t n) {
    switch (filter) {
    case None:
        std::memcpy(to, row, n);
        return;
    case Sub:
        for (std::size_t i = 0; i < n; ++i)
            to[i] = static_cast<std::uint8_t>(row[i] - left[i]);
        return;
    case Up:
        for (std::size_t i = 0; i < n; ++i)
            to[i] = static_cast<std::uint8_t>(row[i] - above[i]);
        return;
    case Average:
        for (std::size_t i = 0; i < n; ++i)
            to[i] = static_cast<std::uint8_t>(row[i] - ((left[i] + above[i]) >> 1));
        return;
    default:
        // Sixteen bits are enough for every difference, and twice as many fit a register.
        for (std::size_t i = 0; i < n; ++i) {
            const auto a = static_cast<std::int16_t>(left[i]);
            const auto b = static_cast<std::int16_t>(above[i]);
            const auto c = static_cast<std::int16_t>(corner[i]);
            auto pa = static_cast<std::int16_t>(b - c), pb = static_cast<std::int16_t>(a - c);
            auto pc = static_cast<std::int16_t>(pa + pb);
            pa = pa < 0 ? static_cast<std::int16_t>(-pa) : pa;
            pb = pb < 0 ? static_cast<std::int16_t>(-pb) : pb;
            pc = pc < 0 ? static_cast<std::int16_t>(-pc) : pc;
            const std::int16_t guess = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
            to[i] = static_cast<std::uint8_t>(row[i] - guess);
        }
    }
}

KVN_WIDE std::uint64_t sumOfSizes(const std::uint8_t* residues, std::size_t n) {
    std::uint64_t sum = 0;
    constexpr std::size_t block = 1 << 16; // keeps the inner sum in 32 bits
    for (std::size_t begin = 0; begin < n; begin += block) {
        const std::size_t end = std::min(n, begin + block);
        std::uint32_t part = 0;
        for (std::size_t i = begin; i < end; ++i) {
            const std::uint8_t v = residues[i];
            part += v < 128 ? v : static_cast<std::uint8_t>(-v);
        }
        sum += part;
    }
    return sum;
}

} // namespace

PngRowFilter::PngRowFilter(std::size_t rowBytes, std::size_t pixelBytes)
    : rowBytes_(rowBytes), pixelBytes_(pixelBytes), row_(rowBytes + pixelBytes),
      above_(rowBytes + pixelBytes), trial_(rowBytes) {}

void PngRowFilter::filter(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* to) {
    std::uint8_t* padded = row_.data() + pixelBytes_;
    std::memcpy(padded, row, rowBytes_);
    std::uint8_t* paddedAbove = above_.data() + pixelBytes_;
    if (above) {
        std::memcpy(paddedAbove, above, rowBytes_);
    } else {
        std::memset(paddedAbove, 0, rowBytes_);
    }
    std::uint64_t best = std::numeric_limits<std::uint64_t>::max();
    for (int candidate = None; candidate < filterCount; ++candidate) {
        subtract(candidate, padded, row_.data(), paddedAbove, above_.data(), trial_.data(),
                 rowBytes_);
        const std::uint64_t sum = sumOfSizes(trial_.data(), rowBytes_);
        if (sum >= best) continue;
        best = sum;
        to[0] = static_cast<std::uint8_t>(candidate);
        std::memcpy(to + 1, trial_.data(), rowBytes_);
    }
}

namespace {

// The pixel to the left is the result of the step before, so these run pixel by pixel, with the
// channels of a pixel side by side in one register.
using PixelBytes [[gnu::vector_size(8)]] = std::uint8_t;
using PixelWords [[gnu::vector_size(16)]] = std::int16_t;

PixelWords load(const std::uint8_t* from) {
    PixelBytes bytes{};
    std::memcpy(&bytes, from, sizeof bytes);
    return __builtin_convertvector(bytes, PixelWords);
}

// May write past the pixel: the next ones come after it.
template <int size>
void store(PixelWords pixel, std::uint8_t* to) {
    const PixelBytes bytes = __builtin_convertvector(pixel, PixelBytes);
    std::memcpy(to, &bytes, size <= 4 ? 4 : 8);
}

PixelWords distance(PixelWords difference) {
    return difference < 0 ? -difference : difference;
}

struct PaethGuess {
    PixelWords corner{};
    PixelWords operator()(PixelWords left, PixelWords above) {
        const PixelWords toLeft = above - corner, toAbove = left - corner;
        const PixelWords pa = distance(toLeft), pb = distance(toAbove);
        const PixelWords pc = distance(toLeft + toAbove);
        const PixelWords other = pb <= pc ? above : corner;
        corner = above;
        return ((pa <= pb) & (pa <= pc)) ? left : other;
    }
};
struct AverageGuess {
    PixelWords operator()(PixelWords left, PixelWords above) const { return (left + above) >> 1; }
};
struct LeftGuess {
    PixelWords operator()(PixelWords left, PixelWords) const { return left; }
};

template <int size, typename Guess>
void addGuesses(const std::uint8_t* in, const std::uint8_t* above, std::uint8_t* row,
                std::size_t n) {
    Guess guess;
    PixelWords left{};
    const auto step = [&](const std::uint8_t* residues, const std::uint8_t* up, std::uint8_t* to) {
        left = (load(residues) + guess(left, load(up))) & 0xff;
        store<size>(left, to);
    };
    std::size_t i = 0;
    for (; i + sizeof(PixelBytes) <= n; i += size)
        step(in + i, above + i, row + i);
    // The last pixels, which are shorter than what a step reads and writes.
    for (; i + size <= n; i += size) {
        std::uint8_t residues[8] = {}, up[8] = {}, to[8];
        std::memcpy(residues, in + i, size);
        std::memcpy(up, above + i, size);
        step(residues, up, to);
        std::memcpy(row + i, to, size);
    }
}

template <int size>
void addRow(int filter, const std::uint8_t* in, const std::uint8_t* above, std::uint8_t* row,
            std::size_t n) {
    if (filter == Sub) return addGuesses<size, LeftGuess>(in, above, row, n);
    if (filter == Average) return addGuesses<size, AverageGuess>(in, above, row, n);
    addGuesses<size, PaethGuess>(in, above, row, n);
}

} // namespace

bool unfilterPngRow(int filter, const std::uint8_t* residues, const std::uint8_t* above,
                    std::uint8_t* row, std::size_t rowBytes, std::size_t pixelBytes) {
    if (filter < None || filter >= filterCount) return false;
    if (filter == None) {
        std::memcpy(row, residues, rowBytes);
        return true;
    }
    if (filter == Up) {
        for (std::size_t i = 0; i < rowBytes; ++i)
            row[i] = static_cast<std::uint8_t>(residues[i] + above[i]);
        return true;
    }
    switch (pixelBytes) {
    case 1:
        addRow<1>(filter, residues, above, row, rowBytes);
        break;
    case 2:
        addRow<2>(filter, residues, above, row, rowBytes);
        break;
    case 3:
        addRow<3>(filter, residues, above, row, rowBytes);
        break;
    case 4:
        addRow<4>(filter, residues, above, row, rowBytes);
        break;
    case 6:
        addRow<6>(filter, residues, above, row, rowBytes);
        break;
    default:
        addRow<8>(filter, residues, above, row, rowBytes);
        break;
    }
    return true;
}

} // namespace kvn::imaging
