// BMP: every depth of Windows and OS/2 headers is read; embedded JPEG and PNG go to their codecs.

#include <array>
#include <memory>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/bmp_header.h"
#include "imaging/codecs/bmp_read.h"
#include "imaging/codecs/bmp_write.h"
#include "imaging/codecs/plausible.h"

namespace kvn::imaging {

namespace {

// The codec of the embedded file, null if the pixels are BMP's own.
const Codec* embeddedCodec(const BmpHeader& header) {
    if (header.packing == BmpPacking::Jpeg) return &jpegCodec();
    if (header.packing == BmpPacking::Png) return &pngCodec();
    return nullptr;
}

MetadataRef metadataOf(const BmpHeader& header) {
    Metadata meta;
    meta.xDpi = header.xDpi;
    meta.yDpi = header.yDpi;
    meta.icc.assign(header.profile.begin(), header.profile.end());
    return std::make_shared<const Metadata>(std::move(meta));
}

class BmpCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Bmp; }
    std::string_view name() const override { return "BMP"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 2> list{"bmp", "dib"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isBmp(file); }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        const BmpHeader header = readBmpHeader(file);
        Picture picture;
        if (const Codec* codec = embeddedCodec(header)) {
            picture = codec->read(header.pixels, limits, task);
        } else {
            const ImageType type = bmpImageType(header);
            limits.take(header.width, header.height, type);
            requirePlausible(header.width, header.height, type, header.pixels.size());
            Page page;
            page.raster = readBmpPixels(header, type, task, picture.warnings);
            page.metadata = metadataOf(header);
            picture.pages.push_back(std::move(page));
        }
        picture.type = FileType::Bmp;
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        const BmpHeader header = readBmpHeader(file);
        if (const Codec* codec = embeddedCodec(header)) return codec->facts(header.pixels, limits);
        const ImageType type = bmpImageType(header);
        limits.take(header.width, header.height, type);
        return {{header.width, header.height, type, header.bits}};
    }

    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task) const override {
        if (pages.size() != 1)
            throw RuntimeError(errors::invalidCall, "A BMP file holds one picture.", "Export");
        writeBmp(pages.front(), options.bmpRle, sink, task);
    }
};

} // namespace

const Codec& bmpCodec() {
    static const BmpCodec codec;
    return codec;
}

} // namespace kvn::imaging
