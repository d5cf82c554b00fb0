#include "imaging/operations/filters/brightest.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "imaging/operations/filters/box_sums.h"
#include "imaging/operations/filters/rank.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/luma_planes.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int largestSize = 255;

constexpr Argument brightestArguments[] = {
    {"filter size", ArgumentKind::Integer, 1, largestSize, "px", "side of the window; made odd"},
    {"ignore alpha", ArgumentKind::Boolean, 0, 0, "", "alpha stays"},
};

// A pixel as a number that is greater the brighter it is: brightness on top, then the channels.
using Opaque = std::uint32_t; // luma, r, g, b
using Clear = std::uint64_t;  // 16 bits of luma times alpha, then r, g, b, a

constexpr int block = ColorPlanes::size;

KVN_CLONES void packBlock(const ColorPlanes& planes, const std::uint8_t* luma, Opaque* keys) {
    for (int i = 0; i < block; ++i)
        keys[i] = Opaque{luma[i]} << 24 | Opaque{planes.r[i]} << 16 | Opaque{planes.g[i]} << 8 |
                  planes.b[i];
}
KVN_CLONES void packBlock(const ColorPlanes& planes, const std::uint8_t* luma, Clear* keys) {
    for (int i = 0; i < block; ++i) {
        const std::uint32_t weight = std::uint32_t{luma[i]} * planes.a[i];
        const std::uint32_t color = Opaque{planes.r[i]} << 24 | Opaque{planes.g[i]} << 16 |
                                    Opaque{planes.b[i]} << 8 | planes.a[i];
        keys[i] = Clear{weight} << 32 | color;
    }
}

KVN_CLONES void unpackBlock(const Opaque* keys, ColorPlanes& planes) {
    for (int i = 0; i < block; ++i) {
        planes.r[i] = static_cast<std::uint8_t>(keys[i] >> 16);
        planes.g[i] = static_cast<std::uint8_t>(keys[i] >> 8);
        planes.b[i] = static_cast<std::uint8_t>(keys[i]);
    }
}
KVN_CLONES void unpackBlock(const Clear* keys, ColorPlanes& planes) {
    for (int i = 0; i < block; ++i) {
        planes.r[i] = static_cast<std::uint8_t>(keys[i] >> 24);
        planes.g[i] = static_cast<std::uint8_t>(keys[i] >> 16);
        planes.b[i] = static_cast<std::uint8_t>(keys[i] >> 8);
        planes.a[i] = static_cast<std::uint8_t>(keys[i]);
    }
}

// out[i] is read last when it is written, or not at all: `b` lies ahead of it or elsewhere.
KVN_CLONES void greater(const Opaque* a, const Opaque* b, Opaque* out, std::size_t count) {
#pragma GCC ivdep
    for (std::size_t i = 0; i < count; ++i)
        out[i] = a[i] > b[i] ? a[i] : b[i];
}
KVN_CLONES void greater(const Clear* a, const Clear* b, Clear* out, std::size_t count) {
#pragma GCC ivdep
    for (std::size_t i = 0; i < count; ++i)
        out[i] = a[i] > b[i] ? a[i] : b[i];
}

// Rows of keys have room for whole blocks.
template <class Key>
std::vector<Key> keyRow(int width) {
    return std::vector<Key>(static_cast<std::size_t>((width + block - 1) / block) * block);
}

template <class Key>
void packRow(const ConstView& view, int y, std::vector<Key>& keys) {
    const std::uint8_t* row = view.row(std::clamp(y, 0, view.height - 1));
    const int channels = bytesPerPixel(view.type);
    ColorPlanes planes;
    alignas(64) std::uint8_t luma[block];
    for (int x = 0; x < view.width; x += block) {
        splitPlanes(view.type, row + x * channels, std::min(block, view.width - x), planes);
        lumaOf(planes, luma);
        packBlock(planes, luma, &keys[static_cast<std::size_t>(x)]);
    }
}

// Alpha of the row stays where the keys have none.
template <class Key>
void unpackRow(const std::vector<Key>& keys, const std::uint8_t* alphaRow, const View& view,
               int y) {
    const int channels = bytesPerPixel(view.type);
    ColorPlanes planes;
    for (int x = 0; x < view.width; x += block) {
        const int count = std::min(block, view.width - x);
        if (sizeof(Key) == sizeof(Opaque))
            splitPlanes(view.type, alphaRow + x * channels, count, planes);
        unpackBlock(&keys[static_cast<std::size_t>(x)], planes);
        mergePlanes(planes, count, view.type, view.row(y) + x * channels);
    }
}

// The greatest of every `size` neighbours along the row, edges repeated. Windows of 1, 2, 4 ...
// keys; the last two overlap, which does no harm.
template <class Key>
void greatestAlong(std::vector<Key>& keys, int width, int size, std::vector<Key>& wide) {
    const auto count = static_cast<std::size_t>(width), side = static_cast<std::size_t>(size / 2);
    wide.resize(count + 2 * side);
    std::fill_n(wide.begin(), side, keys[0]);
    std::copy_n(keys.begin(), count, wide.begin() + static_cast<std::ptrdiff_t>(side));
    std::fill_n(wide.end() - static_cast<std::ptrdiff_t>(side), side, keys[count - 1]);
    std::size_t window = 1, length = wide.size();
    for (; window * 2 <= static_cast<std::size_t>(size); window *= 2) {
        length -= window;
        greater(wide.data(), wide.data() + window, wide.data(), length);
    }
    greater(wide.data(), wide.data() + (static_cast<std::size_t>(size) - window), keys.data(),
            count);
}

// Down the columns, `size` rows at a time: the greatest from each row to the last of the block, and
// from the first of the next block to each row, make every window between them.
template <class Key>
class Columns {
  public:
    Columns(const ConstView& view, int size)
        : view_(view), tails_(static_cast<std::size_t>(size), keyRow<Key>(view.width)),
          head_(keyRow<Key>(view.width)), next_(keyRow<Key>(view.width)) {}

    // Calls `row(y, keys)` for y0 .. y1 - 1; the keys may be written over.
    template <class Row>
    void each(int y0, int y1, const Row& row) {
        const int size = static_cast<int>(tails_.size());
        auto result = keyRow<Key>(view_.width);
        for (int first = y0; first < y1; first += size) {
            startBlock(first - size / 2);
            for (int j = 0; j < size && first + j < y1; ++j) {
                const auto& tail = tails_[static_cast<std::size_t>(j)];
                if (j > 0) growHead(first - size / 2 + size + j - 1, j == 1);
                if (j > 0)
                    greater(tail.data(), head_.data(), result.data(), result.size());
                else
                    result = tail;
                row(first + j, result);
            }
        }
    }

  private:
    void startBlock(int y) {
        for (std::size_t j = tails_.size(); j-- > 0;) {
            packRow(view_, y + static_cast<int>(j), tails_[j]);
            if (j + 1 < tails_.size())
                greater(tails_[j].data(), tails_[j + 1].data(), tails_[j].data(), tails_[j].size());
        }
    }
    void growHead(int y, bool fresh) {
        packRow(view_, y, fresh ? head_ : next_);
        if (!fresh) greater(head_.data(), next_.data(), head_.data(), head_.size());
    }

    ConstView view_;
    std::vector<std::vector<Key>> tails_;
    std::vector<Key> head_, next_;
};

template <class Key>
Raster brightestOf(const Raster& source, int size, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            Columns<Key> columns(from, size);
            std::vector<Key> wide;
            columns.each(y0, y1, [&](int y, std::vector<Key>& keys) {
                greatestAlong(keys, from.width, size, wide);
                unpackRow(keys, from.row(y), to, y);
            });
        },
        std::max(64, 2 * size));
    return result;
}

Raster maximum2(const Raster& picture, const Arguments& arguments, Task& task) {
    const int size = oddSize(arguments.integer(0), largestSize);
    if (size == 1) return picture;
    const Raster source = promoted(picture, task);
    const bool keepAlpha = arguments.boolean(1) || !hasAlpha(source.type());
    const int channels = bytesPerPixel(source.type());
    if (channels <= 2 && keepAlpha) return maximumOperation.run(source, arguments, task);
    return keepAlpha ? brightestOf<Opaque>(source, size, task)
                     : brightestOf<Clear>(source, size, task);
}

} // namespace

const Operation maximum2Operation = {
    .name = "Effects.Maximum2",
    .undoName = "Maximum",
    .arguments = brightestArguments,
    .run = maximum2,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .note = "The brightest pixel of the square window around every pixel, with all its channels.",
};

} // namespace kvn::imaging
