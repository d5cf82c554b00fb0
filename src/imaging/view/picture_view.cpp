#include "imaging/view/picture_view.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "imaging/task.h"
#include "imaging/view/area_scale.h"
#include "imaging/view/backdrop.h"
#include "imaging/view/scaling.h"
#include "imaging/view/screen_pixels.h"

namespace kvn::imaging {

namespace {

// A factor this near to one moves no pixel of the largest canvas.
constexpr double sameSize = 1e-9;

// Where the pixels come from: the picture (level 0) or one of its reduced copies.
struct Source {
    const SampleReader& reader;
    ConstView picture;
    const ReducedCopies& copies;
    int level = 0;

    SampleForm form() const { return reader.form(); }
    Size size() const {
        return level == 0 ? Size{picture.width, picture.height} : copies.size(level);
    }
    const std::uint8_t* row(int y, int x, int count, std::uint8_t* scratch) const {
        if (level == 0) return reader.row(picture, y, x, count, scratch);
        return copies.row(level, y) + std::ptrdiff_t{x} * channelCount(form());
    }
};

// The places that one axis of the shown part takes from: single pixels, or spans of them.
struct Axis {
    std::vector<int> nearest; // empty if spans are in use
    std::vector<AreaSpan> spans;
    int first = 0; // of all source pixels in use
    int count = 0;
    bool identity = false; // nearest, one after the other
};

Axis nearestAxis(int begin, int length, double zoom, int sourceLength) {
    Axis axis;
    axis.nearest.resize(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i)
        axis.nearest[static_cast<std::size_t>(i)] = static_cast<int>(std::clamp<std::int64_t>(
            sourceIndex(std::int64_t{begin} + i, zoom), 0, sourceLength - 1));
    axis.first = axis.nearest.front();
    axis.count = axis.nearest.back() - axis.first + 1;
    axis.identity = std::abs(zoom - 1) < sameSize && axis.count == length;
    return axis;
}

Axis areaAxis(int begin, int length, double factor, double sourceLength, int sourcePixels) {
    Axis axis;
    axis.spans = areaSpans(begin, length, factor, sourceLength);
    axis.first = axis.spans.front().first;
    axis.count = std::min(axis.spans.back().first + 3, sourcePixels) - axis.first;
    return axis;
}

// Rows of the shown part, each pixel the one nearest to it. Used by one thread.
class NearestLines {
  public:
    NearestLines(const Source& source, const Axis& across, const Axis& down)
        : source_(source), across_(across), down_(down),
          scratch_(SampleReader::scratchBytes(across.count)),
          packed_(static_cast<std::size_t>(across.identity ? 0 : across.count)) {}

    void make(int line, std::uint32_t* out) {
        const int y = down_.nearest[static_cast<std::size_t>(line)];
        if (across_.identity) {
            packRow(source_.form(), samples(y), across_.count, out);
            return;
        }
        if (y != packedRow_) packRow(source_.form(), samples(y), across_.count, packed_.data());
        packedRow_ = y;
        const std::uint32_t* from = packed_.data() - across_.first;
        for (const int x : across_.nearest)
            *out++ = from[x];
    }

    // Whether a line is the same as the one before it.
    bool repeats(int line) const {
        return line > 0 && down_.nearest[static_cast<std::size_t>(line)] ==
                               down_.nearest[static_cast<std::size_t>(line - 1)];
    }

  private:
    const std::uint8_t* samples(int y) {
        return source_.row(y, across_.first, across_.count, scratch_.data());
    }

    const Source& source_;
    const Axis& across_;
    const Axis& down_;
    std::vector<std::uint8_t> scratch_;
    std::vector<std::uint32_t> packed_;
    int packedRow_ = -1;
};

// Rows of the shown part, each pixel the mean of those it covers. Used by one thread.
class AreaLines {
  public:
    AreaLines(const Source& source, const Axis& across, const Axis& down)
        : source_(source), across_(across), down_(down),
          samples_(across.count * channelCount(source.form())),
          // Columns of no weight are read at the right edge.
          sums_(static_cast<std::size_t>(samples_ + 2 * channelCount(source.form()) + 1)) {
        for (auto& room : scratch_)
            room.resize(SampleReader::scratchBytes(across.count));
    }

    void make(int line, std::uint32_t* out) {
        const AreaSpan& span = down_.spans[static_cast<std::size_t>(line)];
        const std::uint8_t* rows[3] = {};
        for (int i = 0; i < 3; ++i)
            rows[i] = span.weight[i] || i == 0 ? samples(span.first + i) : rows[0];
        blendRows(rows, span, samples_, sums_.data());
        blendColumns(source_.form(), sums_.data(), across_.first, across_.spans, out);
    }

    bool repeats(int) const { return false; }

  private:
    // A row at the border of two lines is wanted twice.
    const std::uint8_t* samples(int y) {
        const auto slot = static_cast<std::size_t>(y % 3);
        if (kept_[slot] != y)
            rows_[slot] = source_.row(y, across_.first, across_.count, scratch_[slot].data());
        kept_[slot] = y;
        return rows_[slot];
    }

    const Source& source_;
    const Axis& across_;
    const Axis& down_;
    int samples_;
    std::vector<std::uint16_t> sums_;
    std::vector<std::uint8_t> scratch_[3];
    const std::uint8_t* rows_[3] = {};
    int kept_[3] = {-1, -1, -1};
};

// One part of a canvas. `shown` is where the picture lies within `area`.
struct Work {
    const CanvasScene& scene;
    Rect area, shown;
    const ScreenView& out;
    const Backdrop& backdrop;
    bool clear; // the picture has alpha
};

void paintAround(const Work& work, int y) {
    std::uint32_t* row = work.out.row(y);
    const std::uint32_t back = opaque(work.scene.back);
    if (y < work.shown.y || y >= work.shown.bottom()) {
        std::fill_n(row + work.area.x, work.area.width, back);
        return;
    }
    std::fill(row + work.area.x, row + work.shown.x, back);
    std::fill(row + work.shown.right(), row + work.area.right(), back);
}

// Lines y0..y1-1 of the area.
template <class Lines>
void paintBand(const Work& work, Lines& lines, int y0, int y1) {
    const Rect& shown = work.shown;
    const auto width = static_cast<std::size_t>(shown.width);
    std::vector<std::uint32_t> above(work.clear ? width : 0), below(above.size());
    std::vector<std::uint8_t> scratch;
    const std::uint32_t* last = nullptr; // the line before, if this band made it
    for (int y = y0; y < y1; ++y) {
        paintAround(work, y);
        if (y < shown.y || y >= shown.bottom()) continue;
        std::uint32_t* out = work.out.row(y) + shown.x;
        std::uint32_t* made = work.clear ? above.data() : out;
        const bool again = last && lines.repeats(y - shown.y);
        if (!again)
            lines.make(y - shown.y, made);
        else if (!work.clear)
            std::memcpy(made, last, width * sizeof *made);
        last = made;
        if (!work.clear) continue;
        work.backdrop.row(work.scene.originX + shown.x, work.scene.originY + y, shown.width,
                          below.data(), scratch);
        layOver(above.data(), below.data(), shown.width, out);
    }
}

template <class Lines>
void paintWith(const Work& work, const Source& source, const Axis& across, const Axis& down) {
    Task task;
    parallelRows(work.area.height, task, [&](int y0, int y1) {
        Lines lines(source, across, down);
        paintBand(work, lines, work.area.y + y0, work.area.y + y1);
    });
}

} // namespace

Rect PictureView::setPicture(const Raster& picture, const Rect& changed) {
    picture_ = picture;
    const bool samePalette = !hasPalette(picture.type()) || picture.palette() == palette_;
    if (size_ == picture.size() && type_ == picture.type() && samePalette) {
        copies_.invalidate(changed);
        return changed.intersected(picture.rect());
    }
    size_ = picture.size();
    type_ = picture.type();
    palette_ = picture.palette();
    reader_ = picture.isEmpty() ? SampleReader() : SampleReader(picture);
    copies_.reset(size_, reader_.form());
    return picture.rect();
}

void PictureView::render(const CanvasScene& scene, const Rect& area, const ScreenView& out) {
    if (area.isEmpty()) return;
    const Backdrop backdrop(backdrop_, scene.back);
    Work work{scene, area, {}, out, backdrop, reader_.form() == SampleForm::Rgba};
    if (!picture_.isEmpty()) {
        const Rect scaled{-scene.originX, -scene.originY, scaledLength(size_.width, scene.zoom),
                          scaledLength(size_.height, scene.zoom)};
        work.shown = scaled.intersected(area);
    }
    if (work.shown.isEmpty()) {
        for (int y = area.y; y < area.bottom(); ++y)
            paintAround(work, y);
        return;
    }
    const Rect& shown = work.shown;
    const int left = scene.originX + shown.x, top = scene.originY + shown.y;
    Source source{reader_, picture_.view(), copies_};
    double factor = 1 / scene.zoom; // source pixels a device pixel
    if (scene.smooth)
        for (; factor >= 2 - sameSize && source.level < copies_.count(); factor /= 2)
            ++source.level;
    const Size size = source.size();
    Axis across, down;
    const bool nearest = !scene.smooth || factor <= 1 + sameSize;
    if (nearest) {
        across = nearestAxis(left, shown.width, 1 / factor, size.width);
        down = nearestAxis(top, shown.height, 1 / factor, size.height);
    } else {
        const double parts = std::ldexp(1.0, -source.level);
        across = areaAxis(left, shown.width, factor, size_.width * parts, size.width);
        down = areaAxis(top, shown.height, factor, size_.height * parts, size.height);
    }
    if (source.level > 0)
        copies_.require(reader_, picture_.view(), source.level,
                        {across.first, down.first, across.count, down.count});
    if (nearest)
        paintWith<NearestLines>(work, source, across, down);
    else
        paintWith<AreaLines>(work, source, across, down);
}

} // namespace kvn::imaging
