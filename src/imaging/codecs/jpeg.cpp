#include "imaging/codecs/jpeg.h"

#include <array>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/jpeg_segments.h"

namespace kvn::imaging {

namespace {

class Jpeg : public Codec {
  public:
    FileType type() const override { return FileType::Jpeg; }
    std::string_view name() const override { return "JPEG"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 5> list{"jpg", "jpeg", "jpe", "jfif", "jif"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isJpeg(file); }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return readJpeg(file, limits, task);
    }
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return jpegFacts(file, limits);
    }
    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task) const override {
        if (pages.size() != 1 || pages.front().raster.isEmpty())
            throw RuntimeError(errors::invalidCall, "A JPEG file holds one picture.", "Export");
        writeJpeg(pages.front(), options, sink, task);
    }
};

} // namespace

const Codec& jpegCodec() {
    static const Jpeg codec;
    return codec;
}

} // namespace kvn::imaging
