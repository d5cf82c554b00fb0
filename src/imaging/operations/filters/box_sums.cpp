#include "imaging/operations/filters/box_sums.h"

#include <algorithm>
#include <vector>

#include "imaging/operations/filters/box_kernels.h"

namespace kvn::imaging {
namespace {

// One band's working rows. The column sums lie inside a row that is continued on both sides.
template <class Sum>
struct Columns {
    std::size_t samples, channels, side;
    int size;
    std::vector<Sum> column, padded, sums;

    Columns(const ConstView& view, int windowSize)
        : samples(rowBytes(view.type, view.width)),
          channels(static_cast<std::size_t>(bytesPerPixel(view.type))),
          side(static_cast<std::size_t>(windowSize / 2) * channels), size(windowSize),
          column(samples), padded(samples + 2 * side), sums(samples) {}

    const Sum* alongRow() {
        std::copy(column.begin(), column.end(), padded.begin() + static_cast<long>(side));
        for (std::size_t i = 0; i < side; ++i) {
            padded[i] = column[i % channels];
            padded[side + samples + i] = column[samples - channels + i % channels];
        }
        sumAlong(padded.data(), sums.data(), samples, size, static_cast<int>(channels));
        return sums.data();
    }
};

const std::uint8_t* clampedRow(const ConstView& view, int y) {
    return view.row(std::clamp(y, 0, view.height - 1));
}

int leastRows(int size) {
    return std::max(16, size * 2);
}

} // namespace

int oddSize(int size, int largest) {
    return std::clamp(size, 1, largest) | 1;
}

template <class Sum>
void boxSums(const ConstView& view, int size, Task& task, const BoxRows<Sum>& rows) {
    const int radius = size / 2;
    parallelRows(
        view.height, task,
        [&](int y0, int y1) {
            Columns<Sum> columns(view, size);
            std::vector<Sum> add(columns.samples), drop(columns.samples);
            // Starts one row too high: the loop's first step slides the window into place.
            for (int y = y0 - 1 - radius; y <= y0 - 1 + radius; ++y) {
                rows.terms(clampedRow(view, y), add.data());
                slideSums(columns.column.data(), add.data(), drop.data(), columns.samples);
            }
            for (int y = y0; y < y1; ++y) {
                rows.terms(clampedRow(view, y + radius), add.data());
                rows.terms(clampedRow(view, y - 1 - radius), drop.data());
                slideSums(columns.column.data(), add.data(), drop.data(), columns.samples);
                rows.finish(y, columns.alongRow());
            }
        },
        leastRows(size));
}

template void boxSums(const ConstView&, int, Task&, const BoxRows<std::uint32_t>&);
template void boxSums(const ConstView&, int, Task&, const BoxRows<std::uint64_t>&);

void boxSums16(const ConstView& view, int size, Task& task,
               const std::function<void(int y, const std::uint16_t* sums)>& finish) {
    const int radius = size / 2;
    parallelRows(
        view.height, task,
        [&](int y0, int y1) {
            Columns<std::uint16_t> columns(view, size);
            const std::vector<std::uint8_t> nothing(columns.samples);
            for (int y = y0 - 1 - radius; y <= y0 - 1 + radius; ++y)
                slideBytes(columns.column.data(), clampedRow(view, y), nothing.data(),
                           columns.samples);
            for (int y = y0; y < y1; ++y) {
                slideBytes(columns.column.data(), clampedRow(view, y + radius),
                           clampedRow(view, y - 1 - radius), columns.samples);
                finish(y, columns.alongRow());
            }
        },
        leastRows(size));
}

} // namespace kvn::imaging
