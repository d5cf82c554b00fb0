// GIF: every frame becomes a page, composed as it is shown. Read only.

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/gif_canvas.h"
#include "imaging/codecs/gif_file.h"
#include "imaging/codecs/gif_lzw.h"
#include "imaging/codecs/plausible.h"

namespace kvn::imaging {

namespace {

// The indices of a frame, in the order shown.
struct Pixels {
    std::unique_ptr<std::uint8_t[]> memory;
    std::size_t count = 0; // fewer than the frame has if it is cut off
    std::span<const std::uint8_t> span() const { return {memory.get(), count}; }
};

std::unique_ptr<std::uint8_t[]> uninitialized(std::size_t size) {
    return std::unique_ptr<std::uint8_t[]>(new std::uint8_t[size]);
}

// Every eighth row, then those between, in four passes. Rows that are missing become clear, or
// black where the frame has no clear index.
Pixels deinterlaced(const GifFrame& frame, const Pixels& stored) {
    struct Pass {
        int first, step;
    };
    constexpr std::array<Pass, 4> passes{{{0, 8}, {4, 8}, {2, 4}, {1, 2}}};
    const auto width = static_cast<std::size_t>(frame.rect.width);
    const std::size_t total = width * static_cast<std::size_t>(frame.rect.height);
    Pixels shown{uninitialized(total), total};
    const int blank =
        frame.transparent >= 0 ? frame.transparent : frame.palette.nearest({0, 0, 0, 255});
    std::size_t from = 0;
    for (const Pass& pass : passes) {
        for (int y = pass.first; y < frame.rect.height; y += pass.step) {
            std::uint8_t* row = shown.memory.get() + width * static_cast<std::size_t>(y);
            if (from + width <= stored.count)
                std::memcpy(row, stored.memory.get() + from, width);
            else
                std::memset(row, blank, width);
            from += width;
        }
    }
    return shown;
}

Pixels unpack(const GifFrame& frame) {
    const std::size_t total =
        static_cast<std::size_t>(frame.rect.width) * static_cast<std::size_t>(frame.rect.height);
    Pixels pixels{uninitialized(total + gifLzwSlack), 0};
    pixels.count = unpackGifLzw(frame.data, frame.codeSize, pixels.memory.get(), total);
    return frame.interlaced && pixels.count > 0 ? deinterlaced(frame, pixels) : std::move(pixels);
}

MetadataRef metadataOf(const GifFile& gif) {
    Metadata meta;
    meta.comment = gif.comment();
    meta.xmp = gif.xmp();
    meta.icc = gif.icc();
    return std::make_shared<const Metadata>(std::move(meta));
}

class GifReader {
  public:
    GifReader(std::span<const std::uint8_t> file, const ReadLimits& limits)
        : fileBytes_(file.size()), announced_(countGifFrames(file)), gif_(file),
          pageLimits_(limits), frameLimits_(limits) {}

    Picture read(Task& task) {
        Picture picture;
        picture.type = FileType::Gif;
        requireRoom();
        while (std::optional<GifFrame> frame = gif_.next()) {
            if (static_cast<int>(picture.pages.size()) >= pageLimits_.maxPages) {
                picture.warnings.push_back(
                    "The GIF file has more frames than the limit for files.");
                break;
            }
            if (!addFrame(*frame, picture, task)) break;
            task.report(gif_.fraction());
        }
        if (picture.pages.empty()) refuse();
        if (!gif_.trouble().empty()) picture.warnings.push_back(gif_.trouble());
        // What stands behind the last frame belongs to all.
        const MetadataRef meta = metadataOf(gif_);
        for (Page& page : picture.pages)
            page.metadata = meta;
        return picture;
    }

    std::vector<PageFacts> facts() {
        requireRoom();
        std::vector<PageFacts> facts;
        std::optional<Palette> table;
        while (std::optional<GifFrame> frame = gif_.next()) {
            if (static_cast<int>(facts.size()) >= pageLimits_.maxPages) break;
            const Size size = gif_.screen();
            pageLimits_.take(size.width, size.height, ImageType::Indexed8);
            const bool own = !table || *table == frame->palette;
            const bool clear = frame->transparent >= 0 || frame->rect.width < size.width ||
                               frame->rect.height < size.height;
            facts.push_back({size.width, size.height,
                             !own    ? ImageType::Rgb24
                             : clear ? ImageType::Indexed8Alpha
                                     : ImageType::Indexed8,
                             gif_.colorBits()});
            if (!table) table = frame->palette;
        }
        if (facts.empty()) refuse();
        return facts;
    }

  private:
    [[noreturn]] void refuse() const {
        throw RuntimeError(
            errors::invalidPicture,
            gif_.trouble().empty() ? "The GIF file holds no picture." : gif_.trouble(), "Import");
    }

    // Refuses before any work what would not fit at the end of it.
    void requireRoom() const {
        const Size screen = gif_.screen();
        const double frames = std::clamp(announced_, 1, std::max(1, pageLimits_.maxPages));
        const double bytes = frames * screen.width * screen.height;
        if (bytes <= static_cast<double>(pageLimits_.pixelBytes)) return;
        throw RuntimeError(errors::outOfMemory,
                           "The " + std::to_string(announced_) + " frames of " +
                               std::to_string(screen.width) + " x " +
                               std::to_string(screen.height) +
                               " pixels are larger than the limit for files.",
                           "Import");
    }

    // False when there is nothing of the frame.
    bool addFrame(const GifFrame& frame, Picture& picture, Task& task) {
        const Size screen = gif_.screen();
        if (frame.rect.isEmpty()) return true;
        frameLimits_.take(frame.rect.width, frame.rect.height, ImageType::Indexed8);
        requirePlausible(frame.rect.width, frame.rect.height, ImageType::Indexed8,
                         frame.data.size());
        pageLimits_.take(screen.width, screen.height, ImageType::Indexed8);
        requirePlausible(screen.width, screen.height, ImageType::Indexed8, fileBytes_);
        const Pixels pixels = unpack(frame);
        if (pixels.count == 0) return false;
        if (!canvas_) canvas_.emplace(screen);
        Raster shown = canvas_->show(frame, pixels.span(), task);
        // Of true colour, the bytes beyond the first count too.
        for (int i = 1; i < bytesPerPixel(shown.type()); ++i)
            pageLimits_.take(screen.width, screen.height, ImageType::Indexed8);
        picture.pages.push_back({std::move(shown), nullptr, {}});
        canvas_->dispose(frame);
        return true;
    }

    std::size_t fileBytes_;
    int announced_; // frames
    GifFile gif_;
    ReadLimits pageLimits_;  // for what is kept
    ReadLimits frameLimits_; // for what is unpacked on the way
    std::optional<GifCanvas> canvas_;
};

class GifCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Gif; }
    std::string_view name() const override { return "GIF"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 1> list{"gif"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override { return isGif(file); }
    bool holdsPages() const override { return true; }

    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return GifReader(file, limits).read(task);
    }
    // The form of the second and later frames is a guess from their colour tables.
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return GifReader(file, limits).facts();
    }
};

} // namespace

const Codec& gifCodec() {
    static const GifCodec codec;
    return codec;
}

} // namespace kvn::imaging
