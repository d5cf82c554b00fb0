// TIFF: all pages, read in every form and written in seven compressions.

#include <array>

#include "imaging/codecs/all.h"
#include "imaging/codecs/tiff_read.h"
#include "imaging/codecs/tiff_structure.h"
#include "imaging/codecs/tiff_write.h"

namespace kvn::imaging {

namespace {

class TiffCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Tiff; }
    std::string_view name() const override { return "TIFF"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 2> list{"tif", "tiff"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override {
        return TiffStructure::recognises(file);
    }
    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return readTiff(file, limits, task);
    }
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return tiffFacts(file, limits);
    }
    bool canWrite() const override { return true; }
    bool holdsPages() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task) const override {
        writeTiff(pages, options, sink, task);
    }
};

} // namespace

const Codec& tiffCodec() {
    static const TiffCodec codec;
    return codec;
}

} // namespace kvn::imaging
