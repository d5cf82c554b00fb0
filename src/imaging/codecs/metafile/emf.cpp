// EMF: the size from the header, records one by one.

#include <algorithm>
#include <array>
#include <cmath>

#include "basic/error.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/fields.h"
#include "imaging/codecs/metafile/emf_records.h"
#include "imaging/codecs/metafile/player.h"
#include "imaging/codecs/metafile/writer.h"
#include "imaging/codecs/one_page.h"

namespace kvn::imaging {

namespace metafile {

namespace {

constexpr std::size_t smallestHeader = 88, micrometreHeader = 108;
constexpr std::uint32_t endOfFile = 14;

bool isEmf(std::span<const std::uint8_t> file) {
    constexpr std::uint32_t mark = 0x464d4520; // " EMF"
    const LittleFields fields(file);
    return file.size() >= smallestHeader && fields.u32(0) == 1 && fields.u32(40) == mark;
}

draw::Box boxAt(const LittleFields& fields, std::size_t at) {
    const auto side = [&](std::size_t i) {
        return double(static_cast<std::int32_t>(fields.u32(at + 4 * i)));
    };
    draw::Box box;
    box.add(PointD{side(0), side(1)});
    box.add(PointD{side(2), side(3)});
    return box;
}

// Pixels a millimetre of the device that the file was made for; what is no sensible number is
// taken as 96 dpi. Newer headers have the size in micrometres too; in older ones the description
// may stand there, so it has to agree.
PointD deviceResolution(const LittleFields& fields) {
    const auto ratio = [&](std::size_t i) {
        const double pixels = fields.u32(72 + 4 * i);
        double millimetres = fields.u32(80 + 4 * i);
        const double exact = fields.u32(100 + 4 * i) / 1000.0;
        if (fields.u32(4) >= micrometreHeader && std::abs(exact - millimetres) <= 1)
            millimetres = exact;
        const double perMillimetre = millimetres > 0 ? pixels / millimetres : 0;
        return perMillimetre > 0.1 && perMillimetre < 1000 ? perMillimetre : 96 / 25.4;
    };
    return {ratio(0), ratio(1)};
}

// One pixel for one of the device's if that was a screen, else 96 dpi.
Sheet sheetOf(const draw::Box& frame, PointD perMillimetre) {
    Sheet sheet;
    sheet.frame = frame;
    sheet.perMillimetre = perMillimetre;
    const PointD size{frame.right - frame.left, frame.bottom - frame.top};
    const PointD dpi = perMillimetre * 25.4;
    const auto isScreen = [](double d) { return d >= 60 && d <= 150; };
    const bool screen = isScreen(dpi.x) && isScreen(dpi.y);
    sheet.inches = {size.x / dpi.x, size.y / dpi.y};
    sheet.xDpi = screen ? dpi.x : 96;
    sheet.yDpi = screen ? dpi.y : 96;
    sheet.width = sheet.inches.x * sheet.xDpi;
    sheet.height = sheet.inches.y * sheet.yDpi;
    return sheet;
}

class EmfSource final : public Source {
  public:
    explicit EmfSource(std::span<const std::uint8_t> bytes) {
        if (!isEmf(bytes))
            throw RuntimeError(errors::invalidPicture, "The EMF file has no valid header.",
                               "Import");
        file = bytes;
    }
    std::string_view name() const override { return "EMF"; }

    // The frame, in hundredths of a millimetre, is the picture; the bounds, in pixels, are what
    // is drawn. Where little of that is within the frame, the frame is wrong, unless the bounds
    // are just upside down: then the file leaves out that its y axis runs upwards.
    std::optional<Sheet> sheet() const override {
        const LittleFields fields(file);
        const PointD perMillimetre = deviceResolution(fields);
        const draw::Box frame = frameBox(fields, perMillimetre), bounds = boundsBox(fields);
        const bool framed = frame.right - frame.left >= 0.5 && frame.bottom - frame.top >= 0.5;
        const bool drawn = bounds.right - bounds.left > 1 && bounds.bottom - bounds.top > 1;
        if (!framed && !drawn) return {};
        if (!drawn) return sheetOf(frame, perMillimetre);
        if (framed && overlap(frame, bounds) > mostly)
            return sheetOf(widened(frame, bounds), perMillimetre);
        draw::Box turned = bounds;
        turned.top = -bounds.bottom;
        turned.bottom = -bounds.top;
        if (!framed || overlap(frame, turned) <= mostly) return sheetOf(bounds, perMillimetre);
        Sheet sheet = sheetOf(frame, perMillimetre);
        sheet.mirrored = true;
        return sheet;
    }

    Sheet sheetAround(const draw::Box& marks) const override {
        draw::Box frame = marks;
        frame.right = std::max(frame.right, frame.left + 1);
        frame.bottom = std::max(frame.bottom, frame.top + 1);
        return sheetOf(frame, deviceResolution(LittleFields(file)));
    }

    void play(Drawing& drawing, Task& task, std::vector<std::string>& warnings) const override {
        const LittleFields fields(file);
        std::size_t at = fields.u32(4), count = 0;
        while (drawing.effort().spend(perRecord)) {
            const std::uint32_t type = fields.u32(at), size = fields.u32(at + 4);
            if (at >= file.size() || size < 8 || size > file.size() - at) {
                warnings.push_back("The EMF file is cut off or damaged: its end is missing.");
                return;
            }
            if (type == endOfFile) return;
            playEmfRecord(drawing, type, file.subspan(at, size));
            at += size;
            if (++count % 256 == 0) task.report(double(at) / double(file.size()));
        }
    }

    std::string whyEmpty() const override {
        return holdsPlusAlone() ? "The EMF file holds its drawing as EMF+ records alone, which "
                                  "cannot be drawn."
                                : "The EMF file holds no drawing.";
    }

  private:
    static constexpr double perRecord = 150; // nanoseconds
    static constexpr double mostly = 0.5;

    static draw::Box frameBox(const LittleFields& fields, PointD perMillimetre) {
        draw::Box frame = boxAt(fields, 24);
        frame.left *= perMillimetre.x / 100;
        frame.right *= perMillimetre.x / 100;
        frame.top *= perMillimetre.y / 100;
        frame.bottom *= perMillimetre.y / 100;
        return frame;
    }
    // The last column and row belong to it.
    static draw::Box boundsBox(const LittleFields& fields) {
        draw::Box bounds = boxAt(fields, 8);
        bounds.right += 1;
        bounds.bottom += 1;
        return bounds;
    }

    // What sticks out a little belongs to the picture; what sticks out far was cut off on purpose.
    static draw::Box widened(draw::Box frame, const draw::Box& bounds) {
        const double x = (frame.right - frame.left) / 10, y = (frame.bottom - frame.top) / 10;
        if (bounds.left >= frame.left - x && bounds.right <= frame.right + x &&
            bounds.top >= frame.top - y && bounds.bottom <= frame.bottom + y)
            frame.add(bounds);
        return frame;
    }

    // The share of the smaller box that lies in the other one.
    static double overlap(const draw::Box& a, const draw::Box& b) {
        const double width = std::min(a.right, b.right) - std::max(a.left, b.left);
        const double height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
        if (width <= 0 || height <= 0) return 0;
        const auto area = [](const draw::Box& x) {
            return (x.right - x.left) * (x.bottom - x.top);
        };
        return width * height / std::min(area(a), area(b));
    }

    bool holdsPlusAlone() const {
        constexpr std::uint32_t comment = 70, plus = 0x2b464d45; // "EMF+"
        const LittleFields fields(file);
        for (std::size_t at = fields.u32(4); at + 16 <= file.size();) {
            if (fields.u32(at) == comment && fields.u32(at + 12) == plus) return true;
            const std::uint32_t size = fields.u32(at + 4);
            if (size < 8 || size > file.size() - at) return false;
            at += size;
        }
        return false;
    }
};

} // namespace

} // namespace metafile

namespace {

class EmfCodec final : public Codec {
  public:
    FileType type() const override { return FileType::Emf; }
    std::string_view name() const override { return "EMF"; }
    std::span<const std::string_view> extensions() const override {
        static constexpr std::array<std::string_view, 1> list{"emf"};
        return list;
    }
    bool recognises(std::span<const std::uint8_t> file) const override {
        return metafile::isEmf(file);
    }
    Picture read(std::span<const std::uint8_t> file, ReadLimits limits, Task& task) const override {
        return metafile::readMetafile(metafile::EmfSource(file), FileType::Emf, limits, task);
    }
    std::vector<PageFacts> facts(std::span<const std::uint8_t> file,
                                 ReadLimits limits) const override {
        return metafile::metafileFacts(metafile::EmfSource(file), limits);
    }
    bool canWrite() const override { return true; }
    void write(std::span<const Page> pages, const WriteOptions&, ByteSink& sink,
               Task& task) const override {
        metafile::writeEmf(onlyPage(pages, "EMF"), sink, task);
    }
};

} // namespace

const Codec& emfCodec() {
    static const EmfCodec codec;
    return codec;
}

} // namespace kvn::imaging
