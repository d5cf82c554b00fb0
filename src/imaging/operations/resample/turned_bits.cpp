#include "imaging/operations/resample/turned_bits.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>

namespace kvn::imaging {
namespace {

constexpr int mostBits = 32; // at a time

// Up to mostBits bits of a row from bit x on, as a number. Reads up to eight bytes further.
std::uint64_t bitsAt(const std::uint8_t* row, int x, int count) {
    std::uint64_t bits;
    std::memcpy(&bits, row + x / 8, sizeof bits);
    if constexpr (std::endian::native == std::endian::little) bits = __builtin_bswap64(bits);
    return bits << x % 8 >> (64 - count);
}

// A row of bits that is written from its begin to its end.
class BitWriter {
  public:
    explicit BitWriter(std::uint8_t* row) : next_(row) {}
    void put(std::uint64_t bits, int count) {
        held_ = held_ << count | bits;
        heldBits_ += count;
        if (heldBits_ < mostBits) return;
        heldBits_ -= mostBits;
        auto word = static_cast<std::uint32_t>(held_ >> heldBits_);
        if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap32(word);
        std::memcpy(next_, &word, sizeof word);
        next_ += sizeof word;
    }
    void finish() {
        for (; heldBits_ > 0; heldBits_ -= 8) {
            const std::uint64_t aligned = held_ << (64 - heldBits_);
            *next_++ = static_cast<std::uint8_t>(aligned >> 56);
            held_ = aligned << 8 >> 8 >> (64 - heldBits_);
        }
    }

  private:
    std::uint8_t* next_;
    std::uint64_t held_ = 0; // the last heldBits_ of them
    int heldBits_ = 0;       // below mostBits between the calls
};

// The way of a row of the result through the source. It runs along one row of the source with
// whole steps of one pixel for a while, and such runs are copied as they are.
class SlantedRow {
  public:
    // Where the first pixel lies in the source, and how far the next one is.
    SlantedRow(const ConstView& source, int outside, double x, double y, double cosine, double sine)
        : source_(source), outside_(outside), x_(x + 0.5), y_(y + 0.5), cosine_(cosine),
          sine_(sine) {}

    void copyTo(BitWriter& out) const {
        const double never = source_.width;
        int fromY = static_cast<int>(std::floor(y_)), offset = static_cast<int>(std::floor(x_));
        // Where the next row is met, and where a column is met twice; and how far it is from there
        // to the next such place.
        const double rowStep = sine_ == 0 ? never : std::abs(1 / sine_);
        const double columnStep = cosine_ == 1 ? never : 1 / (1 - cosine_);
        double nextRow = (sine_ > 0 ? fromY + 1 - y_ : y_ - fromY) * rowStep;
        double nextColumn = (x_ - offset) * columnStep;
        for (int x = 0; x < source_.width;) {
            const double border = std::min({nextRow, nextColumn, never});
            const int end = std::min(static_cast<int>(border) + 1, source_.width);
            if (end > x) copyRun(x + offset, fromY, end - x, out);
            x = std::max(x, end);
            if (border == nextColumn) {
                --offset;
                nextColumn += columnStep;
            } else {
                fromY += sine_ > 0 ? 1 : -1;
                nextRow += rowStep;
            }
        }
        out.finish();
    }

  private:
    void copyRun(int fromX, int fromY, int length, BitWriter& out) const {
        const bool hasRow = fromY >= 0 && fromY < source_.height;
        if (hasRow && length <= mostBits && fromX >= 0 && fromX + length <= source_.width)
            return out.put(bitsAt(source_.row(fromY), fromX, length), length);
        const int begin = hasRow ? std::clamp(-fromX, 0, length) : length;
        const int end = hasRow ? std::clamp(source_.width - fromX, begin, length) : length;
        fill(begin, out);
        for (int i = begin; i < end; i += mostBits) {
            const int count = std::min(mostBits, end - i);
            out.put(bitsAt(source_.row(fromY), fromX + i, count), count);
        }
        fill(length - end, out);
    }
    void fill(int length, BitWriter& out) const {
        for (; length > 0; length -= mostBits) {
            const int count = std::min(mostBits, length);
            out.put(outside_ ? (std::uint64_t{1} << count) - 1 : 0, count);
        }
    }

    ConstView source_;
    int outside_;
    double x_, y_, cosine_, sine_;
};

} // namespace

Raster turnedBits(const Raster& source, double degrees, int outside, Task& task) {
    Raster result = Raster::uninitialized(ImageType::Bit1, source.width(), source.height());
    result.setPalette(source.palette());
    const ConstView from = source.view();
    const View to = result.edit();
    const double angle = degrees * std::numbers::pi / 180;
    const double cosine = std::cos(angle), sine = std::sin(angle);
    const double middleX = (from.width - 1) / 2.0, middleY = (from.height - 1) / 2.0;
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const double down = y - middleY;
            const SlantedRow row(from, outside, middleX - cosine * middleX - sine * down,
                                 middleY - sine * middleX + cosine * down, cosine, sine);
            BitWriter out(to.row(y));
            row.copyTo(out);
        }
    });
    return result;
}

} // namespace kvn::imaging
