#include "imaging/quantize_two.h"

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/support/simd.h"
#include "imaging/quantize_metric.h"

namespace kvn::imaging {
namespace {

constexpr int span = 4096; // of the way from the first colour, at 0, to the second
constexpr int blockRows = 64;
constexpr std::uint8_t undecided = 2; // otherwise the entry of a pixel's own colour

// The way between the colours.
struct Line {
    Line(const Palette& palette, bool useAlpha)
        : withAlpha(useAlpha), first(packed(palette[0])), second(packed(palette[1])) {
        if (!useAlpha) {
            first |= 0xFF000000u;
            second |= 0xFF000000u;
        }
        const Spot a = spotOf(unpacked(first)), b = spotOf(unpacked(second));
        float length = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            step[k] = static_cast<float>(b[k] - a[k]);
            length += step[k] * step[k];
        }
        for (std::size_t k = 0; k < 4; ++k) {
            step[k] *= span / length;
            start -= step[k] * static_cast<float>(a[k]);
            low += std::min(0.0f, step[k] * 255);
            high += std::max(0.0f, step[k] * 255);
        }
        low += start;
        high += start;
    }

    bool withAlpha;
    std::uint32_t first, second;
    std::array<float, 4> step{};
    float start = 0;         // the place of a spot of zeros
    float low = 0, high = 0; // how far off a colour can be
};

// Places along the line, and the pixels that are decided.
KVN_CLONES void placeRow(const std::uint32_t* __restrict spots, const std::uint32_t* __restrict raw,
                         const Line& line, int width, std::int16_t* __restrict places,
                         std::uint8_t* __restrict marks) {
    const float a = line.step[0], b = line.step[1], c = line.step[2], d = line.step[3];
    const float start = line.start;
    const std::uint32_t first = line.first, second = line.second;
    const std::uint32_t mask = line.withAlpha ? 0 : 0xFF000000u;
    for (int x = 0; x < width; ++x) {
        const std::uint32_t v = spots[x];
        const float place = start + a * static_cast<float>(static_cast<int>(v & 255)) +
                            b * static_cast<float>(static_cast<int>(v >> 8 & 255)) +
                            c * static_cast<float>(static_cast<int>(v >> 16 & 255)) +
                            d * static_cast<float>(static_cast<int>(v >> 24));
        places[x] = static_cast<std::int16_t>(place);
        const std::uint32_t color = raw[x] | mask;
        marks[x] = static_cast<std::uint8_t>(color == first ? 0 : color == second ? 1 : undecided);
    }
}

// Rows made ready for the diffusion, on all threads.
class Block {
  public:
    Block(const RowReader& reader, const Line& line, int width)
        : reader_(reader), line_(line), width_(static_cast<std::size_t>(width)),
          places_(width_ * blockRows), marks_(width_ * blockRows) {}

    void fill(int top, int rows, Task& task) {
        parallelRows(
            rows, task,
            [&](int y0, int y1) {
                std::vector<std::uint32_t> raw(width_), spots(width_);
                for (int y = y0; y < y1; ++y) {
                    reader_.read(top + y, reinterpret_cast<std::uint8_t*>(raw.data()));
                    toSpots(raw, spots);
                    const std::size_t at = width_ * static_cast<std::size_t>(y);
                    placeRow(spots.data(), raw.data(), line_, static_cast<int>(width_),
                             &places_[at], &marks_[at]);
                }
            },
            8);
    }
    const std::int16_t* places(int y) const {
        return &places_[width_ * static_cast<std::size_t>(y)];
    }
    const std::uint8_t* marks(int y) const { return &marks_[width_ * static_cast<std::size_t>(y)]; }

  private:
    // Colours as numbers, whatever the machine, and the spots of the metric likewise.
    void toSpots(std::vector<std::uint32_t>& raw, std::vector<std::uint32_t>& spots) const {
        for (std::size_t x = 0; x < width_; ++x) {
            const auto* p = reinterpret_cast<const std::uint8_t*>(&raw[x]);
            const Rgba color{p[0], p[1], p[2], line_.withAlpha ? p[3] : std::uint8_t{255}};
            raw[x] = packed(color);
            if (!line_.withAlpha) {
                spots[x] = (raw[x] & 0xFFFFFF) | opaqueAlpha;
                continue;
            }
            const Spot s = spotOf(color);
            const auto byte = [&](std::size_t k) { return static_cast<std::uint8_t>(s[k]); };
            spots[x] = packed({byte(0), byte(1), byte(2), byte(3)});
        }
    }
    static constexpr std::uint32_t opaqueAlpha = static_cast<std::uint32_t>(spotOf({})[3]) << 24;

    const RowReader& reader_;
    const Line& line_;
    std::size_t width_;
    std::vector<std::int16_t> places_;
    std::vector<std::uint8_t> marks_;
};

// `below` holds what the row above left for each pixel of this one, and takes what this one leaves
// for the next: a place is read one step before it is written.
template <int step>
void walk(const std::int16_t* places, const std::uint8_t* marks, int low, int high, int width,
          int* below, std::uint8_t* entries) {
    constexpr int strength = 15; // sixteenths
    int ahead = 0, behind = 0, diagonal = 0;
    for (int i = 0, x = step > 0 ? 0 : width - 1; i < width; ++i, x += step, below += step) {
        // Without branches: which way a pixel goes is as good as random.
        const int sum = places[x] + *below + ahead;
        const int wanted = std::min(std::max(sum, low), high);
        const int open = -(marks[x] >> 1); // all bits, or none
        const int second = -static_cast<int>(wanted > span / 2) & open;
        const int error = (wanted - (second & span)) & open;
        entries[x] = static_cast<std::uint8_t>((second & 1) | (marks[x] & 1));
        ahead = error * (7 * strength) >> 8;
        below[-step] = behind + (error * (3 * strength) >> 8);
        behind = diagonal + (error * (5 * strength) >> 8);
        diagonal = error * strength >> 8;
    }
    below[-step] = behind;
}

} // namespace

void diffuseTwoColors(const Raster& source, const Palette& palette, const View& to, Task& task) {
    const Line line(palette, palette.hasTransparency());
    const RowReader reader(source, ImageType::Rgba32);
    Block block(reader, line, to.width);
    std::vector<int> below(static_cast<std::size_t>(to.width) + 2);
    const int low = static_cast<int>(line.low), high = static_cast<int>(line.high);
    for (int top = 0; top < to.height; top += blockRows) {
        const int rows = std::min(blockRows, to.height - top);
        const Task::Stage stage(task, double(top) / to.height, double(top + rows) / to.height);
        block.fill(top, rows, task);
        for (int y = 0; y < rows; ++y) {
            if (y % 2 == 0)
                walk<1>(block.places(y), block.marks(y), low, high, to.width, &below[1],
                        to.row(top + y));
            else
                walk<-1>(block.places(y), block.marks(y), low, high, to.width,
                         &below[static_cast<std::size_t>(to.width)], to.row(top + y));
        }
    }
}

} // namespace kvn::imaging
