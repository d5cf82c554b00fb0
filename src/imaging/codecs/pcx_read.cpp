#include "imaging/codecs/pcx_read.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include <opencv2/core.hpp>

#include "basic/error.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/pcx_runs.h"

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

// All planes of a row.
std::uint64_t rowSize(const PcxHeader& header) {
    return std::uint64_t{header.lineBytes} * static_cast<unsigned>(header.planes);
}

// The offset of the palette of 256 colours, 0 without one: it ends the file, but some programs
// have put more behind it.
std::size_t tailAt(const PcxHeader& header, std::span<const std::uint8_t> file) {
    const auto isTail = [&](std::size_t at) { return file[at] == tailMark; };
    if (file.size() < headerSize + tailSize) return 0;
    const std::size_t last = file.size() - tailSize;
    if (isTail(last)) return last;
    const std::uint64_t wanted = rowSize(header) * static_cast<unsigned>(header.height);
    std::uint64_t at = headerSize + wanted;
    if (header.packed) {
        Task quiet;
        const PcxRuns runs(file.subspan(headerSize), quiet);
        if (runs.size() < wanted) return 0;
        at = headerSize + PcxRuns::Reader(runs, wanted).position();
    }
    return at < last && isTail(static_cast<std::size_t>(at)) ? static_cast<std::size_t>(at) : 0;
}

Palette paletteOf(const PcxHeader& header, std::span<const std::uint8_t> file, std::size_t tail) {
    constexpr std::uint8_t noPalette = 3; // of the versions
    const int bits = header.bits * header.planes;
    if (bits > 4)
        return tail ? paletteFrom(file.subspan(tail + 1, tailSize - 1)) : Palette::grayRamp();
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

// What a plane's line takes in memory: wrong headers give lines that are too short for the width.
std::size_t planeStride(const PcxHeader& header) {
    const auto bits = std::size_t(header.width) * std::size_t(header.bits);
    return std::max(header.lineBytes, (bits + 7) / 8);
}

// The planes of one row after another, each plane as long as planeStride().
class Lines {
  public:
    // `runs` is null if the pixels are not packed.
    Lines(const PcxHeader& header, const PcxRuns* runs, int firstRow)
        : header_(header), start_(rowSize(header) * static_cast<unsigned>(firstRow)),
          stored_(static_cast<std::size_t>(rowSize(header)) + PcxRuns::Reader::slack) {
        if (runs) reader_.emplace(*runs, start_);
    }

    // What is missing is 0.
    const std::uint8_t* next() {
        const auto size = static_cast<std::size_t>(rowSize(header_));
        if (reader_) {
            reader_->read(stored_.data(), size);
        } else {
            std::ranges::fill(stored_, std::uint8_t{0});
            std::ranges::copy(partOf(header_.pixels, start_, size), stored_.begin());
            start_ += size;
        }
        const std::size_t stride = planeStride(header_);
        if (stride == header_.lineBytes) return stored_.data();
        spread_.resize(stride * static_cast<std::size_t>(header_.planes));
        for (std::size_t p = 0; p < static_cast<std::size_t>(header_.planes); ++p)
            std::copy_n(stored_.begin() + static_cast<std::ptrdiff_t>(p * header_.lineBytes),
                        header_.lineBytes,
                        spread_.begin() + static_cast<std::ptrdiff_t>(p * stride));
        return spread_.data();
    }

  private:
    const PcxHeader& header_;
    std::uint64_t start_;
    std::vector<std::uint8_t> stored_, spread_;
    std::optional<PcxRuns::Reader> reader_;
};

// The pixels in a plane's byte, one in each byte of the number, the left one lowest.
using PixelsOfByte = std::array<std::uint64_t, 256>;

PixelsOfByte pixelsOfByte(int bits) {
    PixelsOfByte table{};
    for (unsigned byte = 0; byte < table.size(); ++byte)
        for (int i = 0; i < 8 / bits; ++i)
            table[byte] |= std::uint64_t{byte >> (8 - bits * (i + 1)) & ((1u << bits) - 1)}
                           << 8 * i;
    return table;
}

void joinIndices(const PcxHeader& header, const PixelsOfByte& pixels, const std::uint8_t* line,
                 std::uint8_t* row) {
    const std::size_t stride = planeStride(header);
    const int inByte = 8 / header.bits;
    for (int x = 0; x < header.width; x += inByte, ++line) {
        std::uint64_t indices = 0;
        for (int p = 0; p < header.planes; ++p)
            indices |= pixels[line[stride * std::size_t(p)]] << p * header.bits;
        for (int i = 0; i < std::min(inByte, header.width - x); ++i)
            row[x + i] = static_cast<std::uint8_t>(indices >> 8 * i);
    }
}

void joinColors(const PcxHeader& header, const std::uint8_t* line, std::uint8_t* row) {
    std::array<cv::Mat, 4> planes;
    for (std::size_t p = 0; p < planes.size(); ++p)
        planes[p] = cv::Mat(1, header.width, CV_8UC1,
                            const_cast<std::uint8_t*>(line) + planeStride(header) * p);
    const auto count = static_cast<std::size_t>(header.planes);
    cv::Mat to(1, header.width, CV_8UC(header.planes), row);
    cv::merge(planes.data(), count, to);
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
    const std::size_t tail = bits > 4 && bits <= 8 ? tailAt(header, file) : 0;
    if (bits <= 8) header.palette = paletteOf(header, file, tail);
    header.type = typeOf(header);
    header.pixels = file.subspan(headerSize, (tail ? tail : file.size()) - headerSize);
    setResolution(header, fields);
    return header;
}

Raster readPcxPixels(const PcxHeader& header, Task& task, std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(header.type, header.width, header.height);
    if (hasPalette(header.type)) raster.setPalette(header.palette);
    const View view = raster.edit();
    std::optional<PcxRuns> runs;
    if (header.packed) {
        const Task::Stage first(task, 0, 0.3);
        runs.emplace(header.pixels, task);
    }
    if (planeStride(header) > header.lineBytes)
        warnings.push_back("The PCX file's lines are too short for its width.");
    const std::uint64_t size = runs ? runs->size() : header.pixels.size();
    const auto rows = static_cast<int>(std::min<std::uint64_t>(
        (size + rowSize(header) - 1) / rowSize(header), unsigned(header.height)));
    const bool plain = header.planes == 1 && (header.bits == 1 || header.bits == 8);
    const bool color = header.type == ImageType::Rgb24 || header.type == ImageType::Rgba32;
    const PixelsOfByte pixels = pixelsOfByte(header.bits);
    const Task::Stage second(task, 0.3, 1);
    parallelRows(rows, task, [&](int y0, int y1) {
        Lines lines(header, runs ? &*runs : nullptr, y0);
        for (int y = y0; y < y1; ++y) {
            const std::uint8_t* const line = lines.next();
            if (plain)
                std::memcpy(view.row(y), line, raster.rowBytes());
            else if (color)
                joinColors(header, line, view.row(y));
            else
                joinIndices(header, pixels, line, view.row(y));
        }
    });
    blackenMissingRows(view, raster.palette(), rows, true, "PCX", warnings);
    return raster;
}

} // namespace kvn::imaging
