#include "imaging/codecs/tiff_decode.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/blacken.h"
#include "imaging/codecs/tiff_samples.h"

namespace kvn::imaging {

TiffReaderPool::Lease::Lease(TiffReaderPool& pool, std::uint64_t directory) : pool_(pool) {
    {
        const std::lock_guard lock(pool.mutex_);
        if (!pool.idle_.empty()) {
            kept_ = std::move(pool.idle_.back());
            pool.idle_.pop_back();
        }
    }
    if (!kept_.reader) kept_.reader = std::make_unique<TiffReader>(pool.file_);
    if (kept_.directory == directory) return;
    kept_.directory = 0;
    kept_.reader->select(directory);
    prepareTiffDecoder(*kept_.reader);
    kept_.directory = directory;
}

TiffReaderPool::Lease::~Lease() {
    if (!kept_.reader) return;
    const std::lock_guard lock(pool_.mutex_);
    pool_.idle_.push_back(std::move(kept_));
}

namespace {

using Memory = std::unique_ptr<std::uint8_t[]>;

// A strip or tile in the picture.
struct Chunk {
    std::uint32_t index; // in the first plane
    Rect rect;           // cut to the picture
};

class PageDecoder {
  public:
    PageDecoder(TiffReaderPool& pool, std::uint64_t directory, const TiffLayout& layout,
                Raster& raster)
        : pool_(pool), directory_(directory), layout_(layout), palette_(layout.palette),
          view_(raster.edit()) {}

    bool decode(Task& task) {
        const std::int64_t chunks =
            std::int64_t{layout_.chunksAcross()} * std::int64_t{layout_.chunksDown()};
        if (chunks > (1 << 30) / layout_.planes())
            throw RuntimeError(errors::invalidPicture, "The TIFF file has too many tiles.",
                               "Import");
        const int count = static_cast<int>(chunks);
        if (isPlainStrips()) {
            parallelRows(layout_.height, task, [this](int y0, int y1) { copyRows(y0, y1); });
        } else {
            // Another handle is not worth its while for a few kilobytes.
            constexpr std::size_t fewBytes = 128 << 10;
            const auto least = static_cast<int>(
                std::min<std::size_t>(fewBytes / layout_.chunkBytes + 1, std::size_t(count)));
            parallelRows(
                count, task, [this](int c0, int c1) { decodeChunks(c0, c1); }, least);
        }
        return complete_;
    }

  private:
    // Strips without compression are read where they lie.
    bool isPlainStrips() const {
        const TiffReaderPool::Lease reader(pool_, directory_);
        const int bits = layout_.bits;
        const bool swapped = TIFFIsByteSwapped(reader->get()) != 0 && bits > 8 && bits % 8 == 0;
        return layout_.compression == COMPRESSION_NONE && !layout_.tiled && !layout_.bitsReversed &&
               !swapped;
    }

    // The row in one plane, null if it is missing.
    const std::uint8_t* storedRow(TIFF* tiff, int y, int plane) const {
        const auto strip =
            static_cast<std::uint32_t>(y / layout_.chunkHeight + plane * layout_.chunksDown());
        const std::uint64_t start = TIFFGetStrileOffset(tiff, strip);
        const std::uint64_t size = TIFFGetStrileByteCount(tiff, strip);
        const std::uint64_t at =
            static_cast<std::uint64_t>(y % layout_.chunkHeight) * layout_.chunkRowBytes;
        const std::uint64_t fileSize = pool_.file().size();
        if (start == 0 || at > size || layout_.chunkRowBytes > size - at) return nullptr;
        if (start > fileSize || at > fileSize - start) return nullptr;
        if (layout_.chunkRowBytes > fileSize - start - at) return nullptr;
        return pool_.file().data() + start + at;
    }

    void copyRows(int y0, int y1) {
        const TiffReaderPool::Lease reader(pool_, directory_);
        TiffRowConverter converter(layout_);
        std::vector<const std::uint8_t*> planes(static_cast<std::size_t>(layout_.planes()));
        for (int y = y0; y < y1; ++y) {
            for (std::size_t p = 0; p < planes.size(); ++p)
                planes[p] = storedRow(reader->get(), y, static_cast<int>(p));
            if (std::ranges::find(planes, nullptr) == planes.end())
                converter.convert(planes.data(), layout_.width, view_.row(y));
            else
                miss({0, y, layout_.width, 1});
        }
    }

    Chunk chunkAt(int index) const {
        const int across = layout_.chunksAcross();
        const int x = index % across * layout_.chunkWidth;
        const int y = index / across * layout_.chunkHeight;
        return {static_cast<std::uint32_t>(index),
                {x, y, std::min(layout_.chunkWidth, layout_.width - x),
                 std::min(layout_.chunkHeight, layout_.height - y)}};
    }

    void decodeChunks(int c0, int c1) {
        const TiffReaderPool::Lease reader(pool_, directory_);
        TiffRowConverter converter(layout_);
        if (converter.copies() && !layout_.tiled &&
            layout_.chunkRowBytes == rowBytes(layout_.type, layout_.width)) {
            for (int c = c0; c < c1; ++c)
                decodeInPlace(reader->get(), chunkAt(c));
            return;
        }
        std::vector<Memory> memory;
        for (int p = 0; p < layout_.planes(); ++p)
            memory.emplace_back(new std::uint8_t[layout_.chunkBytes]);
        for (int c = c0; c < c1; ++c)
            decodeChunk(*reader, chunkAt(c), memory, converter);
    }

    // A strip whose rows need no conversion goes to where it belongs at once; then its rows, from
    // the last one on, move apart to where the raster has them.
    void decodeInPlace(TIFF* tiff, const Chunk& chunk) {
        const Rect& rect = chunk.rect;
        std::uint8_t* packed = view_.row(rect.y);
        const int rows = readStrip(tiff, chunk.index, 0, rect, packed);
        for (int i = rows - 1; i > 0; --i)
            std::memmove(view_.row(rect.y + i),
                         packed + layout_.chunkRowBytes * static_cast<std::size_t>(i),
                         layout_.chunkRowBytes);
        if (rows < rect.height) miss({0, rect.y + rows, rect.width, rect.height - rows});
    }

    void decodeChunk(const TiffReader& reader, const Chunk& chunk,
                     const std::vector<Memory>& memory, TiffRowConverter& converter) {
        const auto perPlane =
            static_cast<std::uint32_t>(layout_.chunksAcross() * layout_.chunksDown());
        int rows = chunk.rect.height;
        std::vector<const std::uint8_t*> planes;
        for (std::uint32_t p = 0; p < memory.size(); ++p) {
            const std::uint32_t index = chunk.index + p * perPlane;
            rows = std::min(rows, layout_.tiled ? readTile(reader.get(), index, memory[p].get())
                                                : readStrip(reader.get(), index, p, chunk.rect,
                                                            memory[p].get()));
            planes.push_back(memory[p].get());
        }
        const std::size_t start = rowBytes(layout_.type, chunk.rect.x);
        for (int i = 0; i < rows; ++i) {
            converter.convert(planes.data(), chunk.rect.width, view_.row(chunk.rect.y + i) + start);
            for (const std::uint8_t*& plane : planes)
                plane += layout_.chunkRowBytes;
        }
        if (rows < chunk.rect.height)
            miss({chunk.rect.x, chunk.rect.y + rows, chunk.rect.width, chunk.rect.height - rows});
    }

    // Some of the library's decoders call a strip whole that they have not filled: fax where the
    // file's fields contradict each other, Deflate where its last block is too long.
    void clearUnlessFilled(std::uint8_t* to, std::size_t size) const {
        if (layout_.compression != COMPRESSION_NONE && layout_.compression != COMPRESSION_LZW &&
            layout_.compression != COMPRESSION_PACKBITS)
            std::memset(to, 0, size);
    }

    int wholeRows(tmsize_t bytes) const {
        return bytes <= 0
                   ? 0
                   : static_cast<int>(static_cast<std::size_t>(bytes) / layout_.chunkRowBytes);
    }

    int readTile(TIFF* tiff, std::uint32_t index, std::uint8_t* to) const {
        clearUnlessFilled(to, layout_.chunkBytes);
        return wholeRows(
            TIFFReadEncodedTile(tiff, index, to, static_cast<tmsize_t>(layout_.chunkBytes)));
    }

    // Row by row where the strip as a whole is damaged: those before the damage are whole.
    int readStrip(TIFF* tiff, std::uint32_t index, std::uint32_t plane, const Rect& rect,
                  std::uint8_t* to) const {
        if (TIFFGetStrileByteCount(tiff, index) == 0) return 0;
        const std::size_t size = layout_.chunkRowBytes * static_cast<std::size_t>(rect.height);
        clearUnlessFilled(to, size);
        const int rows =
            wholeRows(TIFFReadEncodedStrip(tiff, index, to, static_cast<tmsize_t>(size)));
        if (rows > 0) return rows;
        const auto readRow = [&](int y) {
            return TIFFReadScanline(tiff, to, static_cast<std::uint32_t>(rect.y + y),
                                    static_cast<std::uint16_t>(plane)) >= 0;
        };
        // The decoder stands somewhere in the strip. It starts anew only when it has to go back
        // by a row, so that the first one is asked for twice.
        readRow(0);
        int y = 0;
        for (; y < rect.height && readRow(y); ++y)
            to += layout_.chunkRowBytes;
        return y;
    }

    void miss(const Rect& rect) {
        complete_ = false;
        blacken(view_, palette_, rect);
    }

    TiffReaderPool& pool_;
    std::uint64_t directory_;
    const TiffLayout& layout_;
    const Palette& palette_;
    View view_;
    std::atomic<bool> complete_{true};
};

struct Free {
    void operator()(std::uint32_t* memory) const { std::free(memory); }
};

// What only the library can convert comes as 8-bit RGB; what it cannot decode stays black.
Raster decodeByLibrary(const TiffReader& reader, const TiffLayout& layout, bool& complete) {
    const auto width = static_cast<std::uint32_t>(layout.width);
    const auto height = static_cast<std::uint32_t>(layout.height);
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(reader.get(), reason))
        throw RuntimeError(errors::invalidPicture,
                           std::string("The TIFF file's colours cannot be read (") + reason + ").",
                           "Import");
    const std::unique_ptr<std::uint32_t, Free> pixels(static_cast<std::uint32_t*>(
        std::calloc(std::size_t{width} * height, sizeof(std::uint32_t))));
    if (!pixels) throw std::bad_alloc();
    // Asking for the orientation that the file has leaves the rows as they are stored.
    complete = TIFFReadRGBAImageOriented(reader.get(), width, height, pixels.get(),
                                         layout.orientation, 0) != 0 &&
               reader.error().empty();
    Raster raster = Raster::uninitialized(layout.type, layout.width, layout.height);
    const View view = raster.edit();
    const std::uint32_t* from = pixels.get();
    for (int y = 0; y < view.height; ++y) {
        std::uint8_t* to = view.row(y);
        for (int x = 0; x < view.width; ++x, ++from, to += 3) {
            to[0] = static_cast<std::uint8_t>(TIFFGetR(*from));
            to[1] = static_cast<std::uint8_t>(TIFFGetG(*from));
            to[2] = static_cast<std::uint8_t>(TIFFGetB(*from));
        }
    }
    return raster;
}

} // namespace

Raster decodeTiffPage(TiffReaderPool& pool, std::uint64_t directory, const TiffLayout& layout,
                      Task& task, bool& complete) {
    if (layout.color == TiffColor::Library) {
        const TiffReaderPool::Lease reader(pool, directory);
        return decodeByLibrary(*reader, layout, complete);
    }
    Raster raster = Raster::uninitialized(layout.type, layout.width, layout.height);
    if (hasPalette(layout.type)) raster.setPalette(layout.palette);
    complete = PageDecoder(pool, directory, layout, raster).decode(task);
    return raster;
}

} // namespace kvn::imaging
