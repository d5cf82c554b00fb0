#include "imaging/quantize_spread.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

#include "imaging/convert_rows.h"
#include "imaging/quantize.h"
#include "imaging/quantize_metric.h"
#include "imaging/quantize_store.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t axes = 4;
using Place = std::array<double, axes>;

// --- a part of the picture that stands for the whole -------------------------------------------

// Square pieces from all over the picture, side by side.
constexpr int pieceSide = 64, pieces = 8;

// Where a row or column of the mosaic comes from; `side` and `whole`: of mosaic and picture.
int originOf(int at, int side, int whole) {
    const int last = std::max(1, (side - 1) / pieceSide);
    return at + static_cast<int>(std::int64_t{whole - side} * (at / pieceSide) / last);
}

Raster mosaicOf(const Raster& source, bool withAlpha) {
    const ImageType type = withAlpha ? ImageType::Rgba32 : ImageType::Rgb24;
    const auto channels = static_cast<std::size_t>(bytesPerPixel(type));
    Raster mosaic = Raster::uninitialized(type, std::min(source.width(), pieces * pieceSide),
                                          std::min(source.height(), pieces * pieceSide));
    const View to = mosaic.edit();
    const RowReader reader(source, type);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(source.width()) * channels);
    for (int y = 0; y < to.height; ++y) {
        reader.read(originOf(y, to.height, source.height()), row.data());
        for (int x = 0; x < to.width; x += pieceSide) {
            const auto from = static_cast<std::size_t>(originOf(x, to.width, source.width()));
            const auto count = static_cast<std::size_t>(std::min(pieceSide, to.width - x));
            std::memcpy(to.row(y) + static_cast<std::size_t>(x) * channels,
                        row.data() + from * channels, count * channels);
        }
    }
    return mosaic;
}

// --- the picture as it shall look --------------------------------------------------------------

// A blur of [1 2 1] both ways, twice: its product with itself. Beyond the picture is nothing.
constexpr int reach = 2;
constexpr std::int32_t taps[2 * reach + 1] = {1, 4, 6, 4, 1};
// What a pixel's own difference counts beside the blurred one, which counts 256: it keeps the
// pattern from getting coarse for small gains.
constexpr std::int32_t ownWeight = 64;

struct Wanted {
    std::vector<std::array<std::int32_t, axes>> places; // blurred twice
    double energy = 0; // the sum of the products of the picture and these
    int width = 0;

    const std::array<std::int32_t, axes>* row(int y) const {
        return places.data() + static_cast<std::ptrdiff_t>(y) * width;
    }
};

// Adds `from` times each tap to the row, shifted across.
void addAcross(const std::vector<Spot>& from, std::array<std::int32_t, axes>* row) {
    const int width = static_cast<int>(from.size());
    for (int d = -reach; d <= reach; ++d)
        for (int x = std::max(0, -d); x < std::min(width, width - d); ++x)
            for (std::size_t k = 0; k < axes; ++k)
                row[x][k] += taps[d + reach] * from[static_cast<std::size_t>(x + d)][k];
}

Wanted wantedOf(const Raster& picture) {
    const int width = picture.width(), height = picture.height();
    const RowReader reader(picture, ImageType::Rgba32);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(width) * 4);
    std::vector<Spot> spots(static_cast<std::size_t>(width));
    const auto read = [&](int y) {
        reader.read(y, bytes.data());
        const std::uint8_t* p = bytes.data();
        for (Spot& spot : spots) {
            spot = spotOf({p[0], p[1], p[2], p[3]});
            p += 4;
        }
    };
    Wanted wanted;
    wanted.width = width;
    wanted.places.resize(spots.size() * static_cast<std::size_t>(height));
    std::vector<std::array<std::int32_t, axes>> across(spots.size());
    for (int y = 0; y < height; ++y) {
        read(y);
        across.assign(spots.size(), {});
        addAcross(spots, across.data());
        for (int d = std::max(-reach, -y); d <= std::min(reach, height - 1 - y); ++d) {
            auto* row = wanted.places.data() + static_cast<std::ptrdiff_t>(y + d) * width;
            for (std::size_t x = 0; x < across.size(); ++x)
                for (std::size_t k = 0; k < axes; ++k)
                    row[x][k] += taps[d + reach] * across[x][k];
        }
    }
    std::int64_t energy = 0;
    for (int y = 0; y < height; ++y) {
        read(y);
        auto* row = wanted.places.data() + static_cast<std::ptrdiff_t>(y) * width;
        for (std::size_t x = 0; x < spots.size(); ++x)
            for (std::size_t k = 0; k < axes; ++k) {
                row[x][k] += ownWeight * spots[x][k];
                energy += std::int64_t{spots[x][k]} * row[x][k];
            }
    }
    wanted.energy = static_cast<double>(energy);
    return wanted;
}

// --- the entries that suit a pattern -----------------------------------------------------------

// The squared difference between picture and pattern as a function of the entries:
// energy - 2 sum(entry * pull) + sum(entry * other * overlap).
struct Sums {
    std::array<std::array<std::int64_t, mostSpreadEntries>, mostSpreadEntries> overlap{};
    std::array<std::array<std::int64_t, axes>, mostSpreadEntries> pull{};

    void add(const Sums& other) {
        for (std::size_t i = 0; i < mostSpreadEntries; ++i) {
            for (std::size_t j = 0; j < mostSpreadEntries; ++j)
                overlap[i][j] += other.overlap[i][j];
            for (std::size_t k = 0; k < axes; ++k)
                pull[i][k] += other.pull[i][k];
        }
    }
};

// The pairs of a row's pixels with those to the right and in the rows below. A pair counts twice,
// once for each order of the two.
void addRow(const ConstView& drawn, const Wanted& wanted, int y, Sums& sums) {
    const std::uint8_t* row = drawn.row(y);
    const auto* places = wanted.row(y);
    for (int x = 0; x < drawn.width; ++x) {
        for (std::size_t k = 0; k < axes; ++k)
            sums.pull[row[x]][k] += places[x][k];
        sums.overlap[row[x]][row[x]] += taps[reach] * taps[reach] + ownWeight;
    }
    for (int dy = 0; dy <= std::min(reach, drawn.height - 1 - y); ++dy)
        for (int dx = dy == 0 ? 1 : -reach; dx <= reach; ++dx) {
            const std::int32_t weight = taps[reach + dx] * taps[reach + dy];
            const std::uint8_t* other = drawn.row(y + dy);
            for (int x = std::max(0, -dx); x < std::min(drawn.width, drawn.width - dx); ++x)
                sums.overlap[row[x]][other[x + dx]] += 2 * weight;
        }
}

Sums sumsOf(const Raster& drawn, const Wanted& wanted, Task& task) {
    const ConstView view = drawn.view();
    Store<Sums> parts;
    parallelRows(view.height, task, [&](int y0, int y1) {
        const auto part = parts.borrow([] { return Sums(); });
        for (int y = y0; y < y1; ++y)
            addRow(view, wanted, y, *part);
    });
    Sums total;
    for (const auto& part : parts.objects())
        total.add(*part);
    for (std::size_t i = 0; i < mostSpreadEntries; ++i)
        for (std::size_t j = 0; j < i; ++j)
            total.overlap[i][j] = total.overlap[j][i] =
                (total.overlap[i][j] + total.overlap[j][i]) / 2;
    return total;
}

double differenceOf(const Sums& sums, const Wanted& wanted, const std::vector<Place>& entries) {
    double difference = wanted.energy;
    for (std::size_t i = 0; i < entries.size(); ++i)
        for (std::size_t k = 0; k < axes; ++k) {
            difference -= 2 * entries[i][k] * static_cast<double>(sums.pull[i][k]);
            for (std::size_t j = 0; j < entries.size(); ++j)
                difference +=
                    entries[i][k] * entries[j][k] * static_cast<double>(sums.overlap[i][j]);
        }
    return difference;
}

// The entries with the least difference, by Gauss; the matrix is positive definite and needs no
// pivots. Each entry is held back a little, for the pattern changes with it.
void moveEntries(const Sums& sums, std::vector<Place>& entries) {
    constexpr double inertia = 0.02;
    const std::size_t n = entries.size();
    std::array<std::array<double, mostSpreadEntries>, mostSpreadEntries> a;
    std::vector<Place> b(n);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j)
            a[i][j] = static_cast<double>(sums.overlap[i][j]);
        const double hold = inertia * a[i][i] + 1;
        a[i][i] += hold;
        for (std::size_t k = 0; k < axes; ++k)
            b[i][k] = static_cast<double>(sums.pull[i][k]) + hold * entries[i][k];
    }
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t r = i + 1; r < n; ++r) {
            const double factor = a[r][i] / a[i][i];
            for (std::size_t c = i; c < n; ++c)
                a[r][c] -= factor * a[i][c];
            for (std::size_t k = 0; k < axes; ++k)
                b[r][k] -= factor * b[i][k];
        }
    for (std::size_t i = n; i-- > 0;)
        for (std::size_t k = 0; k < axes; ++k) {
            double value = b[i][k];
            for (std::size_t c = i + 1; c < n; ++c)
                value -= a[i][c] * entries[c][k];
            entries[i][k] = value / a[i][i];
        }
}

std::vector<Place> placesOf(const std::vector<Rgba>& colors) {
    std::vector<Place> places;
    for (const Rgba& color : colors) {
        const Spot spot = spotOf(color);
        std::ranges::copy(spot, places.emplace_back().begin());
    }
    return places;
}

} // namespace

std::vector<Rgba> spreadForDithering(const Raster& source, std::vector<Rgba> colors, bool withAlpha,
                                     Task& task) {
    constexpr int rounds = 4;
    const Raster mosaic = mosaicOf(source, withAlpha);
    const Wanted wanted = wantedOf(mosaic);
    Task quiet; // a round is too short to report
    quiet.threads = task.threads;
    std::vector<Rgba> best = colors;
    double least = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        task.report(static_cast<double>(round) / rounds);
        const Raster drawn = mapToPalette(mosaic, Palette(colors), true, quiet);
        std::vector<Place> entries = placesOf(colors);
        const Sums sums = sumsOf(drawn, wanted, quiet);
        const double difference = differenceOf(sums, wanted, entries);
        if (difference < least) {
            least = difference;
            best = colors;
        }
        moveEntries(sums, entries);
        for (std::size_t i = 0; i < colors.size(); ++i)
            colors[i] = colorOf(entries[i], 1, withAlpha);
    }
    return best;
}

} // namespace kvn::imaging
