#include "imaging/operations/filters/extremes.h"

#include <algorithm>
#include <vector>

#include "imaging/operations/filters/window_rows.h"

namespace kvn::imaging {
namespace {

constexpr std::size_t slack = 256; // bytes behind a row that whole vectors reach

// The rows of one band, in blocks of as many as a window has, and in stripes of columns whose rows
// stay in the nearest cache.
class Blocks {
  public:
    Blocks(Extreme which, int size, const ConstView& from, const View& to)
        : which_(which), size_(size), side_(size / 2), step_(bytesPerPixel(from.type)), from_(from),
          to_(to), stripe_(std::max(3072 / step_, 8 * size)),
          rowBytes_(static_cast<std::size_t>((stripe_ + 2 * side_) * step_) + slack),
          scratch_(rowBytes_ * static_cast<std::size_t>(size)),
          rows_(static_cast<std::size_t>(2 * size - 1)), shifted_(rows_.size()) {}

    // `count` rows from y on, at most `size`.
    void make(int y, int count) {
        for (int k = 0; k < size_ + count - 1; ++k)
            rows_[static_cast<std::size_t>(k)] =
                from_.row(std::clamp(y - side_ + k, 0, from_.height - 1));
        for (int x = 0; x < from_.width; x += stripe_)
            makeStripe(x, std::min(x + stripe_, from_.width), y, count);
    }

  private:
    // First down the columns, then along the rows, which need `side_` columns more on both ends.
    void makeStripe(int x0, int x1, int y, int count) {
        const int begin = std::max(0, x0 - side_), end = std::min(from_.width, x1 + side_);
        for (int k = 0; k < size_ + count - 1; ++k)
            shifted_[static_cast<std::size_t>(k)] =
                rows_[static_cast<std::size_t>(k)] + std::ptrdiff_t{begin} * step_;
        const int before = begin - (x0 - side_), inside = end - begin, after = x1 + side_ - end;
        extremeOfColumns(which_, shifted_.data(), size_, count,
                         scratch_.data() + std::ptrdiff_t{before} * step_, rowBytes_,
                         static_cast<std::size_t>(inside * step_));
        for (int j = 0; j < count; ++j) {
            std::uint8_t* const row = scratch_.data() + rowBytes_ * static_cast<std::size_t>(j);
            repeatEnds(row, before, inside, after);
            extremeAlong(which_, row, to_.row(y + j) + std::ptrdiff_t{x0} * step_,
                         static_cast<std::size_t>((x1 - x0) * step_), size_, step_);
        }
    }
    void repeatEnds(std::uint8_t* row, int before, int inside, int after) const {
        std::uint8_t* const first = row + std::ptrdiff_t{before} * step_;
        for (std::uint8_t* to = row; to != first; to += step_)
            std::copy_n(first, step_, to);
        std::uint8_t* to = first + std::ptrdiff_t{inside} * step_;
        for (int i = 0; i < after; ++i, to += step_)
            std::copy_n(to - step_, step_, to);
    }

    const Extreme which_;
    const int size_, side_, step_;
    const ConstView from_;
    const View to_;
    const int stripe_;
    const std::size_t rowBytes_;
    std::vector<std::uint8_t> scratch_;
    std::vector<const std::uint8_t*> rows_, shifted_;
};

} // namespace

Raster extremeOfWindows(Extreme which, const Raster& picture, int size, bool keepAlpha,
                        Task& task) {
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const bool carries = keepAlpha && hasAlpha(from.type);
    parallelRows(
        from.height, task,
        [&](int y0, int y1) {
            Blocks blocks(which, size, from, to);
            for (int y = y0; y < y1; y += size)
                blocks.make(y, std::min(size, y1 - y));
            for (int y = y0; carries && y < y1; ++y)
                copyAlpha(from.row(y), to.row(y), from.width, bytesPerPixel(from.type));
        },
        std::max(32, 4 * size));
    return result;
}

} // namespace kvn::imaging
