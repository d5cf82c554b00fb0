#include "imaging/codecs/tga_write.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include <opencv2/imgproc.hpp>

#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/tga_format.h"
#include "imaging/convert.h"
#include "imaging/metadata/utf8.h"

namespace kvn::imaging {

namespace {

constexpr int longestSide = 65535;
constexpr std::size_t longestPacket = 128;

Raster closestForm(const Raster& raster, Task& task) {
    if (raster.type() == ImageType::Bit1) return convertType(raster, ImageType::Indexed8, task);
    if (hasAlpha(raster.type())) return convertType(raster, ImageType::Rgba32, task);
    return raster;
}

std::vector<Rgba> paletteOf(const Raster& raster) {
    if (!hasPalette(raster.type())) return {};
    std::vector<Rgba> colors = raster.palette().colors();
    if (colors.empty()) colors.resize(1);
    return colors;
}

Bytes header(const Raster& raster, bool packed) {
    const std::vector<Rgba> palette = paletteOf(raster);
    const int kind = !palette.empty() ? 1 : raster.type() == ImageType::Gray8 ? 3 : 2;
    Bytes out{0, palette.empty() ? std::uint8_t{0} : std::uint8_t{1}};
    out.push_back(static_cast<std::uint8_t>(packed ? kind + 8 : kind));
    putLittle(out, 0, 2);
    putLittle(out, palette.size(), 2);
    out.push_back(palette.empty() ? 0 : 24);
    putLittle(out, 0, 4);
    putLittle(out, static_cast<std::uint64_t>(raster.width()), 2);
    putLittle(out, static_cast<std::uint64_t>(raster.height()), 2);
    out.push_back(static_cast<std::uint8_t>(bitsPerPixel(raster.type())));
    constexpr std::uint8_t topFirst = 0x20, alphaBits = 8;
    out.push_back(raster.type() == ImageType::Rgba32 ? topFirst | alphaBits : topFirst);
    for (const Rgba& color : palette)
        out.insert(out.end(), {color.b, color.g, color.r});
    return out;
}

// The row as the file has it: blue first.
void fileRow(const Raster& raster, const std::uint8_t* from, std::uint8_t* to) {
    const int channels = bytesPerPixel(raster.type());
    if (channels == 1) {
        std::memcpy(to, from, raster.rowBytes());
        return;
    }
    const int type = channels == 3 ? CV_8UC3 : CV_8UC4;
    const cv::Mat source(1, raster.width(), type, const_cast<std::uint8_t*>(from));
    cv::Mat target(1, raster.width(), type, to);
    cv::cvtColor(source, target, channels == 3 ? cv::COLOR_RGB2BGR : cv::COLOR_RGBA2BGRA);
}

// Pixels that are equal to the first of them.
std::size_t runLength(const std::uint8_t* pixels, std::size_t most, std::size_t unit) {
    std::size_t n = 1;
    while (n < most && std::memcmp(pixels, pixels + n * unit, unit) == 0)
        ++n;
    return n;
}

// Packets end with the row, as the format asks for.
void packRow(std::span<const std::uint8_t> row, std::size_t unit, Bytes& out) {
    const std::size_t count = row.size() / unit;
    // A shorter run inside a literal costs more than it saves.
    const std::size_t worthRun = unit == 1 ? 3 : 2;
    const auto runAt = [&](std::size_t at) {
        return runLength(row.data() + at * unit, std::min(longestPacket, count - at), unit);
    };
    for (std::size_t at = 0; at < count;) {
        const std::size_t run = runAt(at);
        if (run >= worthRun) {
            out.push_back(static_cast<std::uint8_t>(0x80 | (run - 1)));
            out.insert(out.end(), row.data() + at * unit, row.data() + (at + 1) * unit);
            at += run;
            continue;
        }
        std::size_t end = at + 1;
        while (end < count && end - at < longestPacket && runAt(end) < worthRun)
            ++end;
        out.push_back(static_cast<std::uint8_t>(end - at - 1));
        out.insert(out.end(), row.data() + at * unit, row.data() + end * unit);
        at = end;
    }
}

// All rows as runs; nothing if that would not be smaller.
std::optional<std::vector<Bytes>> packedRows(const Raster& raster, Task& task) {
    const ConstView view = raster.view();
    const auto unit = static_cast<std::size_t>(bytesPerPixel(raster.type()));
    std::vector<Bytes> rows(static_cast<std::size_t>(view.height));
    parallelRows(view.height, task, [&](int y0, int y1) {
        Bytes line(raster.rowBytes());
        for (int y = y0; y < y1; ++y) {
            fileRow(raster, view.row(y), line.data());
            packRow(line, unit, rows[static_cast<std::size_t>(y)]);
        }
    });
    std::size_t total = 0;
    for (const Bytes& row : rows)
        total += row.size();
    if (total >= raster.rowBytes() * static_cast<std::size_t>(view.height)) return std::nullopt;
    return rows;
}

void writePlainRows(const Raster& raster, ByteSink& sink) {
    const ConstView view = raster.view();
    constexpr std::size_t blockBytes = 1 << 20;
    const std::size_t stride = raster.rowBytes();
    const int blockRows = static_cast<int>(std::max<std::size_t>(1, blockBytes / stride));
    Bytes block(stride * static_cast<std::size_t>(std::min(blockRows, view.height)));
    for (int y = 0; y < view.height; y += blockRows) {
        const int rows = std::min(blockRows, view.height - y);
        for (int i = 0; i < rows; ++i)
            fileRow(raster, view.row(y + i), &block[stride * static_cast<std::size_t>(i)]);
        sink.write(block.data(), stride * static_cast<std::size_t>(rows));
    }
}

// Lines end with a line feed, or go on in the next one when they are full. False if it does not
// fit.
bool putComment(const std::string& comment, Bytes& extension) {
    const std::optional<std::string> text = latin1FromUtf8(comment);
    if (!text) return false;
    std::size_t line = 0, column = 0;
    for (const char c : *text) {
        if (c == '\n' || column == tga::commentWidth) {
            // A line that is full and ends there is taken for one that goes on.
            if (c == '\n' && column == tga::commentWidth) return false;
            ++line;
            column = 0;
        }
        if (line == tga::commentLines || c == '\0') return false;
        if (c == '\n') continue;
        extension[tga::commentAt + line * (tga::commentWidth + 1) + column++] =
            static_cast<std::uint8_t>(c);
    }
    return true;
}

// The extension area and the footer, for a file of `position` bytes so far.
Bytes tail(const Raster& raster, const std::string& comment, std::uint64_t position) {
    Bytes out;
    putLittle(out, tga::extensionSize, 2);
    out.resize(tga::extensionSize);
    Bytes commented = out;
    if (putComment(comment, commented)) out = commented;
    constexpr std::uint8_t straight = 3;
    if (raster.type() == ImageType::Rgba32) out[tga::attributesAt] = straight;
    putLittle(out, position, 4);
    putLittle(out, 0, 4);
    out.insert(out.end(), tga::signature.begin(), tga::signature.end());
    return out;
}

} // namespace

void writeTga(const Page& page, ByteSink& sink, Task& task) {
    requireSides(page.raster, longestSide, "TGA");
    const Raster raster = closestForm(page.raster, task);
    const std::optional<std::vector<Bytes>> packed = packedRows(raster, task);
    const Bytes head = header(raster, packed.has_value());
    sink.write(head.data(), head.size());
    if (packed) {
        for (const Bytes& row : *packed)
            sink.write(row.data(), row.size());
    } else {
        writePlainRows(raster, sink);
    }
    constexpr std::uint64_t furthest = 0xffffffff; // that the footer can point to
    if (sink.position() > furthest) return;
    const Bytes end =
        tail(raster, page.metadata ? page.metadata->comment : std::string{}, sink.position());
    sink.write(end.data(), end.size());
}

} // namespace kvn::imaging
