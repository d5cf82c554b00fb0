#include "imaging/codecs/tiff_read.h"

#include <optional>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/plausible.h"
#include "imaging/codecs/tiff_decode.h"
#include "imaging/codecs/tiff_layout.h"
#include "imaging/codecs/tiff_metadata.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/metadata/orientation.h"

namespace kvn::imaging {

namespace {

// Schemes that can pack a blank picture without bound.
bool packsAnything(const TiffLayout& layout) {
    switch (layout.compression) {
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
    case COMPRESSION_LZMA:
    case COMPRESSION_ZSTD:
    case COMPRESSION_WEBP:
    case COMPRESSION_LERC:
        return true;
    default:
        return false;
    }
}

class TiffPages {
  public:
    TiffPages(std::span<const std::uint8_t> file, const ReadLimits& limits)
        : structure_(file), chain_(tiffChain(structure_, limits.maxPages)), pool_(file),
          limits_(limits) {
        if (chain_.directories.empty())
            throw RuntimeError(errors::invalidPicture,
                               chain_.trouble.empty() ? "The TIFF file holds no picture."
                                                      : chain_.trouble,
                               "Import");
    }

    std::size_t count() const { return chain_.directories.size(); }
    const std::string& trouble() const { return chain_.trouble; }

    // Checked against the limits, and taken off them.
    TiffLayout layout(std::size_t index) {
        const TiffReaderPool::Lease reader(pool_, chain_.directories[index]);
        const TiffLayout layout = readTiffLayout(*reader);
        limits_.take(layout.width, layout.height, layout.type, swapsSides(layout.orientation));
        if (!packsAnything(layout))
            requirePlausible(layout.width, layout.height, layout.type, pool_.file().size());
        return layout;
    }

    Page read(std::size_t index, Task& task, bool& complete) {
        const TiffLayout layout = this->layout(index);
        const std::uint64_t at = chain_.directories[index];
        const TiffDirectory directory = *structure_.directory(at);
        std::optional<Raster> raster;
        if (layout.compression == COMPRESSION_OJPEG) raster = oldJpeg(directory, layout, task);
        if (!raster) raster = decodeTiffPage(pool_, at, layout, task, complete);
        Page page;
        page.raster = turnedUpright(*raster, layout.orientation, task);
        page.metadata = tiffMetadata(structure_, directory, layout);
        page.name = tiffPageName(directory);
        return page;
    }

  private:
    // The first form of JPEG in TIFF was never clear, but most such files hold a whole JPEG file
    // inside, which is the surest way to the pixels. It begins where one of two fields says.
    std::optional<Raster> oldJpeg(const TiffDirectory& page, const TiffLayout& layout,
                                  Task& task) const {
        for (const std::uint16_t tag : {TIFFTAG_JPEGIFOFFSET, TIFFTAG_STRIPOFFSETS}) {
            const TiffEntry* start = page.find(tag);
            const std::uint64_t at = start ? structure_.number(*start) : 0;
            const std::span<const std::uint8_t> file = pool_.file();
            if (at == 0 || at >= file.size() || !jpegCodec().recognises(file.subspan(at))) continue;
            std::optional<Raster> raster = jpegAt(file.subspan(at), layout, task);
            if (raster) return raster;
        }
        return std::nullopt;
    }

    std::optional<Raster> jpegAt(std::span<const std::uint8_t> file, const TiffLayout& layout,
                                 Task& task) const {
        try {
            const Picture inner = jpegCodec().read(file, limits_, task);
            const Raster& raster = inner.pages.front().raster;
            if (raster.width() == layout.width && raster.height() == layout.height) return raster;
        } catch (const RuntimeError&) {
            // Not a whole file: left to the library.
        }
        return std::nullopt;
    }

    TiffStructure structure_;
    TiffChain chain_;
    TiffReaderPool pool_;
    ReadLimits limits_;
};

} // namespace

Picture readTiff(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) {
    TiffPages pages(file, limits);
    Picture picture;
    picture.type = FileType::Tiff;
    const std::size_t count = pages.count();
    for (std::size_t i = 0; i < count; ++i) {
        const Task::Stage stage(task, static_cast<double>(i) / static_cast<double>(count),
                                static_cast<double>(i + 1) / static_cast<double>(count));
        const std::string number = "Page " + std::to_string(i + 1);
        try {
            bool complete = true;
            picture.pages.push_back(pages.read(i, task, complete));
            if (!complete)
                picture.warnings.push_back(number + " is damaged: parts of it are missing.");
        } catch (const RuntimeError& error) {
            // Pages beyond the limit are no matter of one bad page.
            if (count == 1 || error.number() == errors::outOfMemory) throw;
            picture.warnings.push_back(number + " cannot be read: " + error.description());
        }
    }
    if (!pages.trouble().empty()) picture.warnings.push_back(pages.trouble());
    if (picture.pages.empty())
        throw RuntimeError(errors::invalidPicture, picture.warnings.front(), "Import");
    return picture;
}

std::vector<PageFacts> tiffFacts(std::span<const std::uint8_t> file, ReadLimits limits) {
    TiffPages pages(file, limits);
    std::vector<PageFacts> facts;
    for (std::size_t i = 0; i < pages.count(); ++i) {
        try {
            const TiffLayout layout = pages.layout(i);
            const bool turned = swapsSides(layout.orientation);
            facts.push_back({turned ? layout.height : layout.width,
                             turned ? layout.width : layout.height, layout.type,
                             layout.fileBits()});
        } catch (const RuntimeError& error) {
            if (pages.count() == 1 || error.number() == errors::outOfMemory) throw;
        }
    }
    return facts;
}

} // namespace kvn::imaging
