#include "imaging/operations/texture/halftone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr int largestSize = 64;
constexpr int bits = 7; // the cell of a screen is stored as 128 x 128 places
constexpr int places = 1 << bits;

// For each place of a cell the coverage, 0..254, above which it has ink: equally many places for
// each, in the order in which the dot grows.
using Cell = std::array<std::uint8_t, places * places>;

Cell makeCell() {
    std::vector<float> wave(places);
    for (int i = 0; i < places; ++i)
        wave[static_cast<std::size_t>(i)] =
            static_cast<float>(std::cos(2 * std::numbers::pi * (i + 0.5) / places));
    std::vector<int> order(places * places);
    for (int i = 0; i < places * places; ++i)
        order[static_cast<std::size_t>(i)] = i;
    std::ranges::stable_sort(order, std::greater<>(), [&](int i) {
        return wave[static_cast<std::size_t>(i / places)] +
               wave[static_cast<std::size_t>(i % places)];
    });
    Cell cell{};
    for (int rank = 0; rank < places * places; ++rank)
        cell[static_cast<std::size_t>(order[static_cast<std::size_t>(rank)])] =
            static_cast<std::uint8_t>(rank * 255 / (places * places));
    return cell;
}

// A screen turned by an angle: steps of the place in the cell, in 2^-32 of a cell.
struct Screen {
    std::uint32_t across, down;

    Screen(double degrees, int period) {
        const double turn = degrees * std::numbers::pi / 180;
        const auto phase = [period](double step) {
            return static_cast<std::uint32_t>(std::llround(step / period * 0x1p32));
        };
        across = phase(std::cos(turn));
        down = phase(std::sin(turn));
    }
};

std::vector<Screen> screensFor(int colors, int period) {
    if (colors == 1) return {Screen(45, period)};
    return {Screen(15, period), Screen(75, period), Screen(45, period)};
}

// How fast ink fades out where the threshold rises past each coverage. The threshold climbs by 255
// over half a period, which gives an edge of one pixel; near white and black the edge is as narrow
// as it must be to fit on both sides, so that the coverage is kept.
using Slopes = std::array<float, 256>;

Slopes edgeSlopes(int period) {
    Slopes slopes{};
    for (int coverage = 0; coverage < 256; ++coverage) {
        const double widest = std::min(coverage, 255 - coverage);
        slopes[static_cast<std::size_t>(coverage)] =
            static_cast<float>(127.5 / std::max(0.5, std::min(255.0 / period, widest)));
    }
    return slopes;
}

std::uint8_t softDot(int coverage, int threshold, const Slopes& slopes) {
    const float distance = static_cast<float>(threshold - coverage) + 0.5f;
    const float value = 128 + distance * slopes[static_cast<std::size_t>(coverage)];
    return static_cast<std::uint8_t>(static_cast<int>(std::min(255.0f, std::max(0.0f, value))));
}

template <bool smooth>
void screenRow(const Cell& cell, const Screen& screen, int y, const Slopes& slopes,
               const std::uint8_t* __restrict in, std::uint8_t* __restrict out, int width,
               int channels) {
    const auto row = static_cast<std::uint32_t>(y);
    std::uint32_t u = row * screen.down, v = row * screen.across;
    for (int x = 0; x < width; ++x, in += channels, out += channels) {
        const int threshold = cell[(u >> (32 - bits)) << bits | v >> (32 - bits)];
        const int coverage = 255 - *in;
        if constexpr (smooth)
            *out = softDot(coverage, threshold, slopes);
        else
            *out = coverage > threshold ? 0 : 255;
        u += screen.across;
        v -= screen.down;
    }
}

constexpr Argument halftoneArguments[] = {
    {"max dot size", ArgumentKind::Integer, 0, largestSize, "px", "half a cell; clamped"},
    {"smooth dots", ArgumentKind::Boolean, 0, 0, "", "soft edges"},
};

Raster halftone(const Raster& picture, const Arguments& arguments, Task& task) {
    const int period = 2 * std::clamp(arguments.integer(0), 0, largestSize);
    if (period == 0) return picture;
    static const Cell cell = makeCell();
    const Raster source = promoted(picture, task);
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const int channels = bytesPerPixel(from.type);
    const int colors = channels - (hasAlpha(from.type) ? 1 : 0);
    const std::vector<Screen> screens = screensFor(colors, period);
    const Slopes slopes = edgeSlopes(period);
    const auto screenOf = arguments.boolean(1) ? screenRow<true> : screenRow<false>;
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y) {
            for (int c = 0; c < colors; ++c)
                screenOf(cell, screens[static_cast<std::size_t>(c)], y, slopes, from.row(y) + c,
                         to.row(y) + c, from.width, channels);
            if (colors == channels) continue;
            for (int i = colors; i < from.width * channels; i += channels)
                to.row(y)[i] = from.row(y)[i];
        }
    });
    return result;
}

} // namespace

const Operation halftoneOperation = {
    .name = "Effects.Halftone",
    .undoName = "Halftone",
    .arguments = halftoneArguments,
    .run = halftone,
    .alpha = AlphaRule::ColorOnly,
    .note = "Printed dots, a turned screen for every ink.",
};

} // namespace kvn::imaging
