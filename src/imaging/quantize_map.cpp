// Drawing a picture with a given palette.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "basic/error.h"
#include "imaging/convert_rows.h"
#include "imaging/operations/support/simd.h"
#include "imaging/quantize.h"
#include "imaging/quantize_colors.h"
#include "imaging/quantize_metric.h"
#include "imaging/quantize_nearest.h"
#include "imaging/quantize_rows.h"
#include "imaging/quantize_store.h"
#include "imaging/quantize_two.h"

namespace kvn::imaging {

namespace {

// The first palette entry of each colour that stands in the palette.
class PaletteIndex {
  public:
    explicit PaletteIndex(const Palette& palette) {
        for (std::size_t i = 0; i < palette.size(); ++i) {
            const auto known = set_.colors().size();
            set_.add(packed(palette[i]));
            mark(packed(palette[i]));
            if (set_.colors().size() > known) entries_.push_back(static_cast<std::int16_t>(i));
        }
    }
    // -1 if it is not there.
    std::int16_t find(std::uint32_t color) const {
        const std::uint32_t bit = bitOf(color);
        if ((marks_[bit / 64] >> bit % 64 & 1) == 0) [[likely]]
            return -1;
        const int place = set_.find(color);
        return place < 0 ? std::int16_t{-1} : entries_[static_cast<std::size_t>(place)];
    }

  private:
    static std::uint32_t bitOf(std::uint32_t color) { return (color * 0x9E3779B1u) >> 16; }
    void mark(std::uint32_t color) {
        marks_[bitOf(color) / 64] |= std::uint64_t{1} << bitOf(color) % 64;
    }

    // Tells nearly all colours that are not there, without a search whose way is hard to foresee.
    std::array<std::uint64_t, 1024> marks_{};
    ColorSet set_;
    std::vector<std::int16_t> entries_;
};

// Rows of the source made ready for the search: places in the metric, and the entries of the
// colours that stand in the palette.
struct PreparedRow {
    explicit PreparedRow(int width)
        : spots(static_cast<std::size_t>(width) * 4), fixed(static_cast<std::size_t>(width)),
          bends(spots.size()), strength(static_cast<std::size_t>(width)) {}

    std::vector<std::uint8_t> spots;
    std::vector<std::int16_t> fixed;
    // Of error diffusion; not filled by prepare.
    std::vector<std::uint16_t> bends;
    std::vector<std::uint8_t> strength;
};

class Mapping {
  public:
    Mapping(const Raster& source, const Palette& palette)
        : reader_(source, ImageType::Rgba32), palette_(palette), exact_(palette),
          withAlpha_(palette.hasTransparency()) {}

    NearestColors search() const { return {palette_, withAlpha_}; }

    void prepare(int y, PreparedRow& row) const {
        reader_.read(y, row.spots.data());
        findFixed(row);
        std::uint8_t* p = row.spots.data();
        std::uint8_t* const end = p + row.spots.size();
        if (!withAlpha_) return;
        for (; p != end; p += 4) {
            const Spot spot = spotOf({p[0], p[1], p[2], p[3]});
            for (std::size_t k = 0; k < 4; ++k)
                p[k] = static_cast<std::uint8_t>(spot[k]);
        }
    }

  private:
    // Without alpha every pixel is made an opaque place.
    void findFixed(PreparedRow& row) const {
        std::uint8_t* p = row.spots.data();
        for (std::int16_t& fixed : row.fixed) {
            fixed = exact_.find(packed({p[0], p[1], p[2], withAlpha_ ? p[3] : std::uint8_t{255}}));
            if (!withAlpha_) p[3] = opaque;
            p += 4;
        }
    }

    static constexpr auto opaque = static_cast<std::uint8_t>(spotOf({})[3]);
    RowReader reader_;
    const Palette& palette_;
    PaletteIndex exact_;
    bool withAlpha_;
};

// How far an entry is from its next neighbour, on average, in levels.
double spacingOf(const std::vector<Spot>& entries) {
    double sum = 0;
    for (const Spot& entry : entries) {
        double least = 255.0 * 255 * 4;
        for (const Spot& other : entries) {
            double distance = 0;
            for (std::size_t k = 0; k < 4; ++k)
                distance += static_cast<double>(entry[k] - other[k]) * (entry[k] - other[k]);
            if (distance > 0) least = std::min(least, distance);
        }
        sum += std::sqrt(least);
    }
    return sum / static_cast<double>(entries.size());
}

// From this distance between neighbouring entries on, the pattern of dithering meets the eye.
constexpr double coarseSpacing = 96;

// How much of its error a pixel hands on, in sixteenths. Nearly all where the picture is smooth or
// changes evenly, so that gradients show no steps. With a fine palette little where it is rougher
// than the gaps between the entries: the picture's own texture hides the steps there, and dithering
// would only add noise. A coarse palette mixes its colours everywhere.
class Strength {
  public:
    Strength(double spacing, std::size_t entries)
        : smooth_(spacing > coarseSpacing || entries <= fewEntries ? 15 : 14),
          rough_(std::min(smooth_, std::max(forSpacing(spacing), forCount(entries)))),
          range_(std::clamp(static_cast<int>(0.7 * spacing), 3, 24)) {}

    void fill(PreparedRow& row) const {
        findBends(row.spots.data(), row.spots.size(), row.bends.data());
        fillRow(row.bends.data(), row.strength.size(), row.strength.data());
    }

  private:
    static constexpr std::size_t fewEntries = 32;
    // The bend that rounding gives an even gradient.
    static constexpr int calm = 3;

    static int forSpacing(double spacing) {
        return std::clamp(static_cast<int>(1 + (spacing - 16) * 14 / 24), 1, 14);
    }
    // From 1 for 256 entries to 14 for 16.
    static int forCount(std::size_t entries) {
        const double octaves = std::log2(256.0 / static_cast<double>(entries));
        return std::clamp(static_cast<int>(1 + octaves * 13 / 4), 1, 14);
    }
    // By how many levels each value differs from an even way from one neighbour to the other,
    // twice. Pixels are of four values.
    KVN_CLONES static void findBends(const std::uint8_t* spots, std::size_t size,
                                     std::uint16_t* __restrict bends) {
        constexpr std::size_t pixel = 4;
        for (std::size_t i = 0; i < pixel; ++i)
            bends[i] = bends[size - 1 - i] = 0;
        for (std::size_t i = pixel; i + pixel < size; ++i)
            bends[i] = static_cast<std::uint16_t>(
                std::abs(2 * spots[i] - spots[i - pixel] - spots[i + pixel]));
    }
    KVN_CLONES void fillRow(const std::uint16_t* bends, std::size_t width,
                            std::uint8_t* __restrict strength) const {
        const int smooth = smooth_, drop = smooth_ - rough_, range = range_;
        const int perBend = (drop * 65536 + range - 1) / range;
        for (std::size_t x = 0; x < width; ++x) {
            std::uint64_t four;
            std::memcpy(&four, bends + 4 * x, sizeof four);
            four += four >> 32;
            const int bend = static_cast<int>((four + (four >> 16)) & 0xFFFF);
            const int roughness = std::min(std::max(bend - calm, 0), range);
            strength[x] = static_cast<std::uint8_t>(smooth - (roughness * perBend >> 16));
        }
    }

    int smooth_;
    int rough_;
    int range_; // of bends, from smooth to rough
};

// Error diffusion is serial by nature. Large pictures are cut into strips of fixed height, so
// that the pixels do not depend on the number of threads. Each strip starts some rows early and
// throws those away, by when its errors are as those of any other row. The starts are so far
// apart that in plain areas, where the pattern repeats after a few rows, two strips meet in step.
// Where the pattern is coarse a seam might show even so, and the picture stays whole.
constexpr int stripRows = 240; // divisible by 2, 3, 4, 5, 6, 8, 10 and 12
constexpr int leadRows = 16;

// A strip in the making: rows from `start` on, of which those from y0 to y1 - 1 are kept.
class Strip {
  public:
    Strip(const Mapping& mapping, const Strength& strength, NearestColors& colors, const View& to,
          int start, int y0, int y1)
        : mapping_(mapping), strength_(strength), to_(to), y_(start), y0_(y0), y1_(y1),
          diffusion_(colors, to.width, start % 2 != 0), row_(to.width),
          dropped_(static_cast<std::size_t>(to.width)) {}

    bool hasRows() const { return y_ < y1_; }
    double fraction() const { return static_cast<double>(y_) / y1_; }

    // A row of each of the strips that have rows, side by side.
    static void step(std::span<Strip> strips) {
        std::vector<Diffusion::Lane> lanes;
        for (Strip& strip : strips)
            if (strip.hasRows()) lanes.push_back({&strip.diffusion_, strip.next()});
        Diffusion::rows(lanes);
    }

  private:
    Diffusion::Row next() {
        mapping_.prepare(y_, row_);
        strength_.fill(row_);
        std::uint8_t* out = y_ < y0_ ? dropped_.data() : to_.row(y_);
        ++y_;
        return {row_.spots.data(), row_.fixed.data(), row_.strength.data(), out};
    }

    const Mapping& mapping_;
    const Strength& strength_;
    View to_;
    int y_, y0_, y1_;
    Diffusion diffusion_;
    PreparedRow row_;
    std::vector<std::uint8_t> dropped_;
};

// Two colours far enough apart for a short cut.
bool isCoarsePair(const NearestColors& colors) {
    const auto& entries = colors.entries();
    return entries.size() == 2 && entries[0] != entries[1] && spacingOf(entries) > coarseSpacing;
}

void mapDithered(const Mapping& mapping, NearestColors& first, const View& to, Task& task) {
    const double spacing = spacingOf(first.entries());
    const Strength strength(spacing, first.entries().size());
    const int strips =
        spacing > coarseSpacing ? 1 : std::max(1, (to.height - leadRows) / stripRows);
    const auto top = [&](int strip) {
        if (strip == strips) return to.height;
        return strip == 0 ? 0 : strip * stripRows + leadRows;
    };
    const auto stripAt = [&](int s, NearestColors& colors) {
        return Strip(mapping, strength, colors, to, s * stripRows, top(s), top(s + 1));
    };
    if (strips == 1) {
        Strip whole = stripAt(0, first);
        for (int y = 0; whole.hasRows(); ++y) {
            if (y % 16 == 0) task.report(whole.fraction());
            Strip::step({&whole, 1});
        }
        return;
    }
    const int together = strips >= 8 ? 4 : 2;
    Store<NearestColors> searches;
    const auto group = [&](int g0, int g1) {
        const auto colors = searches.borrow([&] { return mapping.search(); });
        for (int g = g0; g < g1; ++g) {
            std::vector<Strip> some;
            for (int s = g * together; s < std::min((g + 1) * together, strips); ++s)
                some.push_back(stripAt(s, *colors));
            while (std::ranges::any_of(some, &Strip::hasRows))
                Strip::step(some);
        }
    };
    parallelRows((strips + together - 1) / together, task, group, 1);
}

void mapNearest(const Mapping& mapping, const View& to, Task& task) {
    Store<NearestColors> searches;
    parallelRows(to.height, task, [&](int y0, int y1) {
        const auto colors = searches.borrow([&] { return mapping.search(); });
        PreparedRow row(to.width);
        for (int y = y0; y < y1; ++y) {
            mapping.prepare(y, row);
            nearestRow(*colors, row.spots.data(), row.fixed.data(), to.row(y), to.width);
        }
    });
}

} // namespace

Raster mapToPalette(const Raster& source, const Palette& palette, bool dither, Task& task) {
    if (source.isEmpty()) throw RuntimeError(errors::invalidCall, "There is no picture", "Imaging");
    if (palette.isEmpty())
        throw RuntimeError(errors::invalidCall, "The palette is empty", "Imaging");
    const ImageType type =
        palette.hasTransparency() ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    Raster result = Raster::uninitialized(type, source.width(), source.height());
    result.setPalette(palette);
    const Mapping mapping(source, palette);
    const View to = result.edit();
    NearestColors colors = mapping.search();
    if (!dither)
        mapNearest(mapping, to, task);
    else if (isCoarsePair(colors))
        diffuseTwoColors(source, palette, to, task);
    else
        mapDithered(mapping, colors, to, task);
    return result;
}

} // namespace kvn::imaging
