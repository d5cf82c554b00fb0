// Geometry.Stipple.
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "imaging/operations/art/art.h"
#include "imaging/operations/art/cells.h"
#include "imaging/operations/filters/means.h"
#include "imaging/operations/filters/rank.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/curve_table.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr std::uint32_t seedOfDots = 4211;
constexpr double widestPitch = 30; // in U, at size 100
constexpr int filters = 5;

constexpr Argument stippleArguments[] = {
    {"size", ArgumentKind::Integer, 0, 100, "%", "of the dots; clamped"},
    {"filter", ArgumentKind::Integer, 0, filters - 1, "",
     "arithmetic mean, minimum, maximum, geometric mean, Yp mean; clamped"},
    {"filter first", ArgumentKind::Boolean, 0, 0, "", "filters the picture, else the dots"},
};

// How the dots of a filter are set.
struct Touch {
    const Operation* filter;
    float noise;  // how far dots differ in brightness
    float tint;   // and in colour
    float ground; // between the dots, against the dots there
    float lens;   // how much of what is under a dot shows in it, magnified; 0: one colour
    float glint;  // of a bead's light
    double least; // pixels between dots that can be told from noise
};

constexpr Touch touches[filters] = {
    {&arithmeticMeanOperation, 0.16f, 0.10f, 0.86f, 0, 0, 4},
    {&minimumOperation, 0.10f, 0.05f, 1.55f, 0, 0, 4},
    {&maximumOperation, 0.10f, 0.05f, 0.35f, 0, 0, 4},
    {&geometricMeanOperation, 0.04f, 0.0f, 0.55f, 0.55f, 0.55f, 6},
    {&ypMeanOperation, 0.22f, 0.12f, 0.55f, 0.8f, 0.4f, 6},
};

// Takes the picture over, so that it doesn't outlast its copy.
Raster filtered(const Touch& touch, Raster source, int size, Task& task) {
    if (touch.filter == &geometricMeanOperation) {
        // One black pixel would make its whole window black.
        static constexpr int darkest = 8;
        const ByteTable lifted = tableOf([](int v) { return std::max(v, darkest); });
        source = mapChannels(source, ColorTables::same(lifted), task);
    }
    std::vector<Value> values{std::int64_t{size}};
    if (touch.filter == &ypMeanOperation) values.emplace_back(false);
    values.emplace_back(false); // alpha counts
    return touch.filter->run(source, Arguments(std::move(values)), task);
}

struct Dot {
    float color[3];
    float radius;
};

// The dots of one picture.
class Dots {
  public:
    Dots(const ConstView& picture, const Touch& touch, double pitch)
        : touch_(touch), picture_(picture),
          cells_({picture.width, picture.height}, pitch, 0.75, seedOfDots),
          dots_(static_cast<std::size_t>(cells_.count())) {
        const int channels = bytesPerPixel(picture.type), colors = channels < 3 ? 1 : 3;
        for (int i = 0; i < cells_.count(); ++i) {
            const auto number = static_cast<std::uint32_t>(i);
            Dot& dot = dots_[static_cast<std::size_t>(i)];
            dot.radius = static_cast<float>(pitch) * (0.46f + 0.2f * randomShare(number, 5));
            const std::uint8_t* pixel = at(cells_.seedX(i), cells_.seedY(i), channels);
            const float bright = 1 + touch.noise * (2 * randomShare(number, 6) - 1);
            for (int c = 0; c < colors; ++c) {
                const float tint =
                    touch.tint * (2 * randomShare(number, 7 + static_cast<std::uint32_t>(c)) - 1);
                dot.color[c] = pixel[c] * bright + 128 * tint;
            }
        }
    }

    template <int channels, int colors>
    void row(int y, NearSeeds& near, std::uint8_t* out) const {
        const int width = picture_.width;
        for (int x = 0; x < width; ++x) {
            near.placeX[static_cast<std::size_t>(x)] = static_cast<float>(x);
            near.placeY[static_cast<std::size_t>(x)] = static_cast<float>(y);
        }
        cells_.find(y, width, near);
        const std::uint8_t* own = picture_.row(y);
        for (int x = 0; x < width; ++x, out += channels, own += channels)
            pixel<channels, colors>(x, y, near, own, out);
    }

  private:
    const std::uint8_t* at(float x, float y, int channels) const {
        const int column = std::clamp(static_cast<int>(x + 0.5f), 0, picture_.width - 1);
        const int line = std::clamp(static_cast<int>(y + 0.5f), 0, picture_.height - 1);
        return picture_.row(line) + column * channels;
    }

    template <int channels, int colors>
    void pixel(int x, int y, const NearSeeds& near, const std::uint8_t* own,
               std::uint8_t* out) const {
        const auto i = static_cast<std::size_t>(x);
        const Dot& dot = dots_[static_cast<std::size_t>(near.seed[i])];
        const float dx = static_cast<float>(x) - near.x[i], dy = static_cast<float>(y) - near.y[i];
        const float squared = dx * dx + dy * dy + 1e-6f, distance = squared * inverseRoot(squared);
        const float cover = std::clamp(dot.radius - distance + 0.5f, 0.0f, 1.0f);
        const std::uint8_t* below = own;
        float light = 0;
        if (touch_.lens > 0) {
            below = at(near.x[i] + dx * 0.5f, near.y[i] + dy * 0.5f, channels);
            const float u = distance / dot.radius;
            const float side = -(dx + dy) / dot.radius; // towards the upper left
            light = touch_.glint * (side * 0.5f * u + 0.12f - 0.35f * u * u * u * u);
            const float spotX = dx / dot.radius + 0.35f, spotY = dy / dot.radius + 0.35f;
            const float spot = 1 - (spotX * spotX + spotY * spotY) * 14;
            light += spot > 0 ? spot * touch_.glint : 0;
        }
        for (int c = 0; c < colors; ++c) {
            const float inside =
                dot.color[c] + (below[c] - dot.color[c]) * touch_.lens + light * 128;
            const float ground = own[c] * touch_.ground;
            const float mixed = ground + (inside - ground) * cover;
            out[c] = static_cast<std::uint8_t>(std::clamp(mixed, 0.0f, 255.0f) + 0.5f);
        }
        if constexpr (colors < channels) out[colors] = own[colors];
    }

    const Touch& touch_;
    const ConstView picture_;
    const Cells cells_;
    std::vector<Dot> dots_;
};

Raster dotted(const Raster& source, const Touch& touch, double pitch, Task& task) {
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const View to = result.edit();
    const Dots dots(source.view(), touch, pitch);
    constexpr decltype(&Dots::row<1, 1>) rows[] = {&Dots::row<1, 1>, &Dots::row<2, 1>,
                                                   &Dots::row<3, 3>, &Dots::row<4, 3>};
    const auto row = rows[bytesPerPixel(source.type()) - 1];
    parallelRows(source.height(), task, [&](int y0, int y1) {
        NearSeeds near(source.width());
        for (int y = y0; y < y1; ++y)
            (dots.*row)(y, near, to.row(y));
    });
    return result;
}

void restoreAlpha(Raster& picture, const Raster& source, Task& task) {
    if (!hasAlpha(source.type())) return;
    const ConstView from = source.view();
    const View to = picture.edit();
    const int channels = bytesPerPixel(from.type);
    parallelRows(from.height, task, [&](int y0, int y1) {
        for (int y = y0; y < y1; ++y)
            for (int i = channels - 1; i < from.width * channels; i += channels)
                to.row(y)[i] = from.row(y)[i];
    });
}

Raster stipple(const Raster& picture, const Arguments& arguments, Task& task) {
    const int size = std::clamp(arguments.integer(0), 0, 100);
    if (size == 0) return picture;
    const Touch& touch = touches[std::clamp(arguments.integer(1), 0, filters - 1)];
    const Raster source = promoted(picture, task);
    const double unit = std::min(source.width(), source.height()) / 1000.0;
    const double pitch = std::max(touch.least, size / 100.0 * widestPitch * unit);
    const bool first = arguments.boolean(2);
    const int window = static_cast<int>(pitch * (first ? 0.5 : 0.25)) | 1;
    Raster result;
    {
        const Task::Stage stage(task, 0, 0.5);
        result = first ? filtered(touch, source, std::max(3, window), task)
                       : dotted(source, touch, pitch, task);
    }
    const Task::Stage stage(task, 0.5, 1);
    result = first ? dotted(result, touch, pitch, task)
                   : filtered(touch, std::move(result), std::max(3, window), task);
    restoreAlpha(result, source, task);
    return result;
}

} // namespace

const Operation stippleOperation = {
    .name = "Geometry.Stipple",
    .undoName = "Stipple",
    .arguments = stippleArguments,
    .run = overVisibleColors<stipple>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Paints the picture in dots of colour, or lays glass beads on it.",
};

} // namespace kvn::imaging
