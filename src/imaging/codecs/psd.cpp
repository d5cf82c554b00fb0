// PSD: the merged picture of every colour mode and depth is read; 8-bit pictures are written.

#include <array>
#include <memory>

#include "imaging/codecs/all.h"
#include "imaging/codecs/one_page.h"
#include "imaging/codecs/plausible.h"
#include "imaging/codecs/psd_file.h"
#include "imaging/codecs/psd_read.h"
#include "imaging/codecs/psd_write.h"
#include "imaging/codecs/psd_zip.h"
#include "imaging/metadata/orientation.h"

namespace kvn::imaging {

namespace {

class PsdCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Psd; }
    std::string_view name() const override { return "PSD"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 2> list{"psd", "psb"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isPsd(file); }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        PsdFile psd = readPsdFile(file);
        limits.take(psd.width, psd.height, psd.type, swapsSides(psd.orientation));
        requirePlausible(psd.width, psd.height, psd.type, psd.pixels.size());
        if (psd.zipped && psd.layer.empty()) unzipPsd(psd, limits);
        Picture picture;
        picture.type = FileType::Psd;
        Page page;
        page.raster =
            turnedUpright(readPsdPixels(psd, task, picture.warnings), psd.orientation, task);
        Metadata& meta = psd.resources.metadata;
        if (swapsSides(psd.orientation)) std::swap(meta.xDpi, meta.yDpi);
        page.metadata = std::make_shared<const Metadata>(std::move(meta));
        picture.pages.push_back(std::move(page));
        return picture;
    }

    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        const PsdFile psd = readPsdFile(file);
        limits.take(psd.width, psd.height, psd.type, swapsSides(psd.orientation));
        PageFacts facts{psd.width, psd.height, psd.type, psd.channels * psd.bits};
        if (swapsSides(psd.orientation)) std::swap(facts.width, facts.height);
        return {facts};
    }

    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        writePsd(onlyPage(pages, "PSD"), sink, task);
    }
};

} // namespace

const Codec& psdCodec() {
    static const PsdCodec codec;
    return codec;
}

} // namespace kvn::imaging
