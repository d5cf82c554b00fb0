#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/deflate.h"
#include "imaging/codecs/png_chunks.h"
#include "imaging/codecs/png_filter.h"
#include "imaging/metadata/for_writing.h"

namespace kvn::imaging {

namespace {

// How the type stands in the file. The row bytes are the raster's own.
struct Form {
    PngColor color = PngColor::Rgb;
    int depth = 8;
};

bool isBlackAndWhite(const Palette& palette) {
    return palette == Palette::blackAndWhite();
}

Form formFor(const Raster& raster) {
    switch (raster.type()) {
    case ImageType::Bit1:
        return {isBlackAndWhite(raster.palette()) ? PngColor::Gray : PngColor::Palette, 1};
    case ImageType::Indexed8:
    case ImageType::Indexed8Alpha:
        return {PngColor::Palette, 8};
    case ImageType::Gray8:
        return {PngColor::Gray, 8};
    case ImageType::GrayAlpha16:
        return {PngColor::GrayAlpha, 8};
    case ImageType::Rgb24:
        return {PngColor::Rgb, 8};
    default:
        return {PngColor::Rgba, 8};
    }
}

void append32(Bytes& to, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        to.push_back(static_cast<std::uint8_t>(value >> shift));
}

Bytes headerData(const Raster& raster, const Form& form) {
    Bytes data;
    append32(data, static_cast<std::uint32_t>(raster.width()));
    append32(data, static_cast<std::uint32_t>(raster.height()));
    data.insert(data.end(),
                {static_cast<std::uint8_t>(form.depth), static_cast<std::uint8_t>(form.color), 0, 0,
                 0}); // deflate, the five filters, not interlaced
    return data;
}

int largestIndex(const Raster& raster) {
    if (raster.type() == ImageType::Bit1) return 1;
    std::uint8_t largest = 0;
    const ConstView view = raster.view();
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            largest = std::max(largest, view.row(y)[x]);
    return largest;
}

// Pixels past the end of the palette are black here; readers refuse such files, so the palette
// grows to cover them.
void appendPalette(Bytes& to, const Raster& raster) {
    const Palette& palette = raster.palette();
    const std::size_t count =
        std::max(palette.size(), static_cast<std::size_t>(largestIndex(raster)) + 1);
    Bytes colors, alphas;
    std::size_t lastClear = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Rgba color = palette[i];
        colors.insert(colors.end(), {color.r, color.g, color.b});
        alphas.push_back(color.a);
        if (color.a != 255) lastClear = i;
    }
    appendPngChunk(to, "PLTE", colors);
    if (raster.type() != ImageType::Indexed8Alpha) return;
    // One entry at least: the chunk tells a reader that the palette has alpha.
    alphas.resize(lastClear + 1);
    appendPngChunk(to, "tRNS", alphas);
}

// Rows y0 to y1, each with its filter in front.
Bytes filteredRows(const Raster& raster, int y0, int y1) {
    const ConstView view = raster.view();
    const std::size_t size = raster.rowBytes();
    Bytes filtered((size + 1) * static_cast<std::size_t>(y1 - y0));
    std::uint8_t* to = filtered.data();
    // Neighbouring palette indexes say nothing about each other.
    const bool isPlain = hasPalette(raster.type());
    PngRowFilter filter(isPlain ? 0 : size,
                        static_cast<std::size_t>(std::max(1, bytesPerPixel(raster.type()))));
    for (int y = y0; y < y1; ++y, to += size + 1) {
        if (isPlain) {
            std::memcpy(to + 1, view.row(y), size);
        } else {
            filter.filter(view.row(y), y > 0 ? view.row(y - 1) : nullptr, to);
        }
    }
    return filtered;
}

struct Piece {
    Bytes packed;
    std::uint32_t adler = 1;
    std::uint64_t size = 0;
};

Piece makePiece(const Raster& raster, int y0, int y1) {
    const Bytes filtered = filteredRows(raster, y0, y1);
    Piece piece;
    piece.packed.reserve(filtered.size() / 2);
    appendDeflatePiece(filtered, piece.packed);
    piece.adler = adler32Of(filtered);
    piece.size = filtered.size();
    return piece;
}

// Chunks have room for 2 GB; a piece is larger only if a single row is.
void writeData(std::span<const std::uint8_t> data, ByteSink& sink) {
    constexpr std::size_t largest = std::size_t{1} << 30;
    for (std::size_t at = 0; at < data.size(); at += largest) {
        Bytes chunk;
        appendPngChunk(chunk, "IDAT", data.subspan(at, std::min(largest, data.size() - at)));
        sink.write(chunk.data(), chunk.size());
    }
}

// Filters and packs bands of rows on all cores, a group of them at a time, so that memory does
// not grow with the picture. One chunk a band.
void writePixels(const Raster& raster, ByteSink& sink, Task& task) {
    constexpr std::size_t smallest = std::size_t{256} << 10, largest = std::size_t{1} << 20;
    constexpr int pieces = 8, bandsAtOnce = 64;
    const std::size_t row = raster.rowBytes() + 1;
    const std::size_t band =
        std::clamp(row * static_cast<std::size_t>(raster.height()) / pieces, smallest, largest);
    const int rows = static_cast<int>(std::max<std::size_t>(1, band / row));
    const int groupRows =
        static_cast<int>(std::min<std::int64_t>(raster.height(), std::int64_t{rows} * bandsAtOnce));

    std::uint32_t adler = 1;
    for (int top = 0; top < raster.height(); top += groupRows) {
        const int bottom = static_cast<int>(
            std::min<std::int64_t>(raster.height(), std::int64_t{top} + groupRows));
        const Task::Stage stage(task, static_cast<double>(top) / raster.height(),
                                static_cast<double>(bottom) / raster.height());
        const int count = (bottom - top + rows - 1) / rows;
        std::vector<Piece> packed(static_cast<std::size_t>(count));
        parallelRows(
            count, task,
            [&](int from, int to) {
                for (int i = from; i < to; ++i) {
                    const int y0 = top + i * rows;
                    packed[static_cast<std::size_t>(i)] =
                        makePiece(raster, y0, std::min(y0 + rows, bottom));
                }
            },
            1);
        for (std::size_t i = 0; i < packed.size(); ++i) {
            Bytes& data = packed[i].packed;
            adler = adler32Joined(adler, packed[i].adler, packed[i].size);
            if (top == 0 && i == 0) {
                const Bytes head = zlibHead();
                data.insert(data.begin(), head.begin(), head.end());
            }
            if (bottom == raster.height() && i + 1 == packed.size()) {
                const Bytes tail = zlibTail(adler);
                data.insert(data.end(), tail.begin(), tail.end());
            }
            writeData(data, sink);
        }
    }
}

} // namespace

void writePng(const Page& page, ByteSink& sink, Task& task) {
    const Raster& raster = page.raster;
    const Form form = formFor(raster);
    const bool isGray = form.color == PngColor::Gray || form.color == PngColor::GrayAlpha;
    Bytes head(pngSignature.begin(), pngSignature.end());
    appendPngChunk(head, "IHDR", headerData(raster, form));
    if (page.metadata) appendPngMetadata(head, metadataForWriting(*page.metadata, raster, isGray));
    if (form.color == PngColor::Palette) appendPalette(head, raster);
    sink.write(head.data(), head.size());
    writePixels(raster, sink, task);
    Bytes end;
    appendPngChunk(end, "IEND", {});
    sink.write(end.data(), end.size());
}

} // namespace kvn::imaging
