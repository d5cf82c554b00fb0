#include "engine/detail/history_pack.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace kvn::engine::detail {

namespace {

// Eight registers of sixteen bytes. A group's bits are kept as up to three layers, of 4, 2 and 1
// bits a byte; in each layer whole registers are laid over one another, so that packing needs no
// shift across bytes.
using Lanes = std::uint64_t __attribute__((vector_size(16)));
constexpr std::size_t laneBytes = sizeof(Lanes);
constexpr int lanesPerGroup = 8;
constexpr std::size_t groupBytes = laneBytes * lanesPerGroup;

constexpr Lanes everyByte(std::uint8_t value) {
    const std::uint64_t word = 0x0101010101010101u * value;
    return Lanes{word, word};
}

Lanes load(const std::uint8_t* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, laneBytes);
    return lanes;
}

void store(std::uint8_t* to, Lanes lanes) {
    std::memcpy(to, &lanes, laneBytes);
}

struct Group {
    Lanes lanes[lanesPerGroup];

    // How many bits the largest byte needs, 0 to 8.
    int bits() const {
        Lanes all = lanes[0];
        for (int i = 1; i < lanesPerGroup; ++i)
            all |= lanes[i];
        std::uint64_t word = all[0] | all[1];
        word |= word >> 32;
        word |= word >> 16;
        word |= word >> 8;
        return std::bit_width(static_cast<unsigned>(word & 0xFF));
    }
};

// One layer holds `Bits` bits of every byte of the group, those from bit `shift` on.
template <int Bits>
std::uint8_t* writeLayer(const Group& group, int shift, std::uint8_t* out) {
    constexpr Lanes mask = everyByte((1 << Bits) - 1);
    for (int i = 0; i < Bits; ++i, out += laneBytes) {
        Lanes sum = (group.lanes[i] >> shift) & mask;
        for (int j = 1; j < 8 / Bits; ++j)
            sum |= ((group.lanes[i + j * Bits] >> shift) & mask) << (j * Bits);
        store(out, sum);
    }
    return out;
}

template <int Bits>
const std::uint8_t* readLayer(Group& group, int shift, const std::uint8_t* in) {
    constexpr Lanes mask = everyByte((1 << Bits) - 1);
    for (int i = 0; i < Bits; ++i, in += laneBytes) {
        const Lanes sum = load(in);
        for (int j = 0; j < 8 / Bits; ++j)
            group.lanes[i + j * Bits] |= ((sum >> (j * Bits)) & mask) << shift;
    }
    return in;
}

std::uint8_t* packGroup(const std::uint8_t* bytes, std::uint8_t* out) {
    Group group;
    std::memcpy(&group, bytes, groupBytes);
    const int bits = group.bits();
    *out++ = static_cast<std::uint8_t>(bits);
    if (bits == 8) {
        std::memcpy(out, bytes, groupBytes);
        return out + groupBytes;
    }
    if (bits & 4) out = writeLayer<4>(group, 0, out);
    if (bits & 2) out = writeLayer<2>(group, bits & 4, out);
    if (bits & 1) out = writeLayer<1>(group, bits & 6, out);
    return out;
}

const std::uint8_t* unpackGroup(const std::uint8_t* in, std::uint8_t* bytes) {
    const int bits = *in++;
    if (bits == 8) {
        std::memcpy(bytes, in, groupBytes);
        return in + groupBytes;
    }
    Group group{};
    if (bits & 4) in = readLayer<4>(group, 0, in);
    if (bits & 2) in = readLayer<2>(group, bits & 4, in);
    if (bits & 1) in = readLayer<1>(group, bits & 6, in);
    std::memcpy(bytes, &group, groupBytes);
    return in;
}

// 0, -1, 1, -2, ... become 0, 1, 2, 3, ...
std::uint8_t fold(int difference) {
    const auto d = static_cast<std::uint8_t>(difference);
    return static_cast<std::uint8_t>((d << 1) ^ (d & 0x80 ? 0xFF : 0));
}

std::uint8_t unfold(std::uint8_t folded) {
    return static_cast<std::uint8_t>((folded >> 1) ^ -(folded & 1));
}

void differences(const std::uint8_t* row, const std::uint8_t* predicted, std::size_t width,
                 std::uint8_t* out) {
    for (std::size_t i = 0; i < width; ++i)
        out[i] = fold(row[i] - predicted[i]);
}

// As `differences`, with the pixel to the left as the prediction; the first pixel has none.
void firstDifferences(const std::uint8_t* row, const PackShape& shape, std::uint8_t* out) {
    const std::size_t first = std::min(shape.pixelBytes, shape.width);
    for (std::size_t i = 0; i < first; ++i)
        out[i] = fold(row[i]);
    differences(row + first, row, shape.width - first, out + first);
}

void restore(const std::uint8_t* folded, const std::uint8_t* predicted, std::size_t width,
             std::uint8_t* row) {
    for (std::size_t i = 0; i < width; ++i)
        row[i] = static_cast<std::uint8_t>(predicted[i] + unfold(folded[i]));
}

void restoreFirst(const std::uint8_t* folded, const PackShape& shape, std::uint8_t* row) {
    const std::size_t first = std::min(shape.pixelBytes, shape.width);
    for (std::size_t i = 0; i < first; ++i)
        row[i] = unfold(folded[i]);
    for (std::size_t i = first; i < shape.width; ++i)
        row[i] = static_cast<std::uint8_t>(row[i - first] + unfold(folded[i]));
}

} // namespace

std::size_t packedBound(const PackShape& shape) {
    const std::size_t groups = (shape.size() + groupBytes - 1) / groupBytes;
    return groups * (groupBytes + 1);
}

std::size_t packRows(const PackShape& shape, const std::uint8_t* data, std::size_t stride,
                     std::uint8_t* out) {
    std::uint8_t* const begin = out;
    std::vector<std::uint8_t> waiting(shape.width + groupBytes);
    std::size_t filled = 0;
    for (int y = 0; y < shape.rows; ++y, data += stride) {
        if (y == 0)
            firstDifferences(data, shape, waiting.data());
        else
            differences(data, data - stride, shape.width, waiting.data() + filled);
        filled += shape.width;
        std::size_t done = 0;
        for (; done + groupBytes <= filled; done += groupBytes)
            out = packGroup(waiting.data() + done, out);
        filled -= done;
        std::memmove(waiting.data(), waiting.data() + done, filled);
    }
    if (filled > 0) {
        std::memset(waiting.data() + filled, 0, groupBytes - filled);
        out = packGroup(waiting.data(), out);
    }
    return static_cast<std::size_t>(out - begin);
}

void unpackRows(const PackShape& shape, const std::uint8_t* packed, std::uint8_t* data,
                std::size_t stride) {
    std::vector<std::uint8_t> waiting(shape.width + groupBytes);
    std::size_t filled = 0;
    for (int y = 0; y < shape.rows; ++y, data += stride) {
        for (; filled < shape.width; filled += groupBytes)
            packed = unpackGroup(packed, waiting.data() + filled);
        if (y == 0)
            restoreFirst(waiting.data(), shape, data);
        else
            restore(waiting.data(), data - stride, shape.width, data);
        filled -= shape.width;
        std::memmove(waiting.data(), waiting.data() + shape.width, filled);
    }
}

} // namespace kvn::engine::detail
