#include "imaging/codecs/metafile/writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include <opencv2/imgproc.hpp>

#include "basic/error.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/convert.h"

namespace kvn::imaging::metafile {

namespace {

constexpr std::uint32_t bitmapHeader = 40;
constexpr std::uint32_t copySource = 0x00cc0020;
constexpr std::uint32_t blendWithAlpha = 0x01ff0000; // source over, its own alpha, full strength
constexpr double usualDpi = 96;

double dpiOr96(double dpi) {
    return dpi > 0 && dpi < 1e6 ? dpi : usualDpi;
}

// The bitmap as it stands in a record: header, palette, rows from the bottom up in whole words.
struct BitmapForm {
    Raster raster;
    int bits = 24;
    std::vector<Rgba> palette;
    std::uint64_t stride = 0;

    std::uint64_t headSize() const { return bitmapHeader + 4 * std::uint64_t{palette.size()}; }
    std::uint64_t pixelSize() const { return stride * static_cast<unsigned>(raster.height()); }
};

BitmapForm formOf(const Raster& source, bool alpha, Task& task) {
    BitmapForm form;
    form.raster = source;
    if (hasAlpha(source.type()))
        form.raster = convertType(source, alpha ? ImageType::Rgba32 : ImageType::Rgb24, task);
    const ImageType type = form.raster.type();
    form.bits = bitsPerPixel(type);
    if (type == ImageType::Gray8) form.palette = Palette::grayRamp().colors();
    if (hasPalette(type)) form.palette = form.raster.palette().colors();
    if (type == ImageType::Bit1) form.palette.resize(2);
    // No entry would mean the full number of them.
    if (form.bits <= 8 && form.palette.empty()) form.palette.resize(1);
    form.stride = (std::uint64_t(form.raster.width()) * std::uint64_t(form.bits) + 31) / 32 * 4;
    return form;
}

void putHead(Bytes& out, const BitmapForm& form) {
    putLittle(out, bitmapHeader, 4);
    putLittle(out, static_cast<std::uint32_t>(form.raster.width()), 4);
    putLittle(out, static_cast<std::uint32_t>(form.raster.height()), 4);
    putLittle(out, 1, 2);
    putLittle(out, static_cast<std::uint32_t>(form.bits), 2);
    putLittle(out, 0, 4);
    putLittle(out, form.pixelSize(), 4);
    putLittle(out, 0, 8);
    putLittle(out, form.palette.size(), 4);
    putLittle(out, 0, 4);
    for (const Rgba& color : form.palette)
        putLittle(out, color.b | color.g << 8 | std::uint32_t{color.r} << 16, 4);
}

void packRow(const std::uint8_t* from, std::uint8_t* to, int width, int bits) {
    if (bits == 24) {
        const cv::Mat in(1, width, CV_8UC3, const_cast<std::uint8_t*>(from));
        cv::Mat out(1, width, CV_8UC3, to);
        cv::cvtColor(in, out, cv::COLOR_RGB2BGR);
    } else if (bits == 32) {
        for (int x = 0; x < width; ++x, from += 4, to += 4) {
            for (int c = 0; c < 3; ++c)
                to[2 - c] = mul255(from[c], from[3]);
            to[3] = from[3];
        }
    } else {
        const std::size_t size = (std::size_t(width) * std::size_t(bits) + 7) / 8;
        std::memcpy(to, from, size);
        if (bits == 1 && width % 8 != 0)
            to[size - 1] &= static_cast<std::uint8_t>(0xff00 >> width % 8);
    }
}

// Some megabytes at a time.
void writeRows(const BitmapForm& form, ByteSink& sink, Task& task) {
    const ConstView view = form.raster.view();
    const auto stride = static_cast<std::size_t>(form.stride);
    constexpr std::size_t blockBytes = 4 << 20;
    const int most = static_cast<int>(
        std::clamp<std::size_t>(blockBytes / stride, 1, static_cast<std::size_t>(view.height)));
    Bytes block(stride * static_cast<std::size_t>(most));
    for (int y = 0; y < view.height; y += most) {
        const int rows = std::min(most, view.height - y);
        const Task::Stage stage(task, double(y) / view.height, double(y + rows) / view.height);
        parallelRows(rows, task, [&](int y0, int y1) {
            for (int i = y0; i < y1; ++i)
                packRow(view.row(view.height - 1 - y - i), &block[stride * std::size_t(i)],
                        view.width, form.bits);
        });
        sink.write(block.data(), stride * static_cast<std::size_t>(rows));
    }
}

void requireRoom(std::uint64_t bytes, std::string_view format) {
    if (bytes <= std::numeric_limits<std::uint32_t>::max()) return;
    throw RuntimeError(errors::invalidCall,
                       "The picture is too large for a " + std::string(format) + " file (4 GB).",
                       "Export");
}

// --- WMF -------------------------------------------------------------------------------------

// The last word makes the sum over all words, without carries, nothing.
void putPlaceable(Bytes& out, int width, int height, double dpi) {
    const std::size_t start = out.size();
    putLittle(out, 0x9ac6cdd7, 4);
    putLittle(out, 0, 6);
    putLittle(out, static_cast<unsigned>(width), 2);
    putLittle(out, static_cast<unsigned>(height), 2);
    putLittle(out, static_cast<unsigned>(std::clamp(std::lround(dpi), 1L, 65535L)), 2);
    putLittle(out, 0, 4);
    std::uint32_t sum = 0;
    const LittleFields fields(out);
    for (std::size_t at = start; at < out.size(); at += 2)
        sum ^= fields.u16(at);
    putLittle(out, sum, 2);
}

void putRecord(Bytes& out, std::uint32_t function, std::initializer_list<int> words) {
    putLittle(out, 3 + words.size(), 4);
    putLittle(out, function, 2);
    for (const int word : words)
        putLittle(out, static_cast<unsigned>(word), 2);
}

Bytes wmfRecords(const BitmapForm& form) {
    const int width = form.raster.width(), height = form.raster.height();
    Bytes out;
    putRecord(out, 0x103, {8}); // the axes scale as they must
    putRecord(out, 0x20b, {0, 0});
    putRecord(out, 0x20c, {height, width});
    putRecord(out, 0x107, {3}); // no blending of rows and columns
    const std::uint64_t words = 3 + 11 + (form.headSize() + form.pixelSize()) / 2;
    putLittle(out, words, 4);
    putLittle(out, 0xf43, 2);
    putLittle(out, copySource, 4);
    for (const int word : {0, height, width, 0, 0, height, width, 0, 0})
        putLittle(out, static_cast<unsigned>(word), 2);
    putHead(out, form);
    return out;
}

} // namespace

void writeWmf(const Page& page, bool placeable, ByteSink& sink, Task& task) {
    requireSides(page.raster, 32767, "WMF");
    const BitmapForm form = formOf(page.raster, false, task);
    const Bytes records = wmfRecords(form);
    constexpr std::uint64_t endSize = 6, headerSize = 18;
    const std::uint64_t total = headerSize + records.size() + form.pixelSize() + endSize;
    requireRoom(total, "WMF");
    const double dpi = page.metadata ? page.metadata->xDpi : 0;
    Bytes head;
    if (placeable) putPlaceable(head, page.raster.width(), page.raster.height(), dpiOr96(dpi));
    putLittle(head, 1, 2); // in memory or on disk: both are written as 1
    putLittle(head, headerSize / 2, 2);
    putLittle(head, 0x300, 2);
    putLittle(head, total / 2, 4);
    putLittle(head, 0, 2); // objects
    const std::uint64_t longest = 3 + 11 + (form.headSize() + form.pixelSize()) / 2;
    putLittle(head, longest, 4);
    putLittle(head, 0, 2);
    head.insert(head.end(), records.begin(), records.end());
    sink.write(head.data(), head.size());
    writeRows(form, sink, task);
    Bytes end;
    putRecord(end, 0, {});
    sink.write(end.data(), end.size());
}

// --- EMF -------------------------------------------------------------------------------------

namespace {

constexpr std::uint32_t emfHeaderSize = 108, stretchSize = 80, blendSize = 108, endSize = 20;

struct Extent {
    std::uint32_t pixels = 0;
    double dpi = usualDpi;
    // The device is so large that its size in whole millimetres tells the resolution exactly.
    std::uint32_t devicePixels() const {
        return static_cast<std::uint32_t>(std::clamp(std::round(dpi * 100), 1.0, 2e9));
    }
    std::uint32_t hundredths() const {
        return static_cast<std::uint32_t>(std::clamp(pixels / dpi * 2540, 1.0, 2e9) + 0.5);
    }
};
constexpr std::uint32_t deviceMillimetres = 2540, deviceMicrometres = deviceMillimetres * 1000;

void putEmfHeader(Bytes& out, const Extent& x, const Extent& y, std::uint64_t total,
                  std::uint32_t records) {
    putLittle(out, 1, 4);
    putLittle(out, emfHeaderSize, 4);
    putLittle(out, 0, 8);
    putLittle(out, x.pixels - 1, 4);
    putLittle(out, y.pixels - 1, 4);
    putLittle(out, 0, 8);
    putLittle(out, x.hundredths(), 4);
    putLittle(out, y.hundredths(), 4);
    putLittle(out, 0x464d4520, 4); // " EMF"
    putLittle(out, 0x10000, 4);
    putLittle(out, total, 4);
    putLittle(out, records, 4);
    putLittle(out, 1, 2);        // handles: the metafile's own
    out.resize(out.size() + 14); // no description, no palette
    putLittle(out, x.devicePixels(), 4);
    putLittle(out, y.devicePixels(), 4);
    putLittle(out, deviceMillimetres, 4);
    putLittle(out, deviceMillimetres, 4);
    out.resize(out.size() + 12); // no pixel format, no OpenGL
    putLittle(out, deviceMicrometres, 4);
    putLittle(out, deviceMicrometres, 4);
}

// The fields of both bitmap records up to the bitmap: where it goes is the whole picture.
void putStretch(Bytes& out, const BitmapForm& form, std::uint64_t size) {
    const auto width = static_cast<std::uint32_t>(form.raster.width());
    const auto height = static_cast<std::uint32_t>(form.raster.height());
    const auto head = static_cast<std::uint32_t>(form.headSize());
    const std::uint32_t fields[] = {81,
                                    static_cast<std::uint32_t>(size),
                                    0,
                                    0,
                                    width - 1,
                                    height - 1,
                                    0,
                                    0,
                                    0,
                                    0,
                                    width,
                                    height,
                                    stretchSize,
                                    head,
                                    stretchSize + head,
                                    static_cast<std::uint32_t>(form.pixelSize()),
                                    0,
                                    copySource,
                                    width,
                                    height};
    for (const std::uint32_t field : fields)
        putLittle(out, field, 4);
}

void putBlend(Bytes& out, const BitmapForm& form, std::uint64_t size) {
    const auto width = static_cast<std::uint32_t>(form.raster.width());
    const auto height = static_cast<std::uint32_t>(form.raster.height());
    const auto head = static_cast<std::uint32_t>(form.headSize());
    constexpr std::uint32_t one = 0x3f800000; // 1.0 of the map that the source goes through
    const std::uint32_t fields[] = {114,
                                    static_cast<std::uint32_t>(size),
                                    0,
                                    0,
                                    width - 1,
                                    height - 1,
                                    0,
                                    0,
                                    width,
                                    height,
                                    blendWithAlpha,
                                    0,
                                    0,
                                    one,
                                    0,
                                    0,
                                    one,
                                    0,
                                    0,
                                    0xffffff,
                                    0,
                                    blendSize,
                                    head,
                                    blendSize + head,
                                    static_cast<std::uint32_t>(form.pixelSize()),
                                    width,
                                    height};
    for (const std::uint32_t field : fields)
        putLittle(out, field, 4);
}

void putSimple(Bytes& out, std::uint32_t type, std::uint32_t value) {
    putLittle(out, type, 4);
    putLittle(out, 12, 4);
    putLittle(out, value, 4);
}

} // namespace

void writeEmf(const Page& page, ByteSink& sink, Task& task) {
    const BitmapForm form = formOf(page.raster, true, task);
    const bool alpha = form.bits == 32;
    const Metadata none;
    const Metadata& meta = page.metadata ? *page.metadata : none;
    const Extent x{static_cast<std::uint32_t>(page.raster.width()), dpiOr96(meta.xDpi)};
    const Extent y{static_cast<std::uint32_t>(page.raster.height()), dpiOr96(meta.yDpi)};
    const std::uint64_t bitmapSize =
        (alpha ? blendSize : stretchSize) + form.headSize() + form.pixelSize();
    constexpr std::uint32_t simpleSize = 12;
    const std::uint64_t total = emfHeaderSize + simpleSize + bitmapSize + endSize;
    requireRoom(total, "EMF");
    Bytes head;
    putEmfHeader(head, x, y, total, 4);
    putSimple(head, 21, 3); // no blending of rows and columns
    alpha ? putBlend(head, form, bitmapSize) : putStretch(head, form, bitmapSize);
    putHead(head, form);
    sink.write(head.data(), head.size());
    writeRows(form, sink, task);
    Bytes end;
    for (const std::uint32_t field : {14u, endSize, 0u, 0x10u, endSize})
        putLittle(end, field, 4);
    sink.write(end.data(), end.size());
}

} // namespace kvn::imaging::metafile
