#include "imaging/codecs/pcx_read.h"

#include <algorithm>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t headerSize = 128, tailSize = 769;
constexpr std::uint8_t tailMark = 12;

[[noreturn]] void refuse(const std::string& what) {
    throw RuntimeError(errors::invalidPicture, what, "Import");
}

Palette paletteFrom(std::span<const std::uint8_t> rgb) {
    std::vector<Rgba> colors;
    for (std::size_t at = 0; at + 3 <= rgb.size(); at += 3)
        colors.push_back({rgb[at], rgb[at + 1], rgb[at + 2], 255});
    return Palette(std::move(colors));
}

// What the video cards of the time showed for 16 colours, and for the 4 of their other mode.
Palette standardPalette(int bits) {
    if (bits == 2)
        return Palette({{0, 0, 0}, {0, 0xaa, 0xaa}, {0xaa, 0, 0xaa}, {0xaa, 0xaa, 0xaa}});
    std::vector<Rgba> colors;
    for (int i = 0; i < 16; ++i) {
        const int high = i & 8 ? 0x55 : 0;
        const auto channel = [&](int bit) {
            return static_cast<std::uint8_t>((i & bit ? 0xaa : 0) + high);
        };
        colors.push_back({channel(4), channel(2), channel(1), 255});
    }
    colors[6] = {0xaa, 0x55, 0, 255}; // brown
    return Palette(std::move(colors));
}

// Writers of bitmaps often leave the palette alone: empty, or the standard one, whose second
// colour is a dark blue.
Palette bitmapPalette(const Palette& header) {
    const Rgba first = header[0], second = header[1];
    const bool standard = first == Rgba{} && second.r == 0 && second.g == 0 && second.b <= 0xaa;
    if (first == second || standard) return Palette::blackAndWhite();
    return Palette({first, second});
}

bool hasTail(std::span<const std::uint8_t> file) {
    return file.size() >= headerSize + tailSize && file[file.size() - tailSize] == tailMark;
}

Palette paletteOf(const PcxHeader& header, std::span<const std::uint8_t> file) {
    constexpr std::uint8_t noPalette = 3; // of the versions
    const int bits = header.bits * header.planes;
    if (bits > 4) return hasTail(file) ? paletteFrom(file.last(tailSize - 1)) : Palette::grayRamp();
    const Palette stored = paletteFrom(file.subspan(16, std::size_t{3} << bits));
    if (bits == 1) return file[1] == noPalette ? Palette::blackAndWhite() : bitmapPalette(stored);
    const bool blank = std::ranges::all_of(stored.colors(), [](Rgba c) { return c == Rgba{}; });
    return file[1] == noPalette || blank ? standardPalette(bits) : stored;
}

ImageType typeOf(const PcxHeader& header) {
    const int bits = header.bits * header.planes;
    if (bits == 1) return ImageType::Bit1;
    if (bits == 8 && header.palette == Palette::grayRamp()) return ImageType::Gray8;
    if (bits <= 8) return ImageType::Indexed8;
    return header.planes == 4 ? ImageType::Rgba32 : ImageType::Rgb24;
}

// Old paint programs put the size of the screen, or of the picture, where the resolution goes.
void setResolution(PcxHeader& header, const LittleFields& fields) {
    const int x = static_cast<int>(fields.u16(12)), y = static_cast<int>(fields.u16(14));
    if (x == 0 || y == 0 || (x == header.width && y == header.height)) return;
    header.xDpi = x;
    header.yDpi = y;
}

// The run lengths of a whole picture; runs may go on from line to line.
class Lines {
  public:
    Lines(std::span<const std::uint8_t> data, bool packed) : data_(data), packed_(packed) {}

    // Fills the line, with zeros from where the data end; false if there was nothing left.
    bool next(std::span<std::uint8_t> line) {
        if (at_ >= data_.size() && run_ == 0) return false;
        if (!packed_) {
            const std::size_t n = std::min(line.size(), data_.size() - at_);
            std::memcpy(line.data(), data_.data() + at_, n);
            std::fill(line.begin() + static_cast<std::ptrdiff_t>(n), line.end(), 0);
            at_ += n;
            return true;
        }
        std::size_t done = 0;
        while (done < line.size() && (run_ > 0 || startRun())) {
            const std::size_t n = std::min(run_, line.size() - done);
            std::memset(line.data() + done, value_, n);
            done += n;
            run_ -= n;
        }
        std::fill(line.begin() + static_cast<std::ptrdiff_t>(done), line.end(), 0);
        return true;
    }

  private:
    bool startRun() {
        constexpr std::uint8_t runMark = 0xc0;
        while (at_ < data_.size()) {
            value_ = data_[at_++];
            run_ = 1;
            if (value_ < runMark) return true;
            run_ = value_ & 0x3f;
            if (at_ >= data_.size())
                run_ = 0;
            else
                value_ = data_[at_++];
            if (run_ > 0) return true;
        }
        return false;
    }

    std::span<const std::uint8_t> data_;
    bool packed_;
    std::size_t at_ = 0;
    std::size_t run_ = 0;
    std::uint8_t value_ = 0;
};

// What a plane's line takes in memory: wrong headers give lines that are too short for the width.
std::size_t planeStride(const PcxHeader& header) {
    const auto bits = std::size_t(header.width) * std::size_t(header.bits);
    return std::max(header.lineBytes, (bits + 7) / 8);
}

bool nextLine(const PcxHeader& header, Lines& lines, std::span<std::uint8_t> planes) {
    const std::size_t stride = planeStride(header);
    if (!lines.next(planes.first(header.lineBytes))) return false;
    for (std::size_t p = 1; p < static_cast<std::size_t>(header.planes); ++p) {
        const auto line = planes.subspan(p * stride, header.lineBytes);
        if (!lines.next(line)) std::ranges::fill(line, std::uint8_t{0});
    }
    return true;
}

void joinIndices(const PcxHeader& header, const std::uint8_t* line, std::uint8_t* row) {
    const std::size_t stride = planeStride(header);
    const int bits = header.bits, most = (1 << bits) - 1;
    for (int x = 0; x < header.width; ++x) {
        const std::size_t place = static_cast<std::size_t>(x) * static_cast<std::size_t>(bits);
        const int shift = 8 - bits - static_cast<int>(place % 8);
        int index = 0;
        for (int p = 0; p < header.planes; ++p)
            index |= (line[stride * std::size_t(p) + place / 8] >> shift & most) << p * bits;
        row[x] = static_cast<std::uint8_t>(index);
    }
}

void joinColors(const PcxHeader& header, const std::uint8_t* line, std::uint8_t* row) {
    const int channels = header.planes;
    for (int p = 0; p < channels; ++p) {
        const std::uint8_t* from = line + planeStride(header) * std::size_t(p);
        std::uint8_t* to = row + p;
        for (int x = 0; x < header.width; ++x, to += channels)
            *to = from[x];
    }
}

} // namespace

bool isPcx(std::span<const std::uint8_t> file) {
    if (file.size() <= headerSize || file[0] != 10 || file[1] > 5 || file[1] == 1 || file[2] > 1)
        return false;
    const int bits = file[3], planes = file[65];
    return (bits == 1 || bits == 2 || bits == 4 || bits == 8) && planes >= 1 && planes <= 4;
}

PcxHeader readPcxHeader(std::span<const std::uint8_t> file) {
    if (!isPcx(file)) refuse("The PCX file has no valid header.");
    const LittleFields fields(file);
    PcxHeader header;
    header.width = static_cast<int>(fields.u16(8)) - static_cast<int>(fields.u16(4)) + 1;
    header.height = static_cast<int>(fields.u16(10)) - static_cast<int>(fields.u16(6)) + 1;
    if (header.width < 1 || header.height < 1)
        refuse("The PCX file names a picture without pixels.");
    header.bits = file[3];
    header.planes = file[65];
    header.packed = file[2] == 1;
    header.lineBytes = fields.u16(66);
    const int bits = header.bits * header.planes;
    if (bits > 8 && (header.bits != 8 || header.planes == 2))
        refuse("The PCX file has an unknown depth (" + std::to_string(header.planes) +
               " planes of " + std::to_string(header.bits) + " bits).");
    if (header.lineBytes == 0) refuse("The PCX file's lines are empty.");
    if (bits <= 8) header.palette = paletteOf(header, file);
    header.type = typeOf(header);
    const bool tail = bits > 4 && bits <= 8 && hasTail(file);
    header.pixels = file.subspan(headerSize, file.size() - headerSize - (tail ? tailSize : 0));
    setResolution(header, fields);
    return header;
}

Raster readPcxPixels(const PcxHeader& header, std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(header.type, header.width, header.height);
    if (hasPalette(header.type)) raster.setPalette(header.palette);
    const View view = raster.edit();
    std::vector<std::uint8_t> line(planeStride(header) * static_cast<std::size_t>(header.planes));
    Lines lines(header.pixels, header.packed);
    if (planeStride(header) > header.lineBytes)
        warnings.push_back("The PCX file's lines are too short for its width.");
    int y = 0;
    for (; y < header.height && nextLine(header, lines, line); ++y) {
        if (header.planes == 1 && (header.bits == 1 || header.bits == 8))
            std::memcpy(view.row(y), line.data(), raster.rowBytes());
        else if (header.type == ImageType::Rgb24 || header.type == ImageType::Rgba32)
            joinColors(header, line.data(), view.row(y));
        else
            joinIndices(header, line.data(), view.row(y));
    }
    blackenMissingRows(view, raster.palette(), y, true, "PCX", warnings);
    return raster;
}

} // namespace kvn::imaging
