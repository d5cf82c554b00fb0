#include "imaging/operations/filters/padded_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kvn::imaging {

constexpr std::size_t readAhead = 256;

PaddedRows::PaddedRows(const ConstView& shape, int above, int below, int side, Make make)
    : shape_(shape), make_(std::move(make)), above_(above), count_(above + below + 1), side_(side),
      rows_(static_cast<std::size_t>(count_)), kept_(rows_.size(), -1), pointers_(rows_.size()) {}

PaddedRows::PaddedRows(const ConstView& view, int above, int below, int side)
    : PaddedRows(view, above, below, side, [view](int y, std::uint8_t* row) {
          std::memcpy(row, view.row(y), rowBytes(view.type, view.width));
      }) {}

const std::uint8_t* const* PaddedRows::around(int y) {
    for (int k = 0; k < count_; ++k)
        pointers_[static_cast<std::size_t>(k)] =
            padded(std::clamp(y - above_ + k, 0, shape_.height - 1));
    return pointers_.data();
}

const std::uint8_t* PaddedRows::padded(int y) {
    const std::size_t place = static_cast<std::size_t>(y) % rows_.size();
    std::vector<std::uint8_t>& row = rows_[place];
    if (kept_[place] == y) return row.data();
    const int channels = bytesPerPixel(shape_.type);
    const std::size_t side = static_cast<std::size_t>(side_) * static_cast<std::size_t>(channels);
    row.resize(rowBytes(shape_.type, shape_.width) + 2 * side + readAhead);
    make_(y, row.data() + side);
    repeatEdges(row.data(), shape_.width, side_, channels);
    kept_[place] = y;
    return row.data();
}

void repeatEdges(std::uint8_t* row, int width, int side, int channels) {
    const auto step = static_cast<std::size_t>(channels);
    std::uint8_t* const first = row + static_cast<std::size_t>(side) * step;
    std::uint8_t* const last = first + static_cast<std::size_t>(width - 1) * step;
    for (int i = 0; i < side; ++i)
        std::memcpy(row + static_cast<std::size_t>(i) * step, first, step);
    for (int i = 1; i <= side; ++i)
        std::memcpy(last + static_cast<std::size_t>(i) * step, last, step);
}

} // namespace kvn::imaging
