// PCX: planes and packed pixels of 1 to 32 bits are read; 1-bit, 8-bit and 24-bit are written.

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "imaging/codecs/all.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/pcx_read.h"
#include "imaging/codecs/plausible.h"
#include "imaging/convert.h"

namespace kvn::imaging {

namespace {

constexpr int longestSide = 65535;

// The palette with the darker colour first, since many readers take bitmaps as black and white.
Raster darkFirst(const Raster& bitmap) {
    const Rgba zero = bitmap.palette()[0], one = bitmap.palette()[1];
    if (luma(zero.r, zero.g, zero.b) <= luma(one.r, one.g, one.b)) return bitmap;
    Raster turned = bitmap;
    const View view = turned.edit();
    for (int y = 0; y < view.height; ++y)
        for (std::uint8_t *at = view.row(y), *end = at + turned.rowBytes(); at != end; ++at)
            *at = static_cast<std::uint8_t>(~*at);
    turned.setPalette(Palette({one, zero}));
    return turned;
}

Raster closestForm(const Raster& raster, Task& task) {
    switch (raster.type()) {
    case ImageType::Bit1:
        return darkFirst(raster);
    case ImageType::Indexed8Alpha:
        return convertType(raster, ImageType::Indexed8, task);
    case ImageType::GrayAlpha16:
        return convertType(raster, ImageType::Gray8, task);
    case ImageType::Rgba32:
        return convertType(raster, ImageType::Rgb24, task);
    default:
        return raster;
    }
}

std::uint64_t dpiField(double dpi) {
    return static_cast<std::uint64_t>(std::clamp(std::round(dpi), 0.0, 65535.0));
}

Bytes header(const Raster& raster, std::size_t lineBytes, const Metadata& meta) {
    const bool color = raster.type() == ImageType::Rgb24;
    const bool gray = raster.type() == ImageType::Gray8;
    Bytes out{10, 5, 1};
    out.push_back(raster.type() == ImageType::Bit1 ? 1 : 8);
    putLittle(out, 0, 4);
    putLittle(out, static_cast<std::uint64_t>(raster.width() - 1), 2);
    putLittle(out, static_cast<std::uint64_t>(raster.height() - 1), 2);
    putLittle(out, dpiField(meta.xDpi), 2);
    putLittle(out, dpiField(meta.yDpi), 2);
    const Palette palette = gray ? Palette::grayRamp() : raster.palette();
    for (std::size_t i = 0; i < 16; ++i) {
        const Rgba color16 = palette[i];
        out.insert(out.end(), {color16.r, color16.g, color16.b});
    }
    out.push_back(0);
    out.push_back(color ? 3 : 1);
    putLittle(out, lineBytes, 2);
    putLittle(out, gray ? 2 : 1, 2);
    out.resize(128);
    return out;
}

void packLine(std::span<const std::uint8_t> line, Bytes& out) {
    constexpr std::size_t longestRun = 63;
    constexpr std::uint8_t runMark = 0xc0;
    for (std::size_t at = 0, run = 1; at < line.size(); at += run) {
        for (run = 1; run < longestRun && at + run < line.size();)
            if (line[at + run] == line[at])
                ++run;
            else
                break;
        if (run > 1 || line[at] >= runMark) out.push_back(static_cast<std::uint8_t>(runMark | run));
        out.push_back(line[at]);
    }
}

// One row, plane after plane.
void packRow(const Raster& raster, const std::uint8_t* row, std::span<std::uint8_t> line,
             Bytes& out) {
    const int width = raster.width();
    if (raster.type() == ImageType::Rgb24) {
        for (int p = 0; p < 3; ++p) {
            for (int x = 0; x < width; ++x)
                line[static_cast<std::size_t>(x)] = row[3 * std::ptrdiff_t{x} + p];
            packLine(line, out);
        }
        return;
    }
    const std::size_t payload = raster.rowBytes();
    std::copy_n(row, payload, line.begin());
    if (raster.type() == ImageType::Bit1 && width % 8 != 0)
        line[payload - 1] &= static_cast<std::uint8_t>(0xff00 >> width % 8);
    packLine(line, out);
}

void writeRows(const Raster& raster, std::size_t lineBytes, ByteSink& sink, Task& task) {
    const ConstView view = raster.view();
    std::vector<Bytes> rows(static_cast<std::size_t>(view.height));
    parallelRows(view.height, task, [&](int y0, int y1) {
        Bytes line(lineBytes);
        for (int y = y0; y < y1; ++y)
            packRow(raster, view.row(y), line, rows[static_cast<std::size_t>(y)]);
    });
    for (const Bytes& row : rows)
        sink.write(row.data(), row.size());
}

void writePalette(const Raster& raster, ByteSink& sink) {
    const Palette palette =
        raster.type() == ImageType::Gray8 ? Palette::grayRamp() : raster.palette();
    Bytes out{12};
    for (std::size_t i = 0; i < Palette::maxSize; ++i) {
        const Rgba color = palette[i];
        out.insert(out.end(), {color.r, color.g, color.b});
    }
    sink.write(out.data(), out.size());
}

class PcxCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Pcx; }
    std::string_view name() const override { return "PCX"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 1> list{"pcx"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isPcx(file); }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        const PcxHeader header = readPcxHeader(file);
        limits.take(header.width, header.height, header.type);
        requirePlausible(header.width, header.height, header.type, header.pixels.size());
        Picture picture;
        picture.type = FileType::Pcx;
        Metadata meta;
        meta.xDpi = header.xDpi;
        meta.yDpi = header.yDpi;
        Page page;
        page.raster = readPcxPixels(header, task, picture.warnings);
        page.metadata = std::make_shared<const Metadata>(std::move(meta));
        picture.pages.push_back(std::move(page));
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        const PcxHeader header = readPcxHeader(file);
        limits.take(header.width, header.height, header.type);
        return {{header.width, header.height, header.type, header.bits * header.planes}};
    }

    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        const Page& page = onlyPage(pages, "PCX");
        requireSides(page.raster, longestSide, "PCX");
        const Raster raster = closestForm(page.raster, task);
        const bool bits = raster.type() == ImageType::Bit1;
        // Lines are even, but for the widest one, whose length the field could not hold then.
        const std::size_t payload = bits ? raster.rowBytes() : std::size_t(raster.width());
        const std::size_t lineBytes = std::min<std::size_t>(payload + payload % 2, 65535);
        const Bytes head = header(raster, lineBytes, page.metadata ? *page.metadata : Metadata{});
        sink.write(head.data(), head.size());
        writeRows(raster, lineBytes, sink, task);
        if (!bits && raster.type() != ImageType::Rgb24) writePalette(raster, sink);
    }
};

} // namespace

const Codec& pcxCodec() {
    static const PcxCodec codec;
    return codec;
}

} // namespace kvn::imaging
