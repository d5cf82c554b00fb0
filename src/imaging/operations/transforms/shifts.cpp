// Offset and LineSlice: whole pixels move, none changes.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

// Places beyond the picture.
constexpr int nowhere = -1;

// For each place of an axis, the one that its pixel comes from, or nowhere.
using Sources = std::vector<int>;

Sources shiftedBy(int offset, int length, bool wraps) {
    Sources from(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i) {
        const std::int64_t place = std::int64_t{i} - offset;
        const bool inside = place >= 0 && place < length;
        const auto wrapped = static_cast<int>((place % length + length) % length);
        from[static_cast<std::size_t>(i)] = inside || wraps ? wrapped : nowhere;
    }
    return from;
}

// One row of whole-byte pixels. Runs of neighbours go at once.
void gather(const std::uint8_t* row, const Sources& columns, std::size_t step,
            const std::uint8_t* bare, std::uint8_t* to) {
    const std::size_t width = columns.size();
    for (std::size_t x = 0; x < width;) {
        const int from = columns[x];
        std::size_t run = 1;
        if (from == nowhere) {
            std::memcpy(to + x * step, bare, step);
        } else {
            while (x + run < width && columns[x + run] == from + static_cast<int>(run))
                ++run;
            std::memcpy(to + x * step, row + static_cast<std::size_t>(from) * step, run * step);
        }
        x += run;
    }
}

// Writes rows of the result out of rows of the source; bits go through bytes.
class Mover {
  public:
    explicit Mover(const Raster& source)
        : result_(Raster::uninitialized(source.type(), source.width(), source.height())),
          in_(source.view()), out_(result_.edit()) {
        result_.setPalette(source.palette());
    }

    // Has the bare places clear, or black: a palette gets that colour if it has room.
    void uncover() {
        const ImageType type = in_.type;
        if (hasPalette(type))
            bare_[0] = static_cast<std::uint8_t>(result_.paletteForEdit().place(
                {0, 0, 0, hasAlpha(type) ? std::uint8_t{0} : std::uint8_t{255}},
                type == ImageType::Bit1 ? 2 : Palette::maxSize));
    }

    // Row y of the result from row `from` of the source.
    void moveRow(int y, int from, const Sources& columns) const {
        const auto step = static_cast<std::size_t>(std::max(1, bytesPerPixel(in_.type)));
        const auto width = columns.size();
        const bool bits = in_.type == ImageType::Bit1;
        std::vector<std::uint8_t> unpacked(bits ? 2 * width : 0);
        const std::uint8_t* row = from == nowhere ? nullptr : in_.row(from);
        std::uint8_t* to = bits ? unpacked.data() + width : out_.row(y);
        if (bits && row) {
            expandBits(row, unpacked.data(), in_.width);
            row = unpacked.data();
        }
        if (row)
            gather(row, columns, step, bare_, to);
        else
            gather(nullptr, Sources(width, nowhere), step, bare_, to);
        if (bits) packBits(to, out_.row(y), out_.width);
    }

    Raster take() { return std::move(result_); }

  private:
    Raster result_;
    ConstView in_;
    View out_;
    std::uint8_t bare_[4] = {};
};

constexpr Argument offsetArguments[] = {
    {"style", ArgumentKind::Integer, 0, 3, "", "what wraps: 0 nothing, 1 both, 2 x, 3 y", false,
     true},
    {"offsetX", ArgumentKind::Integer, -65535, 65535, "px", "to the right"},
    {"offsetY", ArgumentKind::Integer, -65535, 65535, "px", "down"},
};

Raster offset(const Raster& source, const Arguments& arguments, Task& task) {
    const int style = arguments.integer(0);
    const Sources columns =
        shiftedBy(arguments.integer(1), source.width(), style == 1 || style == 2);
    const Sources rows = shiftedBy(arguments.integer(2), source.height(), style == 1 || style == 3);
    Mover mover(source);
    const auto isBare = [](const Sources& axis) {
        return std::ranges::find(axis, nowhere) != axis.end();
    };
    if (isBare(columns) || isBare(rows)) mover.uncover();
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            mover.moveRow(y, rows[static_cast<std::size_t>(y)], columns);
    });
    return mover.take();
}

constexpr Argument lineSliceArguments[] = {
    {"style", ArgumentKind::Integer, 0, 1, "", "0 moves rows, 1 columns", false, true},
    {"offset1", ArgumentKind::Integer, -65535, 65535, "px", "of even lines, right or down"},
    {"offset2", ArgumentKind::Integer, -65535, 65535, "px", "of odd lines, right or down"},
};

Raster slicedRows(const Raster& source, int even, int odd, Task& task) {
    const Sources columns[2] = {shiftedBy(even, source.width(), true),
                                shiftedBy(odd, source.width(), true)};
    Mover mover(source);
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            mover.moveRow(y, y, columns[y % 2]);
    });
    return mover.take();
}

// Every column is its own or, for odd ones, the other row's.
template <int Step>
void interleave(const std::uint8_t* even, const std::uint8_t* odd, int width, std::uint8_t* to) {
    for (int x = 0; x < width; ++x)
        std::memcpy(to + x * Step, (x % 2 ? odd : even) + x * Step, Step);
}

void interleaveBits(const std::uint8_t* even, const std::uint8_t* odd, int width,
                    std::uint8_t* to) {
    for (int i = 0; i < (width + 7) / 8; ++i)
        to[i] = static_cast<std::uint8_t>((even[i] & 0xAA) | (odd[i] & 0x55));
}

Raster slicedColumns(const Raster& source, int even, int odd, Task& task) {
    constexpr decltype(&interleaveBits) kernels[] = {interleaveBits, interleave<1>, interleave<2>,
                                                     interleave<3>, interleave<4>};
    const auto kernel = kernels[bytesPerPixel(source.type())];
    const Sources evenRows = shiftedBy(even, source.height(), true);
    const Sources oddRows = shiftedBy(odd, source.height(), true);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    result.setPalette(source.palette());
    const ConstView in = source.view();
    const View out = result.edit();
    parallelRows(source.height(), task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            const auto at = static_cast<std::size_t>(y);
            kernel(in.row(evenRows[at]), in.row(oddRows[at]), in.width, out.row(y));
        }
    });
    return result;
}

Raster lineSlice(const Raster& source, const Arguments& arguments, Task& task) {
    const auto slice = arguments.integer(0) == 1 ? slicedColumns : slicedRows;
    return slice(source, arguments.integer(1), arguments.integer(2), task);
}

} // namespace

const Operation offsetOperation = {
    .name = "Transforms.Offset",
    .undoName = "Offset",
    .arguments = offsetArguments,
    .run = offset,
    .border = -1,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Moves the picture by whole pixels, wrapped round or not.",
};

const Operation lineSliceOperation = {
    .name = "Transforms.LineSlice",
    .undoName = "Line Slice",
    .arguments = lineSliceArguments,
    .run = lineSlice,
    .border = -1,
    .alpha = AlphaRule::None,
    .types = TypeRule::Keeps,
    .note = "Moves even and odd lines apart, wrapped round.",
};

} // namespace kvn::imaging
