// WMF: with the placeable header or without.

#include <algorithm>
#include <array>
#include <cmath>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/metafile/player.h"
#include "imaging/codecs/metafile/wmf_records.h"
#include "imaging/codecs/metafile/writer.h"
#include "imaging/codecs/one_page.h"

namespace kvn::imaging {

namespace metafile {

namespace {

constexpr std::size_t placeableSize = 22, headerSize = 18;
constexpr double screenDpi = 96;

bool isPlaceable(std::span<const std::uint8_t> file) {
    return LittleFields(file).u32(0) == 0x9ac6cdd7;
}

bool isWmf(std::span<const std::uint8_t> file) {
    const std::size_t at = isPlaceable(file) ? placeableSize : 0;
    const LittleFields fields(file);
    const std::uint32_t kind = fields.u16(at), version = fields.u16(at + 4);
    return file.size() >= at + headerSize && (kind == 1 || kind == 2) &&
           fields.u16(at + 2) == headerSize / 2 && (version == 0x300 || version == 0x100);
}

PointD pairAt(const LittleFields& fields, std::size_t at) {
    return {double(static_cast<std::int16_t>(fields.u16(at))),
            double(static_cast<std::int16_t>(fields.u16(at + 2)))};
}

// The part of the plane that the drawing lies in, in its own units.
struct Window {
    PointD origin, extent;
    bool isEmpty() const { return extent.x == 0 || extent.y == 0; }
};

class WmfSource final : public Source {
  public:
    explicit WmfSource(std::span<const std::uint8_t> bytes) {
        if (!isWmf(bytes))
            throw RuntimeError(errors::invalidPicture, "The WMF file has no valid header.",
                               "Import");
        file = bytes;
        const LittleFields fields(file);
        if (isPlaceable(file)) {
            const PointD a = pairAt(fields, 6), b = pairAt(fields, 10);
            placed_ = {a, b - a};
            unitsPerInch_ = fields.u16(14) != 0 ? fields.u16(14) : 1440;
            start_ = placeableSize;
        }
        start_ += headerSize;
        findWindow();
    }
    std::string_view name() const override { return "WMF"; }

    // The placeable header tells the size in inches, of which 96 dpi make pixels. Without it the
    // window's units are pixels, unless that gives a poster.
    std::optional<Sheet> sheet() const override {
        const Window& window = this->window();
        if (window.isEmpty()) return {};
        const PointD extent{std::abs(window.extent.x), std::abs(window.extent.y)};
        Sheet sheet;
        sheet.frame = {0, 0, extent.x, extent.y};
        if (!placed_.isEmpty()) {
            sheet.inches = {std::abs(placed_.extent.x) / unitsPerInch_,
                            std::abs(placed_.extent.y) / unitsPerInch_};
            sheet.width = sheet.inches.x * screenDpi;
            sheet.height = sheet.inches.y * screenDpi;
            return sheet;
        }
        constexpr double poster = 2048, usual = 1024;
        const double longest = std::max(extent.x, extent.y);
        const double scale = longest > poster ? usual / longest : 1;
        sheet.width = extent.x * scale;
        sheet.height = extent.y * scale;
        return sheet;
    }

    Sheet sheetAround(const draw::Box& marks) const override {
        Sheet sheet;
        sheet.frame = marks;
        sheet.frame.right = std::max(marks.right, marks.left + 1);
        sheet.frame.bottom = std::max(marks.bottom, marks.top + 1);
        sheet.width = sheet.frame.right - sheet.frame.left;
        sheet.height = sheet.frame.bottom - sheet.frame.top;
        return sheet;
    }

    void play(Drawing& drawing, Task& task, std::vector<std::string>& warnings) const override {
        const bool fixed = !window().isEmpty();
        if (fixed) {
            State& state = drawing.state();
            state.mapMode = mapAnisotropic;
            state.windowOrigin = window().origin;
            state.windowExtent = window().extent;
            state.viewportExtent = {std::abs(window().extent.x), std::abs(window().extent.y)};
        }
        std::size_t count = 0;
        const bool whole = eachRecord([&](std::uint32_t function, auto record, std::size_t at) {
            if (!drawing.effort().spend(perRecord)) return false;
            playWmfRecord(drawing, function, record, fixed);
            if (++count % 256 == 0) task.report(double(at) / double(file.size()));
            return true;
        });
        if (!whole) warnings.push_back("The WMF file is cut off or damaged: its end is missing.");
    }

    std::string whyEmpty() const override { return "The WMF file holds no drawing."; }

  private:
    static constexpr double perRecord = 150; // nanoseconds

    const Window& window() const { return set_.isEmpty() ? placed_ : set_; }

    // False if the file ends, or holds nonsense, before the record that ends it.
    bool eachRecord(auto&& visit) const {
        const LittleFields fields(file);
        for (std::size_t at = start_; at + 6 <= file.size();) {
            const std::uint64_t size = std::uint64_t{fields.u32(at)} * 2;
            const std::uint32_t function = fields.u16(at + 4);
            if (function == 0) return true;
            if (size < 6 || size > file.size() - at) return false;
            if (!visit(function, file.subspan(at, static_cast<std::size_t>(size)), at)) return true;
            at += static_cast<std::size_t>(size);
        }
        return false;
    }

    // The window that the records set before they draw.
    void findWindow() {
        constexpr std::uint32_t setOrigin = 0x20b, setExtent = 0x20c;
        eachRecord([this](std::uint32_t function, auto record, std::size_t) {
            const PointD pair = pairAt(LittleFields(record), 6);
            const PointD value{pair.y, pair.x};
            if (function == setOrigin && set_.isEmpty()) set_.origin = value;
            if (function == setExtent) set_.extent = value;
            return set_.isEmpty();
        });
        if (set_.isEmpty()) set_ = {};
        originAfterExtent();
    }

    // The origin may also follow the extent at once.
    void originAfterExtent() {
        constexpr std::uint32_t setOrigin = 0x20b, setExtent = 0x20c;
        bool seen = false;
        eachRecord([&](std::uint32_t function, auto record, std::size_t) {
            if (function == setExtent) return seen = true;
            if (!seen) return true;
            const PointD pair = pairAt(LittleFields(record), 6);
            if (function == setOrigin) set_.origin = {pair.y, pair.x};
            return false;
        });
    }

    Window placed_, set_;
    double unitsPerInch_ = 0;
    std::size_t start_ = 0;
};

} // namespace

} // namespace metafile

namespace {

class WmfCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Wmf; }
    std::string_view name() const override { return "WMF"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 2> list{"wmf", "apm"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override {
        return metafile::isWmf(file);
    }
    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return metafile::readMetafile(metafile::WmfSource(file), FileType::Wmf, limits, task);
    }
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return metafile::metafileFacts(metafile::WmfSource(file), limits);
    }
    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions& options, ByteSink& sink,
               Task& task) const override {
        metafile::writeWmf(onlyPage(pages, "WMF"), options.wmfPlaceable, sink, task);
    }
};

} // namespace

const Codec& wmfCodec() {
    static const WmfCodec codec;
    return codec;
}

} // namespace kvn::imaging
