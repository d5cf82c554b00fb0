// Geometry.Scribble.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "imaging/convert_rows.h"
#include "imaging/operations/art/art.h"
#include "imaging/operations/filters/blur.h"
#include "imaging/operations/filters/gauss.h"
#include "imaging/operations/filters/rank.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"
#include "imaging/operations/tone/curves.h"
#include "imaging/operations/transforms/noise_field.h"

namespace kvn::imaging {
namespace {

constexpr std::uint32_t seedOfHand = 5113;
constexpr double percentPerPixel = 25;                // of the Gaussian blur
constexpr double spreadBefore = 4, spreadAfter = 1.3; // standard deviations in U
enum Filter { blurred, smoothed, posterized, despeckled };

constexpr Argument scribbleArguments[] = {
    {"line darkness", ArgumentKind::Integer, 0, 100, "%", "of the strokes; clamped"},
    {"filter", ArgumentKind::Integer, 0, despeckled, "",
     "blurred, filtered, posterized, despeckled; clamped"},
    {"filter first", ArgumentKind::Boolean, 0, 0, "", "filters the picture, else the drawing"},
};

// The colours of a row with their luma rounded to one of five levels.
template <int channels, int colors>
void flattenRow(const std::uint8_t* in, std::uint8_t* out, int width) {
    constexpr int levels = 5;
    for (int x = 0; x < width; ++x, in += channels, out += channels) {
        const int light = colors == 1 ? in[0] : luma(in[0], in[1], in[2]);
        const int level = (light * (levels - 1) + 127) / 255 * 255 / (levels - 1);
        const float scale = static_cast<float>(level) / static_cast<float>(std::max(1, light));
        for (int c = 0; c < colors; ++c)
            out[c] = static_cast<std::uint8_t>(std::min(255.0f, in[c] * scale + 0.5f));
        if constexpr (colors < channels) out[colors] = in[colors];
    }
}

// Posterized without new hues: channels that step by themselves turn the soft edges of strokes into
// crumbs of all colours.
Raster flattened(const Raster& source, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    constexpr decltype(&flattenRow<1, 1>) kernels[] = {flattenRow<1, 1>, flattenRow<2, 1>,
                                                       flattenRow<3, 3>, flattenRow<4, 3>};
    const auto kernel = kernels[bytesPerPixel(from.type) - 1];
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            kernel(from.row(y), to.row(y), from.width);
    });
    return result;
}

// What the picture goes through before it is drawn, or else the drawing.
Raster filtered(int filter, bool before, const Raster& source, double unit, Task& task) {
    switch (filter) {
    case blurred: {
        const double spread = before ? spreadBefore : spreadAfter;
        const int percent = std::max(15, static_cast<int>(unit * spread * percentPerPixel));
        return gaussianBlurOperation.run(source, Arguments({std::int64_t{percent}}), task);
    }
    case smoothed: {
        // Strokes have to outlast it.
        const int size = before ? std::clamp(static_cast<int>(unit * 10) | 1, 5, 9)
                                : std::clamp(static_cast<int>(unit * 2) | 1, 3, 5);
        return medianCutOperation.run(source, Arguments({std::int64_t{size}, true}), task);
    }
    case posterized:
        return before ? posterizeOperation.run(source, Arguments({}), task)
                      : flattened(source, task);
    default:
        return despeckleOperation.run(source, Arguments({}), task);
    }
}

// What there is to draw in some rows of the picture, the first of which is `top`: outlines (255: a
// full line) and tones, the two side by side in each row.
struct Motif {
    int top = 0, width = 0;
    PixelBuffer marks{};

    ConstView outlines() const {
        return {marks.data(), marks.stride(), width, marks.rows(), ImageType::Gray8};
    }
    ConstView tones() const {
        return {marks.data() + width, marks.stride(), width, marks.rows(), ImageType::Gray8};
    }
};

Raster grayOf(const ConstView& rows, Task& task) {
    Raster gray = Raster::uninitialized(ImageType::Gray8, rows.width, rows.height);
    const View to = gray.edit();
    parallelRows(rows.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            convertRow(rows.type, to.type, rows.row(y), to.row(y), rows.width);
    });
    return gray;
}

// The narrow blur is kept in 1/256 of a level.
constexpr float fine = 256;

KVN_CLONES void keepFine(const float* __restrict levels, std::uint16_t* __restrict kept,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float value = levels[i] < 0 ? 0 : levels[i] * fine + 0.5f;
        kept[i] = static_cast<std::uint16_t>(static_cast<int>(value < 65280 ? value : 65280));
    }
}

KVN_CLONES void markRow(const float* __restrict wide, const std::uint16_t* __restrict sharp,
                        std::uint8_t* __restrict line, std::uint8_t* __restrict tone,
                        std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const int level = static_cast<int>(wide[i]);
        const int darker =
            static_cast<int>((wide[i] - static_cast<float>(sharp[i]) * (1 / fine) - 1.2f) * 42);
        line[i] = static_cast<std::uint8_t>(darker < 0 ? 0 : darker > 255 ? 255 : darker);
        tone[i] = static_cast<std::uint8_t>(level < 0 ? 0 : level > 255 ? 255 : level);
    }
}

// Outlines lie where the picture is darker than its surroundings: difference of Gaussians (D. Marr
// and E. Hildreth, Theory of edge detection, 1980). The narrow one lies where the marks will.
Motif motifOf(const ConstView& rows, int top, double unit, Task& task) {
    const Raster gray = grayOf(rows, task);
    const auto width = static_cast<std::size_t>(rows.width);
    Motif motif{top, rows.width, PixelBuffer(width * sizeof(std::uint16_t), rows.height)};
    std::uint8_t* const marks = motif.marks.detach();
    const auto rowOf = [&](int y) {
        return marks + motif.marks.stride() * static_cast<std::size_t>(y);
    };
    {
        const Task::Stage stage(task, 0, 0.4);
        gaussRows(gray.view(), std::max(0.6, 1.1 * unit), false, task,
                  [&](int y, const float* row) {
                      keepFine(row, reinterpret_cast<std::uint16_t*>(rowOf(y)), width);
                  });
    }
    const Task::Stage stage(task, 0.4, 1);
    gaussRows(gray.view(), std::max(1.2, 2.6 * unit), false, task, [&](int y, const float* wide) {
        std::vector<std::uint16_t> sharp(width);
        std::memcpy(sharp.data(), rowOf(y), width * sizeof(std::uint16_t));
        markRow(wide, sharp.data(), rowOf(y), rowOf(y) + width, width);
    });
    return motif;
}

// One layer of strokes to and fro. Lengths in pixels.
struct Strokes {
    float across, along; // the direction in which the hand goes on
    float pitch, length; // between strokes, and of one
    float width;         // half of a stroke's
    float darkest;       // tones below are shaded by this layer
};

// Adds the strokes to `paper`, the light that is left of each pixel, 0..1. A stroke goes up in the
// first half of a pitch and down in the second, so the hand never leaves the paper within a band.
KVN_CLONES void shadeRow(const Strokes& strokes, float y, const float* __restrict bendX,
                         const float* __restrict bendY, const std::uint8_t* __restrict tone,
                         float* __restrict paper, int count) {
    constexpr float far = 65536; // keeps what is rounded down positive
    const float perTaper = 1 / (5 * strokes.width);
    for (int x = 0; x < count; ++x) {
        const float placeX = static_cast<float>(x) + bendX[x], placeY = y + bendY[x];
        const float q = (placeY * strokes.across - placeX * strokes.along) / strokes.length + far;
        const float band = static_cast<float>(static_cast<int>(q));
        const float p =
            (placeX * strokes.across + placeY * strokes.along) / strokes.pitch + band * 0.37f + far;
        const float phase = p - static_cast<float>(static_cast<int>(p));
        const float swing = phase < 0.5f ? 2 * phase : 2 - 2 * phase;
        const float part = q - band, off = swing - part;
        const float distance = (off < 0 ? -off : off) * strokes.pitch * 0.5f;
        float need = (strokes.darkest - static_cast<float>(tone[x]) + bendX[x] * 4) * (1.0f / 55);
        need = need < 0 ? 0 : need;
        need = need > 1 ? 1 : need;
        // Strokes taper off at both ends.
        float taper = 0.3f + (part < 0.5f ? part : 1 - part) * strokes.length * perTaper;
        taper = taper < 1 ? taper : 1;
        float ink = strokes.width * taper * (0.45f + 0.55f * need) - distance + 0.5f;
        ink = ink < 0 ? 0 : ink;
        ink = ink > 1 ? 1 : ink;
        paper[x] *= 1 - ink * need * 0.85f;
    }
}

// The hand: everything about how it draws on one picture.
class Hand {
  public:
    Hand(Size size, double unit)
        : unit_(static_cast<float>(unit)), shakes_{{size, 26 * unit, 26 * unit, seedOfHand},
                                                   {size, 26 * unit, 26 * unit, seedOfHand + 1},
                                                   {size, 90 * unit, 90 * unit, seedOfHand + 2},
                                                   {size, 90 * unit, 90 * unit, seedOfHand + 3}} {
        const float u = unit_;
        layers_[0] = layer(62, 8.5f * u, 46 * u, 165);
        layers_[1] = layer(20, 8 * u, 38 * u, 105);
        layers_[2] = layer(100, 7 * u, 30 * u, 55);
    }

    struct Room {
        explicit Room(int width) : paper(static_cast<std::size_t>(width)) {
            for (auto& row : bends)
                row.resize(paper.size());
        }
        std::vector<float> bends[4];
        std::vector<float> paper;
    };

    // Row y of the picture.
    void row(const Motif& motif, int y, Room& room) const {
        const ConstView outlines = motif.outlines(), tones = motif.tones();
        const int width = outlines.width, line = y - motif.top;
        const float reach[4] = {2.2f, 2.2f, 6, 6};
        for (int i = 0; i < 4; ++i) {
            shakes_[i].row(y, 0, width, room.bends[i].data());
            for (float& bend : room.bends[i])
                bend *= reach[i] * unit_;
        }
        // Every outline twice, as the hand goes over it again and misses.
        for (int x = 0; x < width; ++x) {
            const auto i = static_cast<std::size_t>(x);
            const float twice = at(outlines, x, line, room.bends[0][i], room.bends[1][i]);
            const float again = at(outlines, x, line, room.bends[3][i], room.bends[0][i] * 2);
            room.paper[i] = (1 - twice) * (1 - 0.7f * again);
        }
        for (const Strokes& layer : layers_)
            shadeRow(layer, static_cast<float>(y), room.bends[2].data(), room.bends[3].data(),
                     tones.row(line), room.paper.data(), width);
    }

  private:
    Strokes layer(double degrees, float pitch, float length, float darkest) const {
        const double turn = degrees * std::numbers::pi / 180;
        return {static_cast<float>(std::cos(turn)),
                static_cast<float>(std::sin(turn)),
                std::max(4.0f, pitch),
                std::max(16.0f, length),
                std::max(0.5f, 1.1f * unit_),
                darkest};
    }

    static float at(const ConstView& outlines, int x, int y, float dx, float dy) {
        const int column =
            std::clamp(x + static_cast<int>(dx + 1000.5f) - 1000, 0, outlines.width - 1);
        const int line =
            std::clamp(y + static_cast<int>(dy + 1000.5f) - 1000, 0, outlines.height - 1);
        return static_cast<float>(outlines.row(line)[column]) * (1.0f / 255);
    }

    const float unit_;
    const NoiseField shakes_[4];
    Strokes layers_[3];
};

// The colours on paper: a little paler than the picture, so that the strokes tell in its shadows,
// and darkened by them.
template <int channels, int colors>
void paintRow(const std::vector<float>& paper, float darkness, const std::uint8_t* in,
              std::uint8_t* out) {
    const float pale = 0.35f * darkness;
    for (const float light : paper) {
        const float left = 1 - (1 - light) * darkness;
        for (int c = 0; c < colors; ++c)
            out[c] = static_cast<std::uint8_t>((in[c] + (255 - in[c]) * pale) * left + 0.5f);
        if constexpr (colors < channels) out[colors] = in[colors];
        in += channels;
        out += channels;
    }
}

// Strip by strip, as the planes of a whole picture would take more memory than the picture.
Raster drawn(const Raster& source, float darkness, double unit, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    const Hand hand(source.size(), unit);
    constexpr decltype(&paintRow<1, 1>) kernels[] = {paintRow<1, 1>, paintRow<2, 1>, paintRow<3, 3>,
                                                     paintRow<4, 3>};
    const auto paint = kernels[bytesPerPixel(from.type) - 1];
    // As far as blurs and misses of the hand reach. That much of each strip is done twice, and its
    // marks take less memory than the picture.
    const int reach = static_cast<int>(12 * unit) + 8, height = from.height;
    const int most = 3 * bytesPerPixel(from.type) * reach;
    const int strips = (height + most - 1) / most, strip = (height + strips - 1) / strips;
    for (int begin = 0; begin < height; begin += strip) {
        const int end = std::min(begin + strip, height), top = std::max(0, begin - reach);
        const double done = static_cast<double>(begin) / height;
        const double next = static_cast<double>(end) / height, middle = 0.6 * done + 0.4 * next;
        Motif motif;
        {
            const Task::Stage stage(task, done, middle);
            const int rows = std::min(end + reach, height) - top;
            motif =
                motifOf({from.row(top), from.stride, from.width, rows, from.type}, top, unit, task);
        }
        const Task::Stage stage(task, middle, next);
        parallelRows(end - begin, task, [&](int y0, int y1) {
            Hand::Room room(from.width);
            for (int y = begin + y0; y < begin + y1; ++y) {
                hand.row(motif, y, room);
                paint(room.paper, darkness, from.row(y), to.row(y));
            }
        });
    }
    return result;
}

Raster scribble(const Raster& picture, const Arguments& arguments, Task& task) {
    const float share = static_cast<float>(std::clamp(arguments.integer(0), 0, 100)) / 100;
    const int filter = std::clamp(arguments.integer(1), 0, static_cast<int>(despeckled));
    const bool first = arguments.boolean(2);
    Raster current = promoted(withoutHiddenColors(picture, task), task);
    const double unit = std::max(0.6, std::min(picture.width(), picture.height()) / 1000.0);
    const float darkness = std::sqrt(share);
    {
        const Task::Stage stage(task, 0, 0.5);
        current = first ? filtered(filter, true, current, unit, task)
                        : drawn(current, darkness, unit, task);
    }
    // What the first step has left would lie in the cache, as large as a picture, during the
    // second.
    PixelBuffer::trimCache();
    const Task::Stage stage(task, 0.5, 1);
    return first ? drawn(current, darkness, unit, task)
                 : filtered(filter, false, current, unit, task);
}

} // namespace

const Operation scribbleOperation = {
    .name = "Geometry.Scribble",
    .undoName = "Scribble",
    .arguments = scribbleArguments,
    .run = scribble,
    .border = -1,
    .note = "Draws over the picture with a shaky pen: outlines, and strokes in the shadows.",
};

} // namespace kvn::imaging
