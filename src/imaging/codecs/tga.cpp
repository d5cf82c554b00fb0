// TGA: every type and origin is read; palette, grey, 24 and 32 bits are written.

#include <array>
#include <memory>

#include "imaging/codecs/all.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/plausible.h"
#include "imaging/codecs/tga_read.h"
#include "imaging/codecs/tga_write.h"

namespace kvn::imaging {

namespace {

class TgaCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Tga; }
    std::string_view name() const override { return "TGA"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 4> list{"tga", "vda", "icb", "vst"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isTga(file); }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        const TgaHeader header = readTgaHeader(file);
        limits.take(header.width, header.height, header.type());
        requirePlausible(header.width, header.height, header.type(), header.pixels.size());
        Picture picture;
        picture.type = FileType::Tga;
        Metadata meta;
        meta.comment = header.comment;
        Page page;
        page.raster = readTgaPixels(header, task, picture.warnings);
        page.metadata = std::make_shared<const Metadata>(std::move(meta));
        picture.pages.push_back(std::move(page));
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        const TgaHeader header = readTgaHeader(file);
        PageFacts facts{header.width, header.height, header.type(), header.bits};
        // Only the pixels tell whether their fourth byte is alpha.
        if (header.alpha == TgaAlpha::Undecided)
            facts.type = Codec::facts(file, limits).front().type;
        else
            limits.take(header.width, header.height, facts.type);
        return {facts};
    }

    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        writeTga(onlyPage(pages, "TGA"), sink, task);
    }
};

} // namespace

const Codec& tgaCodec() {
    static const TgaCodec codec;
    return codec;
}

} // namespace kvn::imaging
