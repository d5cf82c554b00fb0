#include "imaging/operations/retouch/red_eye.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "imaging/operations/families.h"
#include "imaging/operations/retouch/red_patches.h"
#include "imaging/operations/support/color_maps.h"

namespace kvn::imaging {
namespace {

constexpr Argument redEyeArguments[] = {
    {"left", ArgumentKind::Integer, 0, 65535, "px", "first column of the rectangle"},
    {"top", ArgumentKind::Integer, 0, 65535, "px", "first row"},
    {"right", ArgumentKind::Integer, 0, 65535, "px", "the column after the last"},
    {"bottom", ArgumentKind::Integer, 0, 65535, "px", "the row after the last"},
    {"saturation", ArgumentKind::Integer, 0, 100, "%", "how pure the red must be; clamped"},
    {"range", ArgumentKind::Integer, 0, 100, "%", "how far the hue may be from red; clamped"},
};

// What counts as a pupil's red.
struct Redness {
    double least;    // of purity
    double farthest; // hue, as a share of 60 degrees

    // 0 for grey, 1 for nothing but red.
    static double purity(const std::uint8_t* p) {
        return p[0] == 0 ? 0 : std::max(0.0, double(p[0] - std::max(p[1], p[2])) / p[0]);
    }
    bool fits(const std::uint8_t* p) const {
        constexpr int leastRed = 40; // darker, the eye sees no colour
        if (p[0] < leastRed || purity(p) < least) return false;
        const int low = std::min(p[1], p[2]);
        return std::abs(p[1] - p[2]) <= farthest * (p[0] - low);
    }
};

// Yellowish red that is neither dark nor pure.
bool isSkin(const std::uint8_t* p) {
    return p[0] > 90 && p[0] > p[1] && p[1] + 12 >= p[2] && Redness::purity(p) > 0.06 &&
           Redness::purity(p) < 0.5;
}

class Eyes {
  public:
    Eyes(const ConstView& view, const Rect& area, const Redness& redness, Task& task)
        : view_(view), channels_(bytesPerPixel(view.type)), redness_(redness) {
        for (int y = area.y; y < area.bottom(); ++y) {
            findRuns(y, area);
            if (y % 64 == 0) task.report(double(y - area.y) / area.height);
        }
        for (const Patch& patch : joinRuns(runs_))
            if (isPupil(patch)) pupils_.push_back(patch);
    }

    const std::vector<Patch>& pupils() const { return pupils_; }

  private:
    const std::uint8_t* pixel(int x, int y) const { return view_.row(y) + x * channels_; }

    void findRuns(int y, const Rect& area) {
        const int end = static_cast<int>(area.right());
        for (int x = area.x; x < end; ++x) {
            if (!redness_.fits(pixel(x, y))) continue;
            const int begin = x;
            while (x < end && redness_.fits(pixel(x, y)))
                ++x;
            runs_.push_back({y, begin, x});
        }
    }

    bool isPupil(const Patch& patch) const {
        constexpr int leastArea = 6;
        if (patch.area < leastArea) return false;
        const double sides = double(patch.bounds.width) / patch.bounds.height;
        if (sides < 0.5 || sides > 2 || patch.elongation > 1.8 || patch.filling < 0.45)
            return false;
        const Ring ring = ringAround(patch);
        return ring.skin < 0.75 && ring.purity < 0.65 * purityOf(patch);
    }

    // Of a ring around a patch: the share of skin, and how red it is. Around a pupil there are iris
    // and white.
    struct Ring {
        double skin = 0, purity = 0;
    };
    Ring ringAround(const Patch& patch) const {
        const double radius = std::max(patch.bounds.width, patch.bounds.height) / 2.0;
        constexpr int steps = 48;
        Ring sum;
        int seen = 0;
        for (const double distance : {1.2 * radius + 1.5, 1.45 * radius + 2})
            for (int i = 0; i < steps; ++i) {
                const double angle = 2 * std::numbers::pi * i / steps;
                const auto x = std::lround(patch.middleX + distance * std::cos(angle));
                const auto y = std::lround(patch.middleY + distance * std::sin(angle));
                if (x < 0 || y < 0 || x >= view_.width || y >= view_.height) continue;
                const std::uint8_t* p = pixel(static_cast<int>(x), static_cast<int>(y));
                ++seen;
                sum.skin += isSkin(p);
                sum.purity += Redness::purity(p);
            }
        if (seen == 0) return {};
        return {sum.skin / seen, sum.purity / seen};
    }

    // The mean of what was found red in the patch.
    double purityOf(const Patch& patch) const {
        double sum = 0;
        int count = 0;
        for (int y = patch.bounds.y; y < patch.bounds.bottom(); ++y)
            for (int x = patch.bounds.x; x < patch.bounds.right(); ++x)
                if (redness_.fits(pixel(x, y))) {
                    sum += Redness::purity(pixel(x, y));
                    ++count;
                }
        return sum / std::max(1, count);
    }

    ConstView view_;
    int channels_;
    Redness redness_;
    std::vector<MarkedRun> runs_;
    std::vector<Patch> pupils_;
};

double smoothStep(double from, double to, double value) {
    const double t = std::clamp((value - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

constexpr double brightestPupil = 60; // of its green and blue

// Takes the red out of a disc a little larger than the pupil. At its soft rim pixels are red in
// part only, and still too red for an iris.
void darken(const Patch& patch, double least, const View& view) {
    const int channels = bytesPerPixel(view.type);
    const double halfWidth = patch.bounds.width / 2.0, halfHeight = patch.bounds.height / 2.0;
    const double centreX = patch.bounds.x + halfWidth - 0.5,
                 centreY = patch.bounds.y + halfHeight - 0.5;
    const double margin = 1.5 + 0.25 * std::max(halfWidth, halfHeight);
    const Rect reach = Rect{static_cast<int>(centreX - halfWidth - margin) - 1,
                            static_cast<int>(centreY - halfHeight - margin) - 1,
                            static_cast<int>(2 * (halfWidth + margin)) + 3,
                            static_cast<int>(2 * (halfHeight + margin)) + 3}
                           .intersected({0, 0, view.width, view.height});
    for (int y = reach.y; y < reach.bottom(); ++y)
        for (int x = reach.x; x < reach.right(); ++x) {
            const double across = (x - centreX) / (halfWidth + margin);
            const double down = (y - centreY) / (halfHeight + margin);
            std::uint8_t* p = view.row(y) + x * channels;
            const double inside = smoothStep(1, 0.85, across * across + down * down);
            const double purity = Redness::purity(p);
            const double weight = inside * smoothStep(0.12, 0.6 * least, purity);
            const double neutral = (p[1] + p[2]) / 2.0;
            // Pale red would leave a light grey, which no pupil is.
            const double depth = 1 - inside * smoothStep(0.6 * least, least, purity) *
                                         (1 - brightestPupil / std::max(brightestPupil, neutral));
            const double red = p[0] > neutral ? p[0] + weight * (neutral - p[0]) : p[0];
            p[0] = static_cast<std::uint8_t>(std::lround(red * depth));
            p[1] = static_cast<std::uint8_t>(std::lround(p[1] * depth));
            p[2] = static_cast<std::uint8_t>(std::lround(p[2] * depth));
        }
}

Raster redEyeReduction(const Raster& source, const Arguments& arguments, Task& task) {
    if (source.type() == ImageType::Gray8 || source.type() == ImageType::GrayAlpha16) return source;
    const int left = std::max(0, arguments.integer(0)), top = std::max(0, arguments.integer(1));
    const int right = std::min(source.width(), arguments.integer(2));
    const int bottom = std::min(source.height(), arguments.integer(3));
    if (left >= right || top >= bottom) return source;
    const Redness redness{0.25 + 0.5 * std::clamp(arguments.integer(4), 0, 100) / 100.0,
                          std::clamp(arguments.integer(5), 0, 100) / 100.0 * 50 / 60};
    Raster result = promoted(source, task);
    const Eyes eyes(result.view(), {left, top, right - left, bottom - top}, redness, task);
    if (eyes.pupils().empty()) return source;
    const View view = result.edit();
    for (const Patch& pupil : eyes.pupils())
        darken(pupil, redness.least, view);
    return result;
}

} // namespace

const Operation redEyeOperation = {
    .name = "Effects.RedEyeReduction",
    .undoName = "Red Eye Reduction",
    .arguments = redEyeArguments,
    .run = redEyeReduction,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Finds red pupils in the rectangle and makes them dark.",
};

std::span<const Operation* const> retouchOperations() {
    static constexpr const Operation* list[] = {&redEyeOperation};
    return list;
}

} // namespace kvn::imaging
