// WBMP, type 0: one bit a pixel, black and white, without compression.

#include <algorithm>
#include <array>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/plausible.h"
#include "imaging/convert.h"

namespace kvn::imaging {

namespace {

struct Header {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::span<const std::uint8_t> pixels;
    bool isValid = false;
};

// Numbers stand in groups of seven bits, highest first; all bytes but the last have the top bit.
// 0, which no side can be, for a number that is cut off or above 31 bits.
std::int64_t nextNumber(std::span<const std::uint8_t>& bytes) {
    std::int64_t value = 0;
    while (!bytes.empty()) {
        const std::uint8_t byte = bytes.front();
        bytes = bytes.subspan(1);
        value = value << 7 | (byte & 0x7f);
        if (value > 0x7fffffff) return 0;
        if (byte < 0x80) return value;
    }
    return 0;
}

std::uint64_t rowBytesOf(const Header& header) {
    return (static_cast<std::uint64_t>(header.width) + 7) / 8;
}

Header readHeader(std::span<const std::uint8_t> file) {
    Header header;
    if (file.size() < 4 || file[0] != 0 || file[1] != 0) return header;
    header.pixels = file.subspan(2);
    header.width = nextNumber(header.pixels);
    header.height = nextNumber(header.pixels);
    header.isValid = header.width > 0 && header.height > 0;
    return header;
}

Header requireHeader(std::span<const std::uint8_t> file) {
    const Header header = readHeader(file);
    if (!header.isValid)
        throw RuntimeError(errors::invalidPicture, "The WBMP file has no valid header.", "Import");
    return header;
}

Raster readPixels(const Header& header, std::vector<std::string>& warnings) {
    Raster raster = Raster::uninitialized(ImageType::Bit1, static_cast<int>(header.width),
                                          static_cast<int>(header.height));
    raster.setPalette(Palette::blackAndWhite());
    const View view = raster.edit();
    const std::size_t stride = raster.rowBytes();
    const auto rows = static_cast<int>(
        std::min<std::uint64_t>(header.pixels.size() / stride, std::uint64_t(view.height)));
    for (int y = 0; y < rows; ++y)
        std::memcpy(view.row(y), header.pixels.data() + stride * static_cast<std::size_t>(y),
                    stride);
    blackenMissingRows(view, raster.palette(), rows, true, "WBMP", warnings);
    return raster;
}

void putNumber(Bytes& out, std::uint32_t value) {
    int shift = 28;
    while (shift > 0 && value >> shift == 0)
        shift -= 7;
    for (; shift >= 0; shift -= 7)
        out.push_back(
            static_cast<std::uint8_t>((value >> shift & 0x7f) | (shift > 0 ? 0x80u : 0u)));
}

// 1 is white in the file: the lighter of the two colours.
bool isOneDarker(const Palette& palette) {
    const Rgba zero = palette[0], one = palette[1];
    return luma(one.r, one.g, one.b) < luma(zero.r, zero.g, zero.b);
}

void writeRows(const Raster& raster, ByteSink& sink) {
    const ConstView view = raster.view();
    const std::uint8_t flip = isOneDarker(raster.palette()) ? 0xff : 0;
    Bytes line(raster.rowBytes());
    for (int y = 0; y < view.height; ++y) {
        std::transform(
            view.row(y), view.row(y) + line.size(), line.begin(),
            [flip](std::uint8_t bits) { return static_cast<std::uint8_t>(bits ^ flip); });
        if (view.width % 8 != 0) line.back() &= static_cast<std::uint8_t>(0xff00 >> view.width % 8);
        sink.write(line.data(), line.size());
    }
}

class WbmpCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Wbmp; }
    std::string_view name() const override { return "WBMP"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 2> list{"wbmp", "wbm"};
        return list;
    }
    // The format has no signature: two zeros and two sides that fit the file's size, which may
    // have little more than the pixels.
    bool recognises(std::span<const std::uint8_t> file) const override {
        constexpr std::uint64_t mostBehind = 256;
        const Header header = readHeader(file);
        if (!header.isValid) return false;
        const std::uint64_t rows = static_cast<std::uint64_t>(header.height);
        if (rowBytesOf(header) > header.pixels.size() / rows) return false;
        return header.pixels.size() - rowBytesOf(header) * rows <= mostBehind;
    }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task&) const override {
        const Header header = requireHeader(file);
        limits.take(header.width, header.height, ImageType::Bit1);
        requirePlausible(header.width, header.height, ImageType::Bit1, header.pixels.size());
        Picture picture;
        picture.type = FileType::Wbmp;
        Page page;
        page.raster = readPixels(header, picture.warnings);
        picture.pages.push_back(std::move(page));
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        const Header header = requireHeader(file);
        limits.take(header.width, header.height, ImageType::Bit1);
        return {
            {static_cast<int>(header.width), static_cast<int>(header.height), ImageType::Bit1, 1}};
    }

    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        const Raster raster = convertType(onlyPage(pages, "WBMP").raster, ImageType::Bit1, task);
        Bytes head{0, 0};
        putNumber(head, static_cast<std::uint32_t>(raster.width()));
        putNumber(head, static_cast<std::uint32_t>(raster.height()));
        sink.write(head.data(), head.size());
        writeRows(raster, sink);
    }
};

} // namespace

const Codec& wbmpCodec() {
    static const WbmpCodec codec;
    return codec;
}

} // namespace kvn::imaging
