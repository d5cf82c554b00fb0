// Six fixed examples of a picture drawn in perspective.
#include <array>

#include "basic/error.h"
#include "basic/numbers.h"
#include "document/frmMain.h"
#include "document/working_copy.h"
#include "effects/groups.h"
#include "engine/operations.h"

namespace kvn::effects {
namespace {

// A corner as parts of the picture's width and height, and a fixed shift in pixels.
struct Coordinate {
    double width = 0, height = 0;
    int shift = 0;

    int at(double w, double h) const { return toInt32(w * width + h * height + shift); }
};
struct Corner {
    Coordinate x, y;
};

constexpr Coordinate zero{};
constexpr Coordinate right{1, 0, -1};  // the last column
constexpr Coordinate bottom{0, 1, -1}; // the last row

// From the lower left corner by the upper two to the lower right one.
using Corners = std::array<Corner, 4>;
constexpr Corners whole{{{zero, bottom}, {zero, zero}, {right, zero}, {right, bottom}}};
constexpr Corners rightToLeft{
    {{zero, bottom}, {zero, zero}, {right, {0, 0.25}}, {right, {0, 0.75}}}};
constexpr Corners bottomToTop{
    {{{0.25, 0}, {0, 0.75}}, {zero, zero}, {right, zero}, {{0.75, 0}, {0, 0.75}}}};

struct Example {
    Corners corners;
    bool maps; // between the corners and the whole picture, in place of one onto the other
};

constexpr Example examples[] = {
    {rightToLeft, false},
    {bottomToTop, false},
    // The right side moves in by a quarter of the height, and ends below the picture.
    {{{{zero, bottom}, {zero, zero}, {{1, -0.25}, bottom}, {{1, -0.25}, {0, 1.25}}}}, false},
    {{{{{0.75, 0}, bottom}, {zero, zero}, {right, zero}, {right, bottom}}}, false},
    {rightToLeft, true},
    {bottomToTop, true},
};

std::array<engine::Point, 4> points(const Corners& corners, const engine::Info& picture) {
    const double w = picture.Width(), h = picture.Height();
    std::array<engine::Point, 4> result;
    for (std::size_t i = 0; i < corners.size(); ++i)
        result[i] = {corners[i].x.at(w, h), corners[i].y.at(w, h)};
    return result;
}

// Works on the shown picture, whose old content the working copy then brings back: the example
// stands in the undo list, one step back.
void show(frmMain& document, const Example& example) {
    const auto p = points(example.corners, document.imgxAction->Info());
    engine::Geometry geometry = document.ImgX->Geometry();
    if (example.maps) {
        const auto q = points(whole, document.ImgX->Info());
        geometry.PerspectiveMap(p[0], p[1], p[2], p[3], q[0], q[1], q[2], q[3], 0, {});
    } else {
        geometry.Perspective(p[0], p[1], p[2], p[3], 1, {});
    }
}

void perspectiveExample(frmMain& document, int index) {
    try {
        document::SetImage2Buffer(document);
        if (index >= 0 && index < static_cast<int>(std::size(examples)))
            show(document, examples[index]);
        document::UpdateImage(document, document.ImgX->Image());
    } catch (const RuntimeError& error) {
        plainBox(document, error);
    }
}

constexpr document::Command commands[] = {
    {"EffectsPerspectiveExamples", perspectiveExample},
};

} // namespace

std::span<const document::Command> perspectiveExamples() {
    return commands;
}

} // namespace kvn::effects
