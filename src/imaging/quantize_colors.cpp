#include "imaging/quantize_colors.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "imaging/convert_rows.h"
#include "imaging/quantize.h"

namespace kvn::imaging {

namespace {

constexpr std::uint32_t opaque = 0xFF000000u;

// One row as packed colours.
class PackedRow {
  public:
    PackedRow(const RowReader& reader, int width, bool withAlpha)
        : reader_(reader), bytes_(static_cast<std::size_t>(width) * 4), colors_(bytes_.size() / 4),
          withAlpha_(withAlpha) {}

    const std::vector<std::uint32_t>& read(int y) {
        reader_.read(y, bytes_.data());
        const std::uint32_t alpha = withAlpha_ ? 0 : opaque;
        const std::uint8_t* p = bytes_.data();
        for (std::uint32_t& color : colors_) {
            color = packed({p[0], p[1], p[2], p[3]}) | alpha;
            p += 4;
        }
        return colors_;
    }

  private:
    const RowReader& reader_;
    std::vector<std::uint8_t> bytes_;
    std::vector<std::uint32_t> colors_;
    bool withAlpha_;
};

// Adds what is new in the row. False if the set is full.
bool addRow(ColorSet& set, const std::vector<std::uint32_t>& row) {
    std::uint32_t last = ~row.front();
    for (const std::uint32_t color : row) {
        if (color == last) continue;
        if (!set.add(color)) return false;
        last = color;
    }
    return true;
}

// Counting without a limit worth a set: a bit for each of the 2^24 colours of one alpha.
class ColorBits {
  public:
    ColorBits() : words_(new std::atomic<std::uint64_t>[wordCount]()) {}

    // 1 if the colour is new.
    std::int64_t add(std::uint32_t color) {
        std::atomic<std::uint64_t>& word = words_[(color & 0xFFFFFF) >> 6];
        const std::uint64_t bit = std::uint64_t{1} << (color & 63);
        if (word.load(std::memory_order_relaxed) & bit) return 0;
        return word.fetch_or(bit, std::memory_order_relaxed) & bit ? 0 : 1;
    }
    void clear() {
        for (std::size_t i = 0; i < wordCount; ++i)
            words_[i].store(0, std::memory_order_relaxed);
    }

  private:
    static constexpr std::size_t wordCount = (std::size_t{1} << 24) / 64;
    std::unique_ptr<std::atomic<std::uint64_t>[]> words_;
};

// The translucent pixels of a picture, by alpha.
using ByAlpha = std::array<std::vector<std::uint32_t>, 255>;

} // namespace

std::optional<ColorSet> collectColors(const Raster& source, bool withAlpha, std::size_t limit,
                                      Task& task) {
    const RowReader reader(source, ImageType::Rgba32);
    std::atomic<bool> tooMany{false};
    std::mutex mutex;
    std::vector<std::pair<int, ColorSet>> parts; // by first row
    parallelRows(source.height(), task, [&](int y0, int y1) {
        if (tooMany.load(std::memory_order_relaxed)) return;
        PackedRow row(reader, source.width(), withAlpha);
        ColorSet set;
        for (int y = y0; y < y1; ++y) {
            if (addRow(set, row.read(y)) && set.colors().size() <= limit) continue;
            tooMany.store(true, std::memory_order_relaxed);
            return;
        }
        const std::lock_guard lock(mutex);
        parts.emplace_back(y0, std::move(set));
    });
    if (tooMany) return std::nullopt;
    std::ranges::sort(parts, {}, [](const auto& part) { return part.first; });
    ColorSet all;
    for (const auto& [y, set] : parts)
        for (const std::uint32_t color : set.colors())
            if (!all.add(color) || all.colors().size() > limit) return std::nullopt;
    return all;
}

Raster placesOf(const Raster& source, const ColorSet& colors, ImageType type, Task& task) {
    Raster result = Raster::uninitialized(type, source.width(), source.height());
    const View to = result.edit();
    const RowReader reader(source, ImageType::Rgba32);
    const bool withAlpha = hasAlpha(type);
    parallelRows(to.height, task, [&](int y0, int y1) {
        PackedRow row(reader, to.width, withAlpha);
        for (int y = y0; y < y1; ++y) {
            std::uint8_t* target = to.row(y);
            std::uint32_t last = colors.colors().front();
            std::uint8_t place = 0;
            for (const std::uint32_t color : row.read(y)) {
                if (color != last) {
                    place = static_cast<std::uint8_t>(colors.find(color));
                    last = color;
                }
                *target++ = place;
            }
        }
    });
    return result;
}

int countColors(const Raster& source, int limit) {
    Task task;
    const bool withAlpha = hasAlpha(source.type());
    const RowReader reader(source, ImageType::Rgba32);
    ColorBits bits;
    std::atomic<std::int64_t> count{0};
    std::mutex mutex;
    ByAlpha translucent;
    parallelRows(source.height(), task, [&](int y0, int y1) {
        PackedRow row(reader, source.width(), withAlpha);
        std::vector<std::uint32_t> rest;
        for (int y = y0; y < y1 && count <= limit; ++y) {
            std::int64_t fresh = 0;
            for (const std::uint32_t color : row.read(y)) {
                if (color >= opaque)
                    fresh += bits.add(color);
                else if (rest.empty() || rest.back() != color)
                    rest.push_back(color);
            }
            count += fresh;
        }
        const std::lock_guard lock(mutex);
        for (const std::uint32_t color : rest)
            translucent[color >> 24].push_back(color);
    });
    for (const auto& colors : translucent) {
        if (colors.empty() || count > limit) continue;
        bits.clear();
        for (const std::uint32_t color : colors)
            count += bits.add(color);
    }
    return static_cast<int>(std::min(count.load(), std::int64_t{limit} + 1));
}

} // namespace kvn::imaging
