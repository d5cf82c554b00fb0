#include "imaging/codecs/bmp_write.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include <opencv2/imgproc.hpp>

#include "basic/error.h"
#include "imaging/codecs/bmp_rle.h"
#include "imaging/convert.h"

namespace kvn::imaging {

namespace {

constexpr std::size_t fileHeaderSize = 14, plainHeader = 40, alphaHeader = 108, profileHeader = 124;

// Little-endian fields in file order.
class Fields {
  public:
    void u16(std::uint32_t value) {
        bytes_.push_back(static_cast<std::uint8_t>(value));
        bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
    }
    void u32(std::uint64_t value) {
        u16(static_cast<std::uint32_t>(value & 0xffff));
        u16(static_cast<std::uint32_t>(value >> 16 & 0xffff));
    }
    void zeros(std::size_t count) { bytes_.insert(bytes_.end(), count, 0); }
    const Bytes& bytes() const { return bytes_; }

  private:
    Bytes bytes_;
};

struct Form {
    int bits = 24;
    bool packed = false;
    bool alpha = false;
    std::vector<Rgba> palette;
    std::size_t headerSize = plainHeader;
};

Form formOf(const Raster& raster, bool rle, bool profile) {
    Form form;
    form.alpha = raster.type() == ImageType::Rgba32;
    form.bits = bitsPerPixel(raster.type());
    if (form.bits <= 8) {
        const Palette ramp = Palette::grayRamp();
        form.palette =
            raster.type() == ImageType::Gray8 ? ramp.colors() : raster.palette().colors();
        // No entry would mean the full number of them.
        if (raster.type() == ImageType::Bit1) form.palette.resize(2);
        if (form.palette.empty()) form.palette.resize(1);
    }
    form.packed = rle && form.bits == 8;
    if (form.alpha) form.headerSize = alphaHeader;
    if (profile) form.headerSize = profileHeader;
    return form;
}

std::uint32_t perMetre(double dpi) {
    const double value = std::round(dpi / 0.0254);
    return value > 0 && value <= std::numeric_limits<std::int32_t>::max()
               ? static_cast<std::uint32_t>(value)
               : 0;
}

std::size_t fileRowBytes(int width, int bits) {
    return static_cast<std::size_t>((std::uint64_t(width) * std::uint64_t(bits) + 31) / 32 * 4);
}

[[noreturn]] void tooLarge() {
    throw RuntimeError(errors::invalidCall, "The picture is too large for a BMP file (4 GB).",
                       "Export");
}

// The two headers and the palette, for `dataSize` bytes of pixels.
Bytes headers(const Raster& raster, const Form& form, const Metadata& meta,
              std::uint64_t dataSize) {
    const std::uint64_t offset =
        fileHeaderSize + form.headerSize + 4 * std::uint64_t{form.palette.size()};
    const std::uint64_t total = offset + dataSize + meta.icc.size();
    if (total > std::numeric_limits<std::uint32_t>::max()) tooLarge();
    Fields out;
    out.u16('B' | 'M' << 8);
    out.u32(total);
    out.u32(0);
    out.u32(offset);
    out.u32(form.headerSize);
    out.u32(static_cast<std::uint32_t>(raster.width()));
    out.u32(static_cast<std::uint32_t>(raster.height()));
    out.u16(1);
    out.u16(static_cast<std::uint32_t>(form.bits));
    out.u32(form.packed ? 1 : form.alpha ? 3 : 0);
    out.u32(dataSize);
    out.u32(perMetre(meta.xDpi));
    out.u32(perMetre(meta.yDpi));
    out.u32(form.palette.size());
    out.u32(0);
    if (form.headerSize > plainHeader) {
        for (const std::uint32_t mask : {0xff0000u, 0xff00u, 0xffu, 0xff000000u})
            out.u32(form.alpha ? mask : 0);
        out.u32(form.headerSize == profileHeader ? 0x4d424544 : 0x73524742); // "MBED", "sRGB"
        out.zeros(48); // end points and gamma, which neither of the two uses
    }
    if (form.headerSize == profileHeader) {
        out.u32(4); // intent: photographic
        out.u32(offset - fileHeaderSize + dataSize);
        out.u32(meta.icc.size());
        out.u32(0);
    }
    for (const Rgba& color : form.palette)
        out.u32(color.b | color.g << 8 | std::uint32_t{color.r} << 16);
    return out.bytes();
}

void packRow(const std::uint8_t* from, std::uint8_t* to, int width, int bits) {
    if (bits == 24 || bits == 32) {
        const int type = bits == 24 ? CV_8UC3 : CV_8UC4;
        const cv::Mat source(1, width, type, const_cast<std::uint8_t*>(from));
        cv::Mat target(1, width, type, to);
        cv::cvtColor(source, target, bits == 24 ? cv::COLOR_RGB2BGR : cv::COLOR_RGBA2BGRA);
        return;
    }
    const std::size_t payload = (std::size_t(width) * std::size_t(bits) + 7) / 8;
    std::memcpy(to, from, payload);
    if (bits == 1 && width % 8 != 0)
        to[payload - 1] &= static_cast<std::uint8_t>(0xff00 >> width % 8);
}

// Rows from the bottom up, some megabytes at a time.
void writeRows(const Raster& raster, int bits, ByteSink& sink, Task& task) {
    const std::size_t stride = fileRowBytes(raster.width(), bits);
    const ConstView view = raster.view();
    constexpr std::size_t blockBytes = 4 << 20;
    const int blockRows = static_cast<int>(
        std::clamp<std::size_t>(blockBytes / stride, 1, static_cast<std::size_t>(view.height)));
    Bytes block(stride * static_cast<std::size_t>(blockRows));
    for (int y = 0; y < view.height; y += blockRows) {
        const int rows = std::min(blockRows, view.height - y);
        const Task::Stage stage(task, double(y) / view.height, double(y + rows) / view.height);
        parallelRows(rows, task, [&](int y0, int y1) {
            for (int i = y0; i < y1; ++i)
                packRow(view.row(view.height - 1 - y - i), &block[stride * std::size_t(i)],
                        view.width, bits);
        });
        sink.write(block.data(), stride * static_cast<std::size_t>(rows));
    }
}

Bytes packedRows(const Raster& raster, Task& task) {
    const ConstView view = raster.view();
    std::vector<Bytes> lines(static_cast<std::size_t>(view.height));
    parallelRows(view.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            packBmpLine({view.row(view.height - 1 - y), static_cast<std::size_t>(view.width)},
                        lines[static_cast<std::size_t>(y)]);
    });
    Bytes all;
    std::size_t total = 2;
    for (const Bytes& line : lines)
        total += line.size();
    all.reserve(total);
    for (const Bytes& line : lines)
        all.insert(all.end(), line.begin(), line.end());
    // The picture's end mark takes the place of the last line's.
    all.resize(all.size() - 2);
    all.insert(all.end(), {0, 1});
    return all;
}

} // namespace

void writeBmp(const Page& page, bool rle, ByteSink& sink, Task& task) {
    const Metadata none;
    const Metadata& meta = page.metadata ? *page.metadata : none;
    const bool widen = hasAlpha(page.raster.type());
    const Raster raster = widen ? convertType(page.raster, ImageType::Rgba32, task) : page.raster;
    const Form form = formOf(raster, rle, !meta.icc.empty());
    if (form.packed) {
        const Bytes data = packedRows(raster, task);
        const Bytes head = headers(raster, form, meta, data.size());
        sink.write(head.data(), head.size());
        sink.write(data.data(), data.size());
    } else {
        const std::uint64_t size =
            std::uint64_t{fileRowBytes(raster.width(), form.bits)} * std::uint64_t(raster.height());
        const Bytes head = headers(raster, form, meta, size);
        sink.write(head.data(), head.size());
        writeRows(raster, form.bits, sink, task);
    }
    if (!meta.icc.empty()) sink.write(meta.icc.data(), meta.icc.size());
}

} // namespace kvn::imaging
