// Drawing a picture with a given palette.

#include <algorithm>
#include <vector>

#include "basic/error.h"
#include "imaging/convert_rows.h"
#include "imaging/quantize.h"
#include "imaging/quantize_colors.h"
#include "imaging/quantize_diffusion.h"
#include "imaging/quantize_metric.h"
#include "imaging/quantize_nearest.h"

namespace kvn::imaging {

namespace {

// The first palette entry of each colour that stands in the palette.
class PaletteIndex {
  public:
    explicit PaletteIndex(const Palette& palette) {
        for (std::size_t i = 0; i < palette.size(); ++i) {
            const auto known = set_.colors().size();
            set_.add(packed(palette[i]));
            if (set_.colors().size() > known) entries_.push_back(static_cast<std::int16_t>(i));
        }
    }
    // -1 if it is not there.
    std::int16_t find(std::uint32_t color) const {
        const int place = set_.find(color);
        return place < 0 ? std::int16_t{-1} : entries_[static_cast<std::size_t>(place)];
    }

  private:
    ColorSet set_;
    std::vector<std::int16_t> entries_;
};

// Rows of the source made ready for the search: places in the metric, and the entries of the
// colours that stand in the palette.
class PreparedRow {
  public:
    PreparedRow(const RowReader& reader, const PaletteIndex& exact, int width, bool withAlpha)
        : reader_(reader), exact_(exact), spots(static_cast<std::size_t>(width) * 4),
          fixed(static_cast<std::size_t>(width)), withAlpha_(withAlpha) {}

    void read(int y) {
        reader_.read(y, spots.data());
        std::uint8_t* p = spots.data();
        std::uint32_t last = 0;
        std::int16_t entry = exact_.find(last);
        for (std::int16_t& place : fixed) {
            Rgba color{p[0], p[1], p[2], p[3]};
            if (!withAlpha_) color.a = 255;
            if (packed(color) != last) {
                last = packed(color);
                entry = exact_.find(last);
            }
            place = entry;
            const Spot spot = spotOf(color);
            for (std::size_t k = 0; k < 4; ++k)
                p[k] = static_cast<std::uint8_t>(spot[k]);
            p += 4;
        }
    }

  private:
    const RowReader& reader_;
    const PaletteIndex& exact_;

  public:
    std::vector<std::uint8_t> spots;
    std::vector<std::int16_t> fixed;

  private:
    bool withAlpha_;
};

// Error diffusion is serial by nature. Large pictures are cut into strips of fixed height, so
// that the pixels do not depend on the number of threads; each strip starts some rows early and
// throws those away, by when its errors are as those of any other row. Where the palette is
// small and the pattern coarse, a seam might show, so such pictures stay whole.
constexpr int stripRows = 256;
constexpr int leadRows = 16;
constexpr int leastForStrips = 32; // palette entries

struct Job {
    const RowReader& reader;
    const PaletteIndex& exact;
    const NearestColors& nearest;
    const View& to;
    bool withAlpha;
};

void diffuse(const Job& job, int y0, int y1, Task* task) {
    const int start = std::max(0, y0 - leadRows);
    PreparedRow row(job.reader, job.exact, job.to.width, job.withAlpha);
    std::vector<std::uint8_t> dropped(static_cast<std::size_t>(job.to.width));
    Diffusion diffusion(job.nearest, job.to.width, start % 2 != 0);
    for (int y = start; y < y1; ++y) {
        if (task && y % 16 == 0) task->report(static_cast<double>(y) / y1);
        row.read(y);
        diffusion.row(row.spots.data(), row.fixed.data(), y < y0 ? dropped.data() : job.to.row(y));
    }
}

void mapDithered(const Job& job, int entries, Task& task) {
    const int height = job.to.height;
    const int strips = entries < leastForStrips ? 1 : std::max(1, height / stripRows);
    if (strips == 1) {
        diffuse(job, 0, height, &task);
        return;
    }
    const auto first = [&](int strip) {
        return static_cast<int>(std::int64_t{strip} * height / strips);
    };
    parallelRows(
        strips, task,
        [&](int s0, int s1) {
            for (int s = s0; s < s1; ++s)
                diffuse(job, first(s), first(s + 1), nullptr);
        },
        1);
}

void mapNearest(const Job& job, Task& task) {
    parallelRows(job.to.height, task, [&](int y0, int y1) {
        PreparedRow row(job.reader, job.exact, job.to.width, job.withAlpha);
        for (int y = y0; y < y1; ++y) {
            row.read(y);
            std::uint8_t* target = job.to.row(y);
            const std::uint8_t* p = row.spots.data();
            for (const std::int16_t entry : row.fixed) {
                const Spot spot{p[0], p[1], p[2], p[3]};
                *target++ = static_cast<std::uint8_t>(entry >= 0 ? entry : job.nearest.find(spot));
                p += 4;
            }
        }
    });
}

} // namespace

Raster mapToPalette(const Raster& source, const Palette& palette, bool dither, Task& task) {
    if (source.isEmpty()) throw RuntimeError(errors::invalidCall, "There is no picture", "Imaging");
    if (palette.isEmpty())
        throw RuntimeError(errors::invalidCall, "The palette is empty", "Imaging");
    const bool withAlpha = palette.hasTransparency();
    const ImageType type = withAlpha ? ImageType::Indexed8Alpha : ImageType::Indexed8;
    Raster result = Raster::uninitialized(type, source.width(), source.height());
    result.setPalette(palette);
    const PaletteIndex exact(palette);
    const NearestColors nearest(palette, withAlpha, task.threads);
    const View to = result.edit();
    const RowReader reader(source, ImageType::Rgba32);
    const Job job{reader, exact, nearest, to, withAlpha};
    if (dither)
        mapDithered(job, static_cast<int>(palette.size()), task);
    else
        mapNearest(job, task);
    return result;
}

} // namespace kvn::imaging
