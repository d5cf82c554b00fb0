#include "imaging/codecs/psd_write.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/codecs/fields.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/packbits.h"
#include "imaging/codecs/psd_file.h"
#include "imaging/codecs/psd_layer.h"
#include "imaging/convert.h"
#include "imaging/metadata/for_writing.h"

namespace kvn::imaging {

namespace {

constexpr int longestSide = 30000;

// The index of the palette's only clear colour if all others are opaque; otherwise nothing.
std::optional<std::size_t> clearIndex(const Palette& palette) {
    std::optional<std::size_t> index;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        if (palette[i].a == 255) continue;
        if (palette[i].a != 0 || index) return std::nullopt;
        index = i;
    }
    return index;
}

bool isBlackAndWhite(const Palette& palette) {
    const Rgba black{0, 0, 0, 255}, white{255, 255, 255, 255};
    return (palette[0] == black && palette[1] == white) ||
           (palette[0] == white && palette[1] == black);
}

Raster closestForm(const Raster& raster, Task& task) {
    const Palette& palette = raster.palette();
    if (raster.type() == ImageType::Bit1 && !isBlackAndWhite(palette))
        return convertType(raster, ImageType::Indexed8, task);
    if (raster.type() == ImageType::Indexed8Alpha && palette.hasTransparency() &&
        !clearIndex(palette))
        return convertType(raster, ImageType::Rgba32, task);
    return raster;
}

PsdMode modeOf(ImageType type) {
    switch (type) {
    case ImageType::Bit1:
        return PsdMode::Bitmap;
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return PsdMode::Indexed;
    case ImageType::Gray8:
    case ImageType::GrayAlpha16:
        return PsdMode::Gray;
    default:
        return PsdMode::Rgb;
    }
}

Bytes paletteData(const Palette& palette) {
    Bytes data(3 * Palette::maxSize);
    for (std::size_t i = 0; i < Palette::maxSize; ++i) {
        data[i] = palette[i].r;
        data[Palette::maxSize + i] = palette[i].g;
        data[2 * Palette::maxSize + i] = palette[i].b;
    }
    return data;
}

void putSection(Bytes& out, const Bytes& content) {
    putBig(out, content.size(), 4);
    out.insert(out.end(), content.begin(), content.end());
}

int channelsOf(ImageType type) {
    return std::max(1, bytesPerPixel(type));
}

// Everything before the layers.
Bytes head(const Raster& raster, const Metadata& meta) {
    const PsdMode mode = modeOf(raster.type());
    Bytes out{'8', 'B', 'P', 'S', 0, 1, 0, 0, 0, 0, 0, 0};
    putBig(out, static_cast<std::uint64_t>(channelsOf(raster.type())), 2);
    putBig(out, static_cast<std::uint64_t>(raster.height()), 4);
    putBig(out, static_cast<std::uint64_t>(raster.width()), 4);
    putBig(out, mode == PsdMode::Bitmap ? 1 : 8, 2);
    putBig(out, static_cast<std::uint64_t>(mode), 2);
    PsdResources more;
    Bytes colors;
    if (mode == PsdMode::Indexed) {
        colors = paletteData(raster.palette());
        more.colorCount = std::max<std::size_t>(1, raster.palette().size());
        more.transparentIndex = clearIndex(raster.palette());
    }
    putSection(out, colors);
    putSection(out, psdResourcesOf(meta, more));
    return out;
}

// A row of one channel; `onWhite` blends it with white by the last channel.
Bytes channelRow(const Raster& raster, const std::uint8_t* row, int channel, bool onWhite) {
    const auto step = static_cast<std::size_t>(channelsOf(raster.type()));
    const std::size_t size = step == 1 ? raster.rowBytes() : std::size_t(raster.width());
    Bytes line(size);
    const std::uint8_t* from = row + channel;
    for (std::size_t i = 0; i < size; ++i)
        line[i] = from[i * step];
    if (onWhite && static_cast<std::size_t>(channel) + 1 < step)
        for (std::size_t i = 0; i < size; ++i)
            line[i] =
                static_cast<std::uint8_t>(255 - mul255(255 - line[i], row[(i + 1) * step - 1]));
    if (raster.type() == ImageType::Bit1) {
        // 1 is black in the file.
        if (raster.palette()[1].r != 0)
            for (std::uint8_t& bits : line)
                bits = static_cast<std::uint8_t>(~bits);
        if (raster.width() % 8 != 0)
            line.back() &= static_cast<std::uint8_t>(0xff00 >> raster.width() % 8);
    }
    return line;
}

// All rows of one channel after another's.
std::vector<Bytes> packedRows(const Raster& raster, bool onWhite, Task& task) {
    const ConstView view = raster.view();
    const int channels = channelsOf(raster.type());
    const auto height = static_cast<std::size_t>(view.height);
    std::vector<Bytes> rows(height * static_cast<std::size_t>(channels));
    parallelRows(view.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            for (int c = 0; c < channels; ++c)
                appendPackedBits(
                    channelRow(raster, view.row(y), c, onWhite),
                    rows[static_cast<std::size_t>(c) * height + static_cast<std::size_t>(y)]);
    });
    return rows;
}

// The compression's number, the rows' lengths, the rows.
void writeRows(std::span<const Bytes> rows, ByteSink& sink) {
    Bytes table;
    putBig(table, 1, 2); // packed
    for (const Bytes& row : rows)
        putBig(table, row.size(), 2);
    sink.write(table.data(), table.size());
    for (const Bytes& row : rows)
        sink.write(row.data(), row.size());
}

void writeLayer(const Raster& raster, ByteSink& sink, Task& task) {
    const std::vector<Bytes> rows = packedRows(raster, false, task);
    const auto height = static_cast<std::size_t>(raster.height());
    std::vector<std::uint64_t> sizes;
    for (std::size_t first = 0; first < rows.size(); first += height) {
        sizes.push_back(2 + 2 * height);
        for (std::size_t i = first; i < first + height; ++i)
            sizes.back() += rows[i].size();
    }
    const PsdLayerFrame frame = psdLayerFrame(raster.width(), raster.height(), sizes);
    sink.write(frame.start.data(), frame.start.size());
    for (std::size_t first = 0; first < rows.size(); first += height)
        writeRows(std::span(rows).subspan(first, height), sink);
    sink.write(frame.end.data(), frame.end.size());
}

void writeNoLayers(ByteSink& sink) {
    const Bytes nothing(4);
    sink.write(nothing.data(), nothing.size());
}

} // namespace

void writePsd(const Page& page, ByteSink& sink, Task& task) {
    requireSides(page.raster, longestSide, "PSD");
    const Raster raster = closestForm(page.raster, task);
    const bool gray = modeOf(raster.type()) == PsdMode::Gray || raster.type() == ImageType::Bit1;
    const Metadata meta =
        page.metadata ? metadataForWriting(*page.metadata, raster, gray) : Metadata{};
    const Bytes start = head(raster, meta);
    sink.write(start.data(), start.size());
    const bool alpha = raster.type() == ImageType::Rgba32;
    if (alpha)
        writeLayer(raster, sink, task);
    else
        writeNoLayers(sink);
    writeRows(packedRows(raster, alpha, task), sink);
}

} // namespace kvn::imaging
