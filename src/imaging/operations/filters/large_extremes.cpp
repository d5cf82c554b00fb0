#include "imaging/operations/filters/large_extremes.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/operations/filters/window_rows.h"

namespace kvn::imaging {
namespace {

// One band, from its first row on.
class BlockRows {
  public:
    BlockRows(Extreme which, int size, const ConstView& view, int y0)
        : which_(which), size_(size), view_(view), first_(y0 - size / 2),
          count_(rowBytes(view.type, view.width)),
          scratch_(rowBytes(view.type, view.width + size - 1)),
          ends_(count_ * static_cast<std::size_t>(size)), coming_(ends_), begin_(count_) {
        for (int k = 0; k < size_; ++k)
            alongRow(k, at(ends_, k));
        closeBlock();
    }

    void next(std::uint8_t* out) {
        const int k = place_;
        if (k == 0) {
            std::memcpy(out, at(ends_, 0), count_);
        } else {
            alongRow(block_ + size_ + k - 1, at(coming_, k - 1));
            if (k == 1)
                std::memcpy(begin_.data(), at(coming_, 0), count_);
            else
                mergeExtreme(which_, at(coming_, k - 1), begin_.data(), count_);
            const std::uint8_t* const both[] = {at(ends_, k), begin_.data()};
            extremeOfRows(which_, both, 2, out, count_);
        }
        if (++place_ < size_) return;
        place_ = 0;
        block_ += size_;
        alongRow(block_ + size_ - 1, at(coming_, size_ - 1));
        std::swap(ends_, coming_);
        closeBlock();
    }

  private:
    std::uint8_t* at(std::vector<std::uint8_t>& rows, int k) {
        return rows.data() + count_ * static_cast<std::size_t>(k);
    }
    // The extremes along the row that is so many below the first one any window reaches.
    void alongRow(int k, std::uint8_t* out) {
        const int y = std::clamp(first_ + k, 0, view_.height - 1), side = size_ / 2;
        const int step = bytesPerPixel(view_.type);
        std::memcpy(scratch_.data() + side * step, view_.row(y), count_);
        repeatEdges(scratch_.data(), view_.width, side, step);
        extremeAlong(which_, scratch_.data(), out, count_, size_, step);
    }
    // Each row of the block becomes the extreme of itself and all below it.
    void closeBlock() {
        for (int k = size_ - 2; k >= 0; --k)
            mergeExtreme(which_, at(ends_, k + 1), at(ends_, k), count_);
    }

    Extreme which_;
    int size_;
    ConstView view_;
    int first_, block_ = 0, place_ = 0;
    std::size_t count_;
    std::vector<std::uint8_t> scratch_, ends_, coming_, begin_;
};

} // namespace

Raster extremeOfLargeWindows(Extreme which, const Raster& picture, int size, bool keepAlpha,
                             Task& task) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const bool carries = keepAlpha && hasAlpha(from.type);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            BlockRows rows(which, size, from, y0);
            for (int y = y0; y < y1; ++y) {
                rows.next(to.row(y));
                if (carries)
                    copyAlpha(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
            }
        },
        4 * size);
    return result;
}

} // namespace kvn::imaging
