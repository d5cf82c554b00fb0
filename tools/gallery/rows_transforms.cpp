#include "rows.h"

namespace kvn::gallery {
namespace {

constexpr Row circles[] = {
    {"Spin", "Transforms.Spin 200 45 0 0", Source::Large},
    {"Spin, moved", "Transforms.Spin 120 180 80 -40", Source::Large},
    {"Spin Wave", "Transforms.SpinWave 200 45 3 0 0", Source::Large},
    {"Lens", "Transforms.Lens 200 0 0", Source::Large},
    {"Lens, small and moved", "Transforms.Lens 90 -80 40", Source::Large},
    {"Pinch", "Transforms.Pinch 200 10 0 0", Source::Large},
    {"Pinch, amount -10", "Transforms.Pinch 200 -10 0 0", Source::Large},
    {"Ripple, Full Intensity", "Transforms.Ripple 0 200 10 4 0 0", Source::Large},
    {"Ripple, Linear", "Transforms.Ripple 1 200 10 4 0 0", Source::Large},
    {"Ripple, Square", "Transforms.Ripple 2 200 10 4 0 0", Source::Large},
    {"Ripple, Sine", "Transforms.Ripple 3 200 10 4 0 0", Source::Large},
    {"Ripple, Cosine", "Transforms.Ripple 4 200 10 4 0 0", Source::Large},
    {"Wow, Stretch", "Transforms.Wow 0 200", Source::Large},
    {"Wow, Wow", "Transforms.Wow 1 200", Source::Large},
    {"Wow, Stretch, radius 90", "Transforms.Wow 0 90", Source::Large},
    {"Wow, Wow, radius 90", "Transforms.Wow 1 90", Source::Large},
    {"Custom", "Transforms.Custom", Source::Large},
};
constexpr Row waves[] = {
    {"Wave, X Sine", "Transforms.Wave 0 20 2", Source::Large},
    {"Wave, Y Sine", "Transforms.Wave 1 20 2", Source::Large},
    {"Wave, X Cosine", "Transforms.Wave 2 20 2", Source::Large},
    {"Wave, Y Cosine", "Transforms.Wave 3 20 2", Source::Large},
    {"Zig Zag, Horizontal", "Transforms.ZigZag 0 20 4", Source::Large},
    {"Zig Zag, Vertical", "Transforms.ZigZag 1 20 4", Source::Large},
    {"Line Slice, X", "Transforms.LineSlice 0 100 250", Source::Large},
    {"Line Slice, Y", "Transforms.LineSlice 1 100 250", Source::Large},
    {"Offset, No Wrap", "Transforms.Offset 0 10 50", Source::Large},
    {"Offset, Wrap Both", "Transforms.Offset 1 10 50", Source::Large},
    {"Offset, Wrap X", "Transforms.Offset 2 10 50", Source::Large},
    {"Offset, Wrap Y", "Transforms.Offset 3 10 50", Source::Large},
};
constexpr Row rough[] = {
    {"Random", "Transforms.Random 10", Source::Large},
    {"Marble", "Transforms.Marble 10 5 5", Source::Large},
    {"Perlin", "Transforms.Perlin 10 10 50", Source::Large},
    {"Bump Map", "Transforms.BumpMap 10 bump.png", Source::Large},
};

constexpr Section sections[] = {
    {"Distortions around a centre", circles},
    {"Distortions along the sides", waves},
    {"Distortions by a field", rough},
};

} // namespace

std::span<const Section> transformSections() {
    return sections;
}

} // namespace kvn::gallery
