#include "imaging/codecs/png.h"

#include "basic/error.h"
#include "imaging/codecs/all.h"

namespace kvn::imaging {

namespace {

class Png : public Codec {
  public:
    FileType type() const override { return FileType::Png; }
    std::string_view name() const override { return "PNG"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 1> list{"png"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override {
        return file.size() >= pngSignature.size() &&
               std::equal(pngSignature.begin(), pngSignature.end(), file.begin());
    }
    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return readPng(file, limits, task);
    }
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return pngFacts(file, limits);
    }
    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        if (pages.size() != 1 || pages.front().raster.isEmpty())
            throw RuntimeError(errors::invalidCall, "A PNG file holds one picture.", "Export");
        writePng(pages.front(), sink, task);
    }
};

} // namespace

const Codec& pngCodec() {
    static const Png codec;
    return codec;
}

} // namespace kvn::imaging
