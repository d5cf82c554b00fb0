#include "imaging/operations/support/hidden_colors.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

// Whole pixels as numbers, whose highest byte is alpha: less 1 it has the highest bit set only if
// it was 0. So vectors of pixels are told at once.
template <class Pixel>
bool anyIsClear(const std::uint8_t* row, int width) {
    constexpr int bits = 8 * sizeof(Pixel);
    Pixel seen = 0;
    for (int x = 0; x < width; ++x) {
        Pixel pixel;
        std::memcpy(&pixel, row + static_cast<std::size_t>(x) * sizeof(Pixel), sizeof(Pixel));
        seen = static_cast<Pixel>(seen | ((pixel >> (bits - 8)) - 1));
    }
    return seen >> (bits - 1) != 0;
}

bool hasClearPixels(const ConstView& view, Task& task) {
    const auto test =
        view.type == ImageType::Rgba32 ? anyIsClear<std::uint32_t> : anyIsClear<std::uint16_t>;
    std::atomic<bool> found{false};
    parallelRows(view.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1 && !found.load(std::memory_order_relaxed); ++y)
            if (test(view.row(y), view.width)) found = true;
    });
    return found;
}

// The mean colour of the visible ones of each four pixels, alpha 255, or clear if all four are.
template <int Channels>
void halveRow(const std::uint8_t* upper, const std::uint8_t* lower, int width, std::uint8_t* to) {
    // Twelfths, so that the mean of up to four is exact in whole numbers.
    constexpr unsigned shares[5] = {0, 12, 6, 4, 3};
    for (int x = 0; x < width; x += 2, to += Channels) {
        const int left = x * Channels, right = std::min(x + 1, width - 1) * Channels;
        unsigned count = 0, sums[Channels] = {};
        for (const std::uint8_t* pixel : {upper + left, upper + right, lower + left, lower + right})
            if (pixel[Channels - 1] != 0) {
                ++count;
                for (int c = 0; c < Channels - 1; ++c)
                    sums[c] += pixel[c];
            }
        for (int c = 0; c < Channels - 1; ++c)
            to[c] = static_cast<std::uint8_t>((sums[c] * shares[count] + 6) / 12);
        to[Channels - 1] = count > 0 ? 255 : 0;
    }
}

template <int Channels>
void fillRow(const std::uint8_t* coarse, std::uint8_t* fine, int width) {
    for (int x = 0; x < width; ++x, fine += Channels)
        if (fine[Channels - 1] == 0) std::copy_n(coarse + x / 2 * Channels, Channels - 1, fine);
}

Raster halved(const ConstView& fine, Task& task) {
    Raster result = Raster::uninitialized(fine.type, (fine.width + 1) / 2, (fine.height + 1) / 2);
    const View to = result.edit();
    const auto halve = fine.type == ImageType::Rgba32 ? halveRow<4> : halveRow<2>;
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            halve(fine.row(2 * y), fine.row(std::min(2 * y + 1, fine.height - 1)), fine.width,
                  to.row(y));
    });
    return result;
}

void fill(Raster& fine, const ConstView& coarse, Task& task) {
    const View to = fine.edit();
    const auto fillOne = to.type == ImageType::Rgba32 ? fillRow<4> : fillRow<2>;
    parallelRows(to.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            fillOne(coarse.row(y / 2), to.row(y), to.width);
    });
}

} // namespace

Raster withoutHiddenColors(const Raster& source, Task& task) {
    if (!hasAlpha(source.type())) return source;
    const auto isClear = [](Rgba color) { return color.a == 0; };
    if (hasPalette(source.type()) && std::ranges::none_of(source.palette().colors(), isClear))
        return source;
    Task silent; // the progress belongs to the operation that reads this
    silent.threads = task.threads;
    // From the picture down to the first size without a clear pixel.
    std::vector<Raster> levels{promoted(source, silent)};
    while (hasClearPixels(levels.back().view(), silent)) {
        const Raster& last = levels.back();
        if (last.width() == 1 && last.height() == 1) return source;
        levels.push_back(halved(last.view(), silent));
    }
    if (levels.size() == 1) return source;
    for (std::size_t i = levels.size() - 1; i > 0; --i)
        fill(levels[i - 1], levels[i].view(), silent);
    Raster result = std::move(levels.front());
    // The smaller ones would lie in the cache, of no use to anyone, while the operation runs.
    levels.clear();
    PixelBuffer::trimCache();
    return result;
}

} // namespace kvn::imaging
