#include "imaging/view/reduced_copies.h"

#include <algorithm>
#include <cstring>

#include "imaging/task.h"
#include "imaging/view/halve_rgb.h"
#include "imaging/view/vectors.h"

namespace kvn::imaging {

namespace {

constexpr int tileSide = 64;

int tileCount(int length) {
    return (length + tileSide - 1) / tileSide;
}

// The tiles that touch `rect`.
Rect tilesOf(const Rect& rect) {
    const int x = rect.x / tileSide, y = rect.y / tileSide;
    return {x, y, static_cast<int>((rect.right() - 1) / tileSide) - x + 1,
            static_cast<int>((rect.bottom() - 1) / tileSide) - y + 1};
}

constexpr std::uint32_t evenBytes = 0x00FF00FFu;

// The mean of four pixels of up to four bytes. `bias` (1 or 2) stands in each byte's place.
inline std::uint32_t meanOfFour(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d,
                                std::uint32_t bias) {
    const std::uint32_t even =
        (a & evenBytes) + (b & evenBytes) + (c & evenBytes) + (d & evenBytes) + bias;
    const std::uint32_t odd = ((a >> 8) & evenBytes) + ((b >> 8) & evenBytes) +
                              ((c >> 8) & evenBytes) + ((d >> 8) & evenBytes) + bias;
    return ((even >> 2) & evenBytes) | ((odd >> 2) & evenBytes) << 8;
}

inline std::uint32_t load(const std::uint8_t* p) {
    std::uint32_t value;
    std::memcpy(&value, p, 4);
    return value;
}

KVN_VECTORS void halveGray(const std::uint8_t* upper, const std::uint8_t* lower, int count,
                           int bias, std::uint8_t* out) {
    for (std::ptrdiff_t i = 0; i < count; ++i)
        out[i] = static_cast<std::uint8_t>(
            (upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1] + bias) >> 2);
}

KVN_VECTORS void halveRgba(const std::uint8_t* upper, const std::uint8_t* lower, int count,
                           int bias, std::uint8_t* out) {
    const std::uint32_t biases = static_cast<std::uint32_t>(bias) * 0x00010001u;
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const std::uint32_t mean = meanOfFour(load(upper + 8 * i), load(upper + 8 * i + 4),
                                              load(lower + 8 * i), load(lower + 8 * i + 4), biases);
        std::memcpy(out + 4 * i, &mean, 4);
    }
}

void halveRow(SampleForm form, const std::uint8_t* upper, const std::uint8_t* lower, int count,
              int bias, std::uint8_t* out) {
    if (form == SampleForm::Gray)
        halveGray(upper, lower, count, bias, out);
    else if (form == SampleForm::Rgb)
        halveRgb(upper, lower, count, bias, out);
    else
        halveRgba(upper, lower, count, bias, out);
}

// The last column of a picture of odd width: the mean of two pixels, one below the other.
void halveLast(int channels, const std::uint8_t* upper, const std::uint8_t* lower, int bias,
               std::uint8_t* out) {
    for (int c = 0; c < channels; ++c)
        out[c] = static_cast<std::uint8_t>((2 * upper[c] + 2 * lower[c] + bias) >> 2);
}

} // namespace

void ReducedCopies::reset(Size picture, SampleForm form) {
    form_ = form;
    picture_ = picture;
    levels_.clear();
    while (picture.width > 1 || picture.height > 1) {
        picture = {(picture.width + 1) / 2, (picture.height + 1) / 2};
        levels_.push_back({picture, {}, tileCount(picture.width), {}});
    }
}

void ReducedCopies::drop() {
    for (Level& level : levels_) {
        level.pixels = {};
        level.made = {};
    }
}

void ReducedCopies::invalidate(const Rect& changed) {
    Rect rect = changed.intersected({0, 0, picture_.width, picture_.height});
    for (Level& level : levels_) {
        if (rect.isEmpty()) return;
        const int right = static_cast<int>((rect.right() + 1) / 2);
        const int bottom = static_cast<int>((rect.bottom() + 1) / 2);
        rect = {rect.x / 2, rect.y / 2, right - rect.x / 2, bottom - rect.y / 2};
        if (level.made.empty()) continue;
        const Rect tiles = tilesOf(rect);
        for (int y = tiles.y; y < tiles.bottom(); ++y)
            std::fill_n(level.made.begin() + std::ptrdiff_t{y} * level.tilesAcross + tiles.x,
                        tiles.width, std::uint8_t{0});
    }
}

void ReducedCopies::take(Level& level) {
    if (!level.pixels.isNull()) return;
    level.pixels = PixelBuffer(static_cast<std::size_t>(level.size.width) *
                                   static_cast<std::size_t>(channelCount(form_)),
                               level.size.height);
    level.made.assign(static_cast<std::size_t>(level.tilesAcross) *
                          static_cast<std::size_t>(tileCount(level.size.height)),
                      0);
}

// Tiles beside each other are taken together: long rows read faster than short ones.
std::vector<Rect> ReducedCopies::missing(const Level& level, const Rect& rect) const {
    std::vector<Rect> runs;
    const Rect tiles = tilesOf(rect);
    for (int y = tiles.y; y < tiles.bottom(); ++y) {
        const std::uint8_t* made = level.made.data() + std::ptrdiff_t{y} * level.tilesAcross;
        for (int x = tiles.x; x < tiles.right(); ++x) {
            if (made[x]) continue;
            const int begin = x;
            while (x < tiles.right() && !made[x])
                ++x;
            const Rect run{begin * tileSide, y * tileSide, (x - begin) * tileSide, tileSide};
            runs.push_back(run.intersected({0, 0, level.size.width, level.size.height}));
        }
    }
    return runs;
}

void ReducedCopies::require(const SampleReader& reader, const ConstView& picture, int level,
                            const Rect& rect) {
    Level& target = levels_[static_cast<std::size_t>(level - 1)];
    take(target);
    const std::vector<Rect> runs = missing(target, rect);
    if (runs.empty()) return;
    if (level > 2) {
        const Size source = size(level - 1);
        for (const Rect& run : runs)
            require(reader, picture, level - 1,
                    Rect{run.x * 2, run.y * 2, run.width * 2, run.height * 2}.intersected(
                        {0, 0, source.width, source.height}));
    }
    std::uint8_t* pixels = target.pixels.detach();
    Task task;
    parallelRows(
        static_cast<int>(runs.size()), task,
        [&](int first, int end) {
            for (int i = first; i < end; ++i)
                halve(reader, picture, level, runs[static_cast<std::size_t>(i)], pixels);
        },
        1);
    for (const Rect& run : runs) {
        const Rect tiles = tilesOf(run);
        std::fill_n(target.made.begin() + std::ptrdiff_t{tiles.y} * target.tilesAcross + tiles.x,
                    tiles.width, std::uint8_t{1});
    }
}

// Two rows of what a copy is made from, for one thread.
struct ReducedCopies::Scratch {
    Scratch(int columns)
        : picture{Row(SampleReader::scratchBytes(2 * columns)),
                  Row(SampleReader::scratchBytes(2 * columns))},
          half{Row(SampleReader::scratchBytes(columns)), Row(SampleReader::scratchBytes(columns))} {
    }
    using Row = std::vector<std::uint8_t>;
    Row picture[2], half[2];
};

void ReducedCopies::halve(const SampleReader& reader, const ConstView& picture, int level,
                          const Rect& part, std::uint8_t* pixels) const {
    const std::size_t stride = levels_[static_cast<std::size_t>(level - 1)].pixels.stride();
    Scratch scratch(2 * part.width);
    for (int y = part.y; y < part.bottom(); ++y)
        makeRow({reader, picture}, level, {part.x, y, part.width, 1}, scratch,
                pixels + stride * static_cast<std::size_t>(y) +
                    std::ptrdiff_t{part.x} * channelCount(form_));
}

// The quarter-size copy is made straight from the picture, in one go: at the zooms that show a
// large picture whole the half-size one, three quarters of all the memory, is then never needed.
const std::uint8_t* ReducedCopies::sourceRow(const Origin& origin, int level, const Rect& part,
                                             int index, Scratch& scratch) const {
    if (level == 1)
        return origin.reader.row(origin.picture, part.y, part.x, part.width,
                                 scratch.picture[index].data());
    if (level > 2) return row(level - 1, part.y) + std::ptrdiff_t{part.x} * channelCount(form_);
    std::uint8_t* half = scratch.half[index].data();
    makeRow(origin, 1, part, scratch, half);
    return half;
}

// One row of a copy. Rounding up and down takes turns from copy to copy, or the halves that every
// step rounds up would make small copies brighter.
void ReducedCopies::makeRow(const Origin& origin, int level, const Rect& part, Scratch& scratch,
                            std::uint8_t* out) const {
    const int channels = channelCount(form_), bias = level % 2 ? 2 : 1;
    const Size source = level > 1 ? size(level - 1) : picture_;
    const int columns = std::min(part.width * 2, source.width - part.x * 2);
    Rect from{part.x * 2, part.y * 2, columns, 1};
    const std::uint8_t* upper = sourceRow(origin, level, from, 0, scratch);
    const std::uint8_t* lower = upper;
    if (++from.y < source.height) lower = sourceRow(origin, level, from, 1, scratch);
    halveRow(form_, upper, lower, columns / 2, bias, out);
    const std::ptrdiff_t last = std::ptrdiff_t{columns / 2} * channels;
    if (columns % 2) halveLast(channels, upper + 2 * last, lower + 2 * last, bias, out + last);
}

std::size_t ReducedCopies::bytes() const {
    std::size_t sum = 0;
    for (const Level& level : levels_)
        if (!level.pixels.isNull()) sum += level.pixels.byteSize();
    return sum;
}

} // namespace kvn::imaging
