// Geometry.MotionBlur.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "imaging/operations/art/art.h"
#include "imaging/operations/art/multiplied.h"
#include "imaging/operations/art/streaks.h"
#include "imaging/operations/art/swirls.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr double farthest = 1000;
constexpr int mostSteps = 10;
enum Style { Linear, Radial, Zoom };

constexpr Argument motionArguments[] = {
    {"distance", ArgumentKind::Number, 0, farthest, "px", "length of the way; clamped"},
    {"steps", ArgumentKind::Integer, 1, mostSteps, "", "how often it is gone; clamped"},
    {"angle", ArgumentKind::Number, 0, 360, "degrees", "of a linear motion; 0 right, 90 up"},
    {"style", ArgumentKind::Integer, 0, 2, "", "linear, radial, zoom; clamped"},
};

Raster moved(Raster source, Style style, const Arguments& arguments, Task& task) {
    const double distance = std::clamp(std::abs(arguments.number(0)), 0.0, farthest);
    // The way at the rim of the largest circle in the picture.
    const double turn = distance / (std::min(source.width(), source.height()) / 2.0);
    switch (style) {
    case Linear: {
        // Exact for the axes, so that they move along whole pixels.
        const double angle = std::remainder(arguments.number(2), 360) * std::numbers::pi / 180;
        const auto exact = [](double v) { return std::round(v * 1e12) / 1e12; };
        return streaked(source, distance, exact(std::cos(angle)), exact(-std::sin(angle)), task);
    }
    case Radial:
        return spun(std::move(source), std::min(turn, 2 * std::numbers::pi), task);
    default:
        return zoomed(std::move(source), std::min(turn, 4.0), task);
    }
}

Raster motionBlur(const Raster& picture, const Arguments& arguments, Task& task) {
    if (arguments.number(0) == 0) return picture;
    const Raster source = promoted(picture, task);
    const auto style = static_cast<Style>(std::clamp(arguments.integer(3), 0, int{Zoom}));
    const bool weighted = style != Linear && !isOpaque(source);
    Raster result = weighted ? multiplied(source, task) : source;
    const int steps = std::clamp(arguments.integer(1), 1, mostSteps);
    for (int step = 0; step < steps; ++step) {
        const Task::Stage stage(task, static_cast<double>(step) / steps,
                                static_cast<double>(step + 1) / steps);
        result = moved(std::move(result), style, arguments, task);
    }
    return weighted ? straightened(std::move(result), source, task) : result;
}

} // namespace

const Operation motionBlurOperation = {
    .name = "Geometry.MotionBlur",
    .undoName = "Motion Blur",
    .arguments = motionArguments,
    .run = motionBlur,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Smears the picture along a line, around its middle or towards it. Promotes unless "
            "the distance is 0.",
};

} // namespace kvn::imaging
