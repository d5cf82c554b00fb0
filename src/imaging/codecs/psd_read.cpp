#include "imaging/codecs/psd_read.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

#include "imaging/codecs/fields.h"
#include "imaging/codecs/packbits.h"
#include "imaging/codecs/tiff_color.h"

namespace kvn::imaging {

namespace {

// Where the rows of one channel stand.
struct Plane {
    std::span<const std::uint8_t> data;
    bool packed = false;
    std::vector<std::uint64_t> starts; // and the end of the last one
};

// The stored rows of the channels that are shown.
class Planes {
  public:
    explicit Planes(const PsdFile& psd)
        : rowBytes_((std::size_t(psd.width) * std::size_t(psd.bits) + 7) / 8) {
        for (int c = 0; c < psd.colors + psd.alpha; ++c)
            planes_.push_back(psd.layer.empty() ? mergedPlane(psd, c) : layerPlane(psd, c));
    }

    std::size_t rowBytes() const { return rowBytes_; }

    // False if the row was not all there; the rest of it stays as it was.
    bool read(int channel, int y, std::span<std::uint8_t> row) const {
        const Plane& plane = planes_[static_cast<std::size_t>(channel)];
        const std::uint64_t start = plane.starts[static_cast<std::size_t>(y)];
        const std::uint64_t end = plane.starts[static_cast<std::size_t>(y) + 1];
        const auto data = partOf(plane.data, start, end - start);
        if (plane.packed) return unpackBits(data, row) == row.size();
        std::ranges::copy(data, row.begin());
        return data.size() == row.size();
    }

  private:
    // The lengths of packed rows, of all channels, stand before the rows.
    Plane mergedPlane(const PsdFile& psd, int channel) const {
        const auto height = static_cast<std::size_t>(psd.height);
        const std::size_t first = static_cast<std::size_t>(channel) * height;
        std::uint64_t start = std::uint64_t{first} * rowBytes_;
        if (psd.packed && channel > 0)
            start = planes_.back().starts.back();
        else if (psd.packed)
            start = (psd.isLarge ? 4u : 2u) * std::uint64_t(psd.channels) * height;
        Plane plane{psd.pixels, psd.packed, {}};
        setStarts(plane, start, first, height, psd.isLarge);
        return plane;
    }

    Plane layerPlane(const PsdFile& psd, int channel) const {
        const auto whole = psd.layer[static_cast<std::size_t>(channel)];
        const auto height = static_cast<std::size_t>(psd.height);
        Plane plane{whole.subspan(2), BigFields(whole).u16(0) == 1, {}};
        setStarts(plane, plane.packed ? 2 * std::uint64_t{height} : 0, 0, height, false);
        return plane;
    }

    // `first` is the place of the plane's first row in the table of lengths.
    void setStarts(Plane& plane, std::uint64_t start, std::size_t first, std::size_t height,
                   bool wide) const {
        const BigFields fields(plane.data);
        plane.starts.reserve(height + 1);
        plane.starts.push_back(start);
        for (std::size_t i = first; i < first + height; ++i) {
            std::uint64_t size = rowBytes_;
            if (plane.packed) size = wide ? fields.u32(4 * i) : fields.u16(2 * i);
            plane.starts.push_back(plane.starts.back() + size);
        }
    }

    std::size_t rowBytes_;
    std::vector<Plane> planes_;
};

// Samples as fractions of the whole; floating point beyond 0..1 is cut, no number is 0.
float fraction(const std::uint8_t* row, int x, int bits) {
    if (bits == 8) return static_cast<float>(row[x]) / 255;
    if (bits == 16) return static_cast<float>(row[2 * x] << 8 | row[2 * x + 1]) / 65535;
    const float value = std::bit_cast<float>(BigFields({row + 4 * std::ptrdiff_t{x}, 4}).u32(0));
    return value > 0 ? std::min(value, 1.0f) : 0;
}

void toBytes(const std::uint8_t* row, int width, int bits, std::uint8_t* to, int step) {
    for (int x = 0; x < width; ++x, to += step)
        *to = bits == 8 ? row[x] : static_cast<std::uint8_t>(fraction(row, x, bits) * 255 + 0.5f);
}

// Turns the rows of all channels into rows of the raster.
class RowReader {
  public:
    RowReader(const PsdFile& psd, const Planes& planes)
        : psd_(psd), planes_(planes), count_(psd.colors + psd.alpha),
          stored_(planes.rowBytes() * static_cast<std::size_t>(count_)) {}

    // False if some channel's row was not all there.
    bool read(int y, std::uint8_t* to) {
        // Nothing is black, or full ink, or clear; in bitmaps 1 is black.
        std::ranges::fill(stored_, psd_.mode == PsdMode::Bitmap ? 0xff : 0);
        bool whole = true;
        for (int c = 0; c < count_; ++c)
            whole = planes_.read(c, y, {channel(c), planes_.rowBytes()}) && whole;
        convert(to);
        return whole;
    }

  private:
    std::uint8_t* channel(int c) {
        return stored_.data() + planes_.rowBytes() * static_cast<std::size_t>(c);
    }

    void convert(std::uint8_t* to) {
        if (psd_.bits == 1) {
            std::memcpy(to, channel(0), planes_.rowBytes());
            return;
        }
        const int step = bytesPerPixel(psd_.type);
        if (psd_.mode == PsdMode::Cmyk)
            fromCmyk(to, step);
        else if (psd_.mode == PsdMode::Lab)
            fromLab(to, step);
        else
            for (int c = 0; c < psd_.colors; ++c)
                toBytes(channel(c), psd_.width, psd_.bits, to + c, step);
        if (psd_.alpha) toBytes(channel(psd_.colors), psd_.width, psd_.bits, to + step - 1, step);
        if (psd_.matted) removeWhite(to, step);
    }

    // Inks are stored turned round: the whole is none.
    void fromCmyk(std::uint8_t* to, int step) {
        std::vector<std::uint8_t> black(static_cast<std::size_t>(psd_.width));
        toBytes(channel(3), psd_.width, psd_.bits, black.data(), 1);
        for (int c = 0; c < 3; ++c) {
            toBytes(channel(c), psd_.width, psd_.bits, to + c, step);
            std::uint8_t* at = to + c;
            for (const std::uint8_t k : black) {
                *at = mul255(*at, k);
                at += step;
            }
        }
    }

    void fromLab(std::uint8_t* to, int step) {
        for (int x = 0; x < psd_.width; ++x, to += step) {
            const Rgba color = rgbFromLab(fraction(channel(0), x, psd_.bits) * 100,
                                          fraction(channel(1), x, psd_.bits) * 255 - 128,
                                          fraction(channel(2), x, psd_.bits) * 255 - 128);
            to[0] = color.r;
            to[1] = color.g;
            to[2] = color.b;
        }
    }

    // The colour before it was blended with white; where nothing is seen it stays.
    void removeWhite(std::uint8_t* pixel, int step) const {
        for (int x = 0; x < psd_.width; ++x, pixel += step) {
            const int alpha = pixel[step - 1];
            if (alpha == 0 || alpha == 255) continue;
            for (int c = 0; c < step - 1; ++c) {
                const int depth = ((255 - pixel[c]) * 255 + alpha / 2) / alpha;
                pixel[c] = static_cast<std::uint8_t>(std::max(0, 255 - depth));
            }
        }
    }

    const PsdFile& psd_;
    const Planes& planes_;
    int count_;
    std::vector<std::uint8_t> stored_;
};

} // namespace

Raster readPsdPixels(const PsdFile& psd, Task& task, std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(psd.type, psd.width, psd.height);
    if (psd.mode == PsdMode::Bitmap)
        raster.setPalette(Palette({{255, 255, 255}, {0, 0, 0}})); // 1 is ink
    else if (hasPalette(psd.type))
        raster.setPalette(psd.palette);
    const View view = raster.edit();
    const Planes planes(psd);
    std::atomic<int> missing{0};
    parallelRows(view.height, task, [&](int y0, int y1) {
        RowReader reader(psd, planes);
        for (int y = y0; y < y1; ++y)
            if (!reader.read(y, view.row(y))) ++missing;
    });
    if (missing > 0)
        warnings.push_back("The PSD file is damaged or cut off: " + std::to_string(missing) +
                           " of " + std::to_string(view.height) + " rows are incomplete.");
    return raster;
}

} // namespace kvn::imaging
