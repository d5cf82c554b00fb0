#include "imaging/codecs/bmp_read.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstring>

#include <opencv2/imgproc.hpp>

#include "imaging/codecs/blacken.h"
#include "imaging/codecs/bmp_rle.h"

namespace kvn::imaging {

namespace {

std::size_t fileRowBytes(const BmpHeader& header) {
    const std::uint64_t bits = std::uint64_t(header.width) * std::uint64_t(header.bits);
    return static_cast<std::size_t>((bits + 31) / 32 * 4);
}

bool anySpareByte(const BmpHeader& header) {
    for (std::size_t i = 3; i < header.pixels.size(); i += 4)
        if (header.pixels[i] != 0) return true;
    return false;
}

// One channel of a masked pixel as a table from its value to 0..255. Up to 8 bits are widened by
// repeating their pattern, more are scaled and rounded; both make the largest value 255.
class ChannelTable {
  public:
    explicit ChannelTable(std::uint32_t mask) : mask_(mask) {
        if (mask == 0) return;
        shift_ = std::countr_zero(mask);
        const int spread = std::bit_width(mask >> shift_);
        shift_ += std::max(0, spread - mostBits);
        const std::uint32_t most = mask >> shift_;
        const int bits = std::popcount(most);
        const bool solid = most == (std::uint64_t{1} << bits) - 1;
        table_.resize(std::size_t{most} + 1);
        for (std::uint32_t v = 0; v <= most; ++v)
            table_[v] = solid && bits <= 8 ? repeated(v, bits) : scaled(v, most);
    }
    bool isMissing() const { return table_.empty(); }
    std::uint8_t operator()(std::uint32_t pixel) const { return table_[(pixel & mask_) >> shift_]; }

  private:
    static constexpr int mostBits = 12; // the table stays in the cache
    static std::uint8_t repeated(std::uint32_t v, int bits) {
        std::uint32_t pattern = 0;
        for (int at = 8 - bits; at > -bits; at -= bits)
            pattern |= at >= 0 ? v << at : v >> -at;
        return static_cast<std::uint8_t>(pattern);
    }
    static std::uint8_t scaled(std::uint32_t v, std::uint32_t most) {
        return static_cast<std::uint8_t>((std::uint64_t{v} * 255 + most / 2) / most);
    }

    std::uint32_t mask_;
    int shift_ = 0;
    std::vector<std::uint8_t> table_;
};

// Turns rows of the file into rows of the raster.
class RowReader {
  public:
    RowReader(const BmpHeader& header, ImageType type)
        : width_(header.width), bits_(header.bits), type_(type), masks_(header.masks),
          plain_(usualMasks(header)) {
        if ((bits_ == 16 || bits_ == 32) && !plain_)
            for (const std::uint32_t mask : masks_)
                channels_.emplace_back(mask);
    }

    void operator()(const std::uint8_t* from, std::uint8_t* to) const {
        if (bits_ == 1 || bits_ == 8)
            std::memcpy(to, from, rowBytes(type_, width_));
        else if (bits_ < 8)
            unpack(from, to);
        else if (bits_ == 24 || plain_)
            reorder(from, to);
        else if (bits_ == 16)
            masked<2>(from, to);
        else
            masked<4>(from, to);
    }

  private:
    static bool usualMasks(const BmpHeader& header) {
        const auto& m = header.masks;
        return header.bits == 32 && m[0] == 0xff0000 && m[1] == 0xff00 && m[2] == 0xff &&
               (m[3] == 0 || m[3] == 0xff000000);
    }

    void unpack(const std::uint8_t* from, std::uint8_t* to) const {
        const int perByte = 8 / bits_, most = (1 << bits_) - 1;
        const int byteShift = bits_ == 4 ? 1 : 2;
        for (int x = 0; x < width_; ++x) {
            const int place = x & (perByte - 1);
            to[x] = static_cast<std::uint8_t>(from[x >> byteShift] >> (8 - bits_ - place * bits_) &
                                              most);
        }
    }

    void reorder(const std::uint8_t* from, std::uint8_t* to) const {
        const int fromType = bits_ == 24 ? CV_8UC3 : CV_8UC4;
        const bool alpha = type_ == ImageType::Rgba32;
        const cv::Mat source(1, width_, fromType, const_cast<std::uint8_t*>(from));
        cv::Mat target(1, width_, alpha ? CV_8UC4 : CV_8UC3, to);
        const int code = bits_ == 24 ? cv::COLOR_BGR2RGB
                         : alpha     ? cv::COLOR_BGRA2RGBA
                                     : cv::COLOR_BGRA2RGB;
        cv::cvtColor(source, target, code);
    }

    template <int Size>
    void masked(const std::uint8_t* from, std::uint8_t* to) const {
        const int channels = type_ == ImageType::Rgba32 ? 4 : 3;
        for (int x = 0; x < width_; ++x, from += Size, to += channels) {
            std::uint32_t pixel = from[0] | std::uint32_t{from[1]} << 8;
            if constexpr (Size == 4)
                pixel |= std::uint32_t{from[2]} << 16 | std::uint32_t{from[3]} << 24;
            for (int c = 0; c < channels; ++c) {
                const ChannelTable& channel = channels_[static_cast<std::size_t>(c)];
                to[c] = channel.isMissing() ? 0 : channel(pixel);
            }
        }
    }

    int width_;
    int bits_;
    ImageType type_;
    std::array<std::uint32_t, 4> masks_;
    bool plain_;
    std::vector<ChannelTable> channels_;
};

// The file's row y, counted from the first one it holds.
int rasterRow(const BmpHeader& header, int y) {
    return header.topDown ? y : header.height - 1 - y;
}

int readPlainRows(const BmpHeader& header, const View& view, ImageType type, Task& task) {
    const std::size_t stride = fileRowBytes(header);
    const std::size_t payload = (std::size_t(header.width) * std::size_t(header.bits) + 7) / 8;
    // The last row may lack its padding.
    const std::size_t whole = (header.pixels.size() + stride - payload) / stride;
    const int rows = static_cast<int>(std::min<std::size_t>(whole, std::size_t(header.height)));
    const RowReader reader(header, type);
    parallelRows(rows, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            reader(header.pixels.data() + stride * std::size_t(y), view.row(rasterRow(header, y)));
    });
    return rows;
}

} // namespace

ImageType bmpImageType(const BmpHeader& header) {
    if (header.bits == 1) return ImageType::Bit1;
    if (header.bits == 8 && header.palette == Palette::grayRamp()) return ImageType::Gray8;
    if (header.bits <= 8) return ImageType::Indexed8;
    const bool alpha = header.masks[3] != 0 || (header.spareByte && anySpareByte(header));
    return alpha ? ImageType::Rgba32 : ImageType::Rgb24;
}

Raster readBmpPixels(const BmpHeader& header, ImageType type, Task& task,
                     std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(type, header.width, header.height);
    if (hasPalette(type)) raster.setPalette(header.palette);
    const View view = raster.edit();
    int rows = 0;
    if (header.packing == BmpPacking::Plain) {
        rows = readPlainRows(header, view, type, task);
    } else {
        for (int y = 0; y < header.height; ++y)
            std::memset(view.row(y), 0, raster.rowBytes());
        rows = unpackBmpRuns(header.pixels, header.bits, header.topDown, view);
    }
    if (rows < header.height) {
        const int missing = header.height - rows;
        blacken(view, raster.palette(), {0, header.topDown ? rows : 0, header.width, missing});
        warnings.push_back("The BMP file is cut off: " + std::to_string(missing) + " of " +
                           std::to_string(header.height) + " rows are missing.");
    }
    return raster;
}

} // namespace kvn::imaging
