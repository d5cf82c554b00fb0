#include "imaging/codecs/tiff_write.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "basic/error.h"
#include "imaging/codecs/tiff_exif.h"
#include "imaging/codecs/tiff_metadata.h"
#include "imaging/codecs/tiff_strips.h"
#include "imaging/metadata/for_writing.h"

namespace kvn::imaging {

namespace {

void setPalette(const TiffWriter& writer, const TiffForm& form) {
    const std::size_t count = std::size_t{1} << form.bits();
    std::array<std::array<std::uint16_t, 256>, 3> maps{};
    for (std::size_t i = 0; i < count; ++i) {
        const Rgba color = form.raster.palette()[i];
        maps[0][i] = static_cast<std::uint16_t>(color.r * 257);
        maps[1][i] = static_cast<std::uint16_t>(color.g * 257);
        maps[2][i] = static_cast<std::uint16_t>(color.b * 257);
    }
    writer.set(TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
}

void setForm(const TiffWriter& writer, const TiffForm& form) {
    writer.set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(form.raster.width()));
    writer.set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(form.raster.height()));
    writer.set(TIFFTAG_BITSPERSAMPLE, form.bits());
    writer.set(TIFFTAG_SAMPLESPERPIXEL, form.samples());
    writer.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    writer.set(TIFFTAG_PHOTOMETRIC, static_cast<int>(form.photometric));
    writer.set(TIFFTAG_COMPRESSION, static_cast<int>(form.compression));
    writer.set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    writer.set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(form.rowsPerStrip));
    if (form.differences) writer.set(TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (form.photometric == PHOTOMETRIC_PALETTE) setPalette(writer, form);
    if (Bytes tables = tiffJpegTables(form); !tables.empty())
        writer.set(TIFFTAG_JPEGTABLES, static_cast<std::uint32_t>(tables.size()), tables.data());
    if (hasAlpha(form.raster.type())) {
        const std::uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        writer.set(TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
    if (form.photometric == PHOTOMETRIC_YCBCR) {
        // As the strips are made, in the full range.
        const std::array<float, 6> range{0, 255, 128, 255, 128, 255};
        writer.set(TIFFTAG_YCBCRSUBSAMPLING, form.chromaStep, form.chromaStep);
        writer.set(TIFFTAG_REFERENCEBLACKWHITE, range.data());
    }
}

void writeStrip(const TiffWriter& writer, int index, Bytes& strip) {
    const auto size = static_cast<tmsize_t>(strip.size());
    writer.require(TIFFWriteRawStrip(writer.get(), static_cast<std::uint32_t>(index), strip.data(),
                                     size) == size);
}

// Batches bound the memory for strips that wait for their turn.
void writeStrips(const TiffWriter& writer, const TiffForm& form, Task& task) {
    const int batch = form.compression == COMPRESSION_NONE ? 8 : 64;
    const int count = form.strips();
    std::vector<Bytes> strips(static_cast<std::size_t>(std::min(batch, count)));
    for (int first = 0; first < count; first += batch) {
        const int size = std::min(batch, count - first);
        const Task::Stage stage(task, static_cast<double>(first) / count,
                                static_cast<double>(first + size) / count);
        parallelRows(
            size, task,
            [&](int s0, int s1) {
                for (int s = s0; s < s1; ++s)
                    packTiffStrip(form, first + s, strips[static_cast<std::size_t>(s)]);
            },
            1);
        for (int s = 0; s < size; ++s)
            writeStrip(writer, first + s, strips[static_cast<std::size_t>(s)]);
    }
}

// Tags that the library does not know, with their usual types.
void teachOwnTags(TIFF* tiff) {
    static char name[] = "Own";
    constexpr auto field = [](std::uint32_t tag, TIFFDataType type) {
        return TIFFFieldInfo{tag, TIFF_VARIABLE2, TIFF_VARIABLE2, type, FIELD_CUSTOM, 1, 1, name};
    };
    static const std::array<TIFFFieldInfo, 7> fields{
        field(18246, TIFF_SHORT), field(18249, TIFF_SHORT), field(40091, TIFF_BYTE),
        field(40092, TIFF_BYTE),  field(40093, TIFF_BYTE),  field(40094, TIFF_BYTE),
        field(40095, TIFF_BYTE)};
    TIFFMergeFieldInfo(tiff, fields.data(), static_cast<std::uint32_t>(fields.size()));
}

std::vector<float> fractionsIn(const Bytes& value) {
    std::vector<float> fractions;
    for (std::size_t at = 0; at + 8 <= value.size(); at += 8) {
        std::array<std::uint32_t, 2> parts{};
        std::memcpy(parts.data(), value.data() + at, 8);
        fractions.push_back(parts[1] == 0 ? 0.0F
                                          : static_cast<float>(double{1} * parts[0] / parts[1]));
    }
    return fractions;
}

void setOwnTag(const TiffWriter& writer, const PlacedExif::Own& own) {
    const TIFFField* field = TIFFFindField(writer.get(), own.tag, TIFF_ANY);
    if (!field || TIFFFieldDataType(field) != static_cast<TIFFDataType>(own.type)) return;
    const auto size = static_cast<std::size_t>(tiffTypeSize(own.type));
    if (own.type == TIFF_ASCII) {
        const std::string text(own.value.begin(), own.value.end());
        writer.set(own.tag, text.c_str());
    } else if (own.type == TIFF_RATIONAL) {
        const std::vector<float> fractions = fractionsIn(own.value);
        if (static_cast<int>(fractions.size()) == TIFFFieldWriteCount(field))
            writer.set(own.tag, fractions.data());
    } else {
        writer.set(own.tag, static_cast<std::uint32_t>(own.value.size() / size), own.value.data());
    }
}

void writeExif(const TiffWriter& writer, ByteSink& sink, const Bytes& exif, bool hasDescription) {
    const bool big = TIFFIsBigTIFF(writer.get()) != 0;
    const std::uint64_t position = sink.size() + sink.size() % 2;
    constexpr std::uint64_t furthest = 0xf0000000;
    const PlacedExif placed =
        placeExif(exif, static_cast<std::uint32_t>(std::min(position, furthest)),
                  TIFFIsBigEndian(writer.get()) != 0);
    teachOwnTags(writer.get());
    for (const PlacedExif::Own& own : placed.own)
        if (own.tag != TIFFTAG_IMAGEDESCRIPTION || !hasDescription) setOwnTag(writer, own);
    if (big || position >= furthest || placed.bytes.empty()) return;
    sink.seek(sink.size());
    const char zero = 0;
    if (position > sink.size()) sink.write(&zero, 1);
    sink.write(placed.bytes.data(), placed.bytes.size());
    if (placed.camera) writer.set(TIFFTAG_EXIFIFD, std::uint64_t{placed.camera});
    if (placed.position) writer.set(TIFFTAG_GPSIFD, std::uint64_t{placed.position});
}

} // namespace

std::uint64_t mostTiffBytes(const Page& page) {
    const Raster& raster = page.raster;
    const ImageType type =
        raster.type() == ImageType::Indexed8Alpha ? ImageType::Rgba32 : raster.type();
    const std::uint64_t pixels =
        std::uint64_t{rowBytes(type, raster.width())} * static_cast<std::uint64_t>(raster.height());
    // The worst that a scheme makes of noise, and the metadata.
    return pixels + pixels / 2 + (16 << 20);
}

void writeTiffPage(const TiffWriter& writer, ByteSink& sink, const Page& page,
                   const WriteOptions& options, int number, int count, Task& task) {
    const TiffForm form = tiffFormOf(page.raster, options, task);
    setForm(writer, form);
    if (page.metadata) {
        const bool gray = form.photometric == PHOTOMETRIC_MINISBLACK ||
                          form.photometric == PHOTOMETRIC_MINISWHITE;
        const Metadata metadata = metadataForWriting(*page.metadata, page.raster, gray);
        writeTiffMetadata(writer, metadata);
        writeExif(writer, sink, metadata.exif, !metadata.comment.empty());
    }
    if (!page.name.empty()) writer.set(TIFFTAG_PAGENAME, page.name.c_str());
    if (count > 1) {
        writer.set(TIFFTAG_SUBFILETYPE, static_cast<std::uint32_t>(FILETYPE_PAGE));
        if (count <= 0xffff) writer.set(TIFFTAG_PAGENUMBER, number, count);
    }
    writeStrips(writer, form, task);
    writer.require(TIFFWriteDirectory(writer.get()) == 1);
}

void writeTiff(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task) {
    if (pages.empty())
        throw RuntimeError(errors::invalidCall, "There is no page to write.", "Export");
    constexpr std::uint64_t classicBytes = 0xffffffff;
    std::uint64_t bytes = 0;
    for (const Page& page : pages)
        bytes += mostTiffBytes(page);
    const TiffWriter writer(sink, bytes > classicBytes ? "wl8" : "wl");
    const int count = static_cast<int>(pages.size());
    for (int i = 0; i < count; ++i) {
        const Task::Stage stage(task, static_cast<double>(i) / count,
                                static_cast<double>(i + 1) / count);
        writeTiffPage(writer, sink, pages[static_cast<std::size_t>(i)], options, i, count, task);
    }
}

} // namespace kvn::imaging
