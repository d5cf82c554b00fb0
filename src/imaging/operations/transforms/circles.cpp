// Spin, SpinWave, Lens, Pinch, Ripple and Wow.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "imaging/operations/transforms/radial.h"
#include "imaging/operations/transforms/transforms.h"

namespace kvn::imaging {
namespace {

constexpr double pi = std::numbers::pi;

constexpr Argument radiusArgument = {"maxRadius", ArgumentKind::Number,
                                     0,           65535,
                                     "px",        "nothing changes beyond; below 1 nothing does"};
constexpr Argument offsetXArgument = {"offsetX", ArgumentKind::Integer,
                                      -65535,    65535,
                                      "px",      "the centre, right of the picture's middle"};
constexpr Argument offsetYArgument = {"offsetY", ArgumentKind::Integer,
                                      -65535,    65535,
                                      "px",      "the centre, below the picture's middle"};
constexpr Argument angleArgument = {"maxAngleOffset",
                                    ArgumentKind::Number,
                                    -3600,
                                    3600,
                                    "degrees",
                                    "the largest turn, clockwise; clamped"};

double radians(double degrees) {
    return std::clamp(degrees, -3600.0, 3600.0) * pi / 180;
}

double periodsFrom(const Arguments& arguments, std::size_t i) {
    return std::clamp(arguments.number(i), -1000.0, 1000.0);
}

// Centres further out than any picture is long are as good as this far.
RadialDistortion about(const Arguments& arguments, std::size_t firstOffset, double radius) {
    constexpr int farthest = 200'000;
    return {
        static_cast<double>(std::clamp(arguments.integer(firstOffset), -farthest, farthest)),
        static_cast<double>(std::clamp(arguments.integer(firstOffset + 1), -farthest, farthest)),
        radius};
}

constexpr Argument spinArguments[] = {radiusArgument, angleArgument, offsetXArgument,
                                      offsetYArgument};

Raster spin(const Raster& source, const Arguments& arguments, Task& task) {
    const double radius = arguments.number(0), angle = radians(arguments.number(1));
    if (angle == 0) return source;
    return radiallyDistorted(source, about(arguments, 2, radius), task, [=](double r) {
        const double u = std::min(1.0, r / radius);
        return RadialPlace{r, angle * (1 - u * u * (3 - 2 * u))};
    });
}

constexpr Argument spinWaveArguments[] = {radiusArgument,
                                          angleArgument,
                                          {"wavePeriod", ArgumentKind::Number, 0, 100, "",
                                           "waves from the centre to the radius; clamped"},
                                          offsetXArgument,
                                          offsetYArgument};

Raster spinWave(const Raster& source, const Arguments& arguments, Task& task) {
    const double radius = arguments.number(0), angle = radians(arguments.number(1));
    const double periods = periodsFrom(arguments, 2);
    if (angle == 0 || periods == 0) return source;
    return radiallyDistorted(source, about(arguments, 3, radius), task, [=](double r) {
        const double u = std::min(1.0, r / radius);
        return RadialPlace{r, angle * (1 - u) * std::sin(2 * pi * periods * u)};
    });
}

constexpr Argument lensArguments[] = {radiusArgument, offsetXArgument, offsetYArgument};

Raster lens(const Raster& source, const Arguments& arguments, Task& task) {
    const double radius = arguments.number(0);
    return radiallyDistorted(source, about(arguments, 1, radius), task, [=](double r) {
        return RadialPlace{radius * 2 / pi * std::asin(std::min(1.0, r / radius)), 0};
    });
}

constexpr Argument pinchArguments[] = {radiusArgument,
                                       {"amount", ArgumentKind::Number, -100, 100, "",
                                        "draws inwards, below 0 pushes outwards; clamped"},
                                       offsetXArgument,
                                       offsetYArgument};

Raster pinch(const Raster& source, const Arguments& arguments, Task& task) {
    const double radius = arguments.number(0);
    const double amount = std::clamp(arguments.number(1), -100.0, 100.0);
    if (amount == 0) return source;
    const double exponent = std::exp2(-amount / 20);
    return radiallyDistorted(source, about(arguments, 2, radius), task, [=](double r) {
        return RadialPlace{radius * std::pow(std::min(1.0, r / radius), exponent), 0};
    });
}

constexpr Argument rippleArguments[] = {
    {"style", ArgumentKind::Integer, 0, 4, "",
     "damping: 0 full, 1 linear, 2 square, 3 sine, 4 cosine", false, true},
    {"maxRadius", ArgumentKind::Integer, 0, 65535, "px",
     "nothing changes beyond; below 1 nothing does"},
    {"amount", ArgumentKind::Integer, -1000, 1000, "px", "from trough to crest; clamped"},
    {"periods", ArgumentKind::Number, 0, 100, "", "waves from the centre to the radius; clamped"},
    offsetXArgument,
    offsetYArgument};

double damping(int style, double u) {
    switch (style) {
    case 1:
        return 1 - u;
    case 2:
        return (1 - u) * (1 - u);
    case 3:
        return std::sin(pi * u);
    case 4:
        return std::cos(pi / 2 * u);
    default:
        return 1;
    }
}

Raster ripple(const Raster& source, const Arguments& arguments, Task& task) {
    const int style = arguments.integer(0);
    const double radius = arguments.integer(1);
    const double height = std::clamp(arguments.integer(2), -1000, 1000) / 2.0;
    const double periods = periodsFrom(arguments, 3);
    if (height == 0 || periods == 0) return source;
    return radiallyDistorted(source, about(arguments, 4, radius), task, [=](double r) {
        const double u = std::min(1.0, r / radius);
        return RadialPlace{r + height * damping(style, u) * std::sin(2 * pi * periods * u), 0};
    });
}

constexpr Argument wowArguments[] = {
    {"style", ArgumentKind::Integer, 0, 1, "", "0 draws the rim out into rays, 1 mirrors rings",
     false, true},
    {"maxRadius", ArgumentKind::Integer, 0, 65535, "px",
     "nothing changes within; below 1 nothing does"},
};

Raster wow(const Raster& source, const Arguments& arguments, Task& task) {
    const bool mirrored = arguments.integer(0) == 1;
    const double radius = arguments.integer(1);
    const RadialDistortion distortion{0, 0, radius, true};
    return radiallyDistorted(source, distortion, task, [=](double r) {
        if (!mirrored) return RadialPlace{std::min(r, radius), 0};
        return RadialPlace{radius - std::abs(radius - std::fmod(r, 2 * radius)), 0};
    });
}

} // namespace

const Operation spinOperation = {
    .name = "Transforms.Spin",
    .undoName = "Spin",
    .arguments = spinArguments,
    .run = spin,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Twirls the picture about a centre. Promotes as all distortions do, unless nothing "
            "moves.",
};

const Operation spinWaveOperation = {
    .name = "Transforms.SpinWave",
    .undoName = "Spin Wave",
    .arguments = spinWaveArguments,
    .run = spinWave,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Turns rings about a centre to and fro. Promotes unless nothing moves.",
};

const Operation lensOperation = {
    .name = "Transforms.Lens",
    .undoName = "Lens",
    .arguments = lensArguments,
    .run = lens,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Lays a ball of glass on the picture. Promotes unless nothing moves.",
};

const Operation pinchOperation = {
    .name = "Transforms.Pinch",
    .undoName = "Pinch",
    .arguments = pinchArguments,
    .run = pinch,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Draws the picture towards a centre. Promotes unless nothing moves.",
};

const Operation rippleOperation = {
    .name = "Transforms.Ripple",
    .undoName = "Ripple",
    .arguments = rippleArguments,
    .run = ripple,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Circular waves about a centre. Promotes unless nothing moves.",
};

const Operation wowOperation = {
    .name = "Transforms.Wow",
    .undoName = "Wow",
    .arguments = wowArguments,
    .run = wow,
    .border = -1,
    .types = TypeRule::Fixed,
    .note = "Rays or mirrored rings about a circle in the middle. Promotes unless nothing moves.",
};

} // namespace kvn::imaging
