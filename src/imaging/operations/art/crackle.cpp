// Geometry.Crackle.
#include <algorithm>
#include <cmath>
#include <vector>

#include "imaging/operations/art/art.h"
#include "imaging/operations/art/cells.h"
#include "imaging/operations/support/color_maps.h"
#include "imaging/operations/support/hidden_colors.h"
#include "imaging/operations/support/simd.h"
#include "imaging/operations/transforms/noise_field.h"

namespace kvn::imaging {
namespace {

constexpr std::uint32_t seedOfCells = 71;
constexpr std::uint32_t seedOfBends = 331;
constexpr std::uint32_t seedOfPlates = 977;
constexpr int modes = 5;

constexpr Argument crackleArguments[] = {
    {"depth", ArgumentKind::Integer, 0, 100, "%", "of the cracks; clamped"},
    {"mode", ArgumentKind::Integer, 0, modes - 1, "",
     "glaze, old paint, dry earth, broken glass, gold seams; clamped"},
};

// Lengths in U; a pair is the value at depth 0 and what depth 100 adds.
struct Look {
    float plate;       // width of the plates
    float fine;        // width of the finer plates within, as a share; 0: none
    float bend;        // how far cracks leave the straight line, as a share of the plate
    float width[2];    // half the width of a crack
    float darkness[2]; // of the crack, 0..1
    float rim;         // of the plate, where it is lit
    float relief[2];   // steepness of the rim; below 0 it curls up
    float tone[2];     // how far plates differ in brightness
    float shift[2];    // how far plates slide
    bool gold;         // cracks are filled
};

constexpr Look looks[modes] = {
    {62, 0.42f, 0.35f, {0.5f, 1.0f}, {0.3f, 0.65f}, 3, {0.02f, 0.08f}, {}, {}, false},
    {30, 0.55f, 0.3f, {0.4f, 0.9f}, {0.35f, 0.6f}, 9, {-0.1f, -0.45f}, {0, 0.08f}, {}, false},
    {85, 0.38f, 0.4f, {1.0f, 5.0f}, {0.6f, 0.38f}, 16, {0.15f, 0.6f}, {0.02f, 0.16f}, {}, false},
    {150, 0, 0, {0.4f, 0.8f}, {-0.3f, -0.5f}, 7, {0.1f, 0.5f}, {0.03f, 0.2f}, {3, 26}, false},
    {165, 0.45f, 0.35f, {0.7f, 3.2f}, {0.9f, 0.1f}, 5, {0.02f, 0.12f}, {}, {}, true},
};
constexpr float goldColor[3] = {222, 172, 62};

float atDepth(const float (&pair)[2], float depth) {
    return pair[0] + pair[1] * depth;
}

// The look for one picture, in pixels.
struct Cracks {
    float halfWidth, darkness, rim, relief, tone, shift;
    bool gold;

    Cracks(const Look& look, float depth, float unit)
        : halfWidth(std::max(0.4f, atDepth(look.width, depth) * unit)),
          darkness(atDepth(look.darkness, depth)), rim(std::max(1.0f, look.rim * unit)),
          relief(atDepth(look.relief, depth)), tone(atDepth(look.tone, depth)),
          shift(atDepth(look.shift, depth) * unit), gold(look.gold) {}
};

// What becomes of the pixels of a row.
struct Marks {
    explicit Marks(int count)
        : factor(static_cast<std::size_t>(count)), cover(factor.size()), glint(factor.size()) {}
    std::vector<float> factor; // of the plate's brightness
    std::vector<float> cover;  // how much of the pixel is crack
    std::vector<float> glint;  // which way the crack's wall looks, -1..1
};

// Distances from the cracks between two plates. The lamp stands at the upper left. `share` makes
// finer cracks narrower and fainter; they add to the marks that are there.
KVN_CLONES void markRow(const NearSeeds& near, const Cracks& cracks, float share, bool first,
                        float* __restrict factor, float* __restrict cover, float* __restrict glint,
                        int count) {
    constexpr float lamp = -0.70710678f;
    const float *px = near.placeX.data(), *py = near.placeY.data();
    const float *ax = near.x.data(), *ay = near.y.data();
    const float *bx = near.otherX.data(), *by = near.otherY.data();
    const float width = cracks.halfWidth * share, rim = cracks.rim * share;
    const float blur = width > 0.6f ? 1 / (1.0f + 0.5f * width) : 1 / 1.3f;
    const float kept = first ? 0 : 1; // of the marks that are there
    for (int i = 0; i < count; ++i) {
        const float dx = ax[i] - bx[i], dy = ay[i] - by[i];
        const float scale = inverseRoot(dx * dx + dy * dy + 1e-6f);
        const float nx = dx * scale, ny = dy * scale; // away from the crack
        // From the line half-way between the two seeds.
        const float distance =
            (px[i] - (ax[i] + bx[i]) / 2) * nx + (py[i] - (ay[i] + by[i]) / 2) * ny;
        float inside = (width - distance) * blur + 0.5f;
        inside = inside < 0 ? 0 : inside;
        inside = inside > 1 ? 1 : inside;
        inside = inside * inside * (3 - 2 * inside) * share;
        float slope = 1 - (distance - width) / rim;
        slope = slope < 0 ? 0 : slope;
        slope = slope > 1 ? 1 : slope;
        const float towards = -(nx + ny) * lamp; // of the plate's edge to the lamp
        const float lit = 1 + cracks.relief * share * slope * slope * towards;
        factor[i] = lit * (1 - kept) + lit * factor[i] * kept;
        float across = distance / (width + 0.5f);
        across = across < 1 ? across : 1;
        const float before = cover[i] * kept, glintBefore = glint[i];
        glint[i] = inside > before ? towards * across : glintBefore;
        cover[i] = inside > before ? inside : before;
    }
}

// What is random about a plate.
struct Plate {
    float brightness;
    int slideX, slideY;
};

std::vector<Plate> platesOf(const Cells& cells, const Cracks& cracks) {
    std::vector<Plate> plates(static_cast<std::size_t>(cells.count()));
    for (std::uint32_t i = 0; i < plates.size(); ++i) {
        const auto within = [i](float most, std::uint32_t which) {
            return most * (2 * randomShare(i, seedOfPlates + which) - 1);
        };
        plates[i] = {1 + within(cracks.tone, 0),
                     static_cast<int>(std::lround(within(cracks.shift, 1))),
                     static_cast<int>(std::lround(within(cracks.shift, 2)))};
    }
    return plates;
}

void tonePlates(const NearSeeds& near, const std::vector<Plate>& plates, Marks& marks) {
    for (std::size_t i = 0; i < marks.factor.size(); ++i)
        marks.factor[i] *= plates[static_cast<std::size_t>(near.seed[i])].brightness;
}

std::uint8_t level(float value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0f, 255.0f) + 0.5f);
}

template <int channels, int colors>
void paintRow(const Marks& marks, const Cracks& cracks, const std::uint8_t* in, std::uint8_t* out) {
    float fill[3] = {0, 0, 0};
    if (cracks.darkness < 0) std::fill_n(fill, 3, 255.0f);
    if (cracks.gold) std::copy_n(goldColor, 3, fill);
    if (cracks.gold && colors == 1)
        fill[0] =
            luma(static_cast<int>(fill[0]), static_cast<int>(fill[1]), static_cast<int>(fill[2]));
    const float strength = std::abs(cracks.darkness);
    for (std::size_t x = 0; x < marks.factor.size(); ++x, in += channels, out += channels) {
        const float share = marks.cover[x] * strength;
        const float shine = cracks.gold ? 1 + 0.45f * marks.glint[x] : 1;
        for (int c = 0; c < colors; ++c)
            out[c] = level(in[c] * marks.factor[x] * (1 - share) + fill[c] * shine * share);
        if constexpr (colors < channels) out[colors] = in[colors];
    }
}

// The row as its plates have slid. Alpha stays.
template <int channels, int colors>
void slide(const ConstView& from, int y, const NearSeeds& near, const std::vector<Plate>& plates,
           std::uint8_t* out) {
    const std::uint8_t* own = from.row(y);
    for (int x = 0; x < from.width; ++x, out += channels, own += channels) {
        const Plate& plate =
            plates[static_cast<std::size_t>(near.seed[static_cast<std::size_t>(x)])];
        const int fromX = std::clamp(x + plate.slideX, 0, from.width - 1);
        const int fromY = std::clamp(y + plate.slideY, 0, from.height - 1);
        const std::uint8_t* pixel = from.row(fromY) + fromX * channels;
        for (int c = 0; c < colors; ++c)
            out[c] = pixel[c];
        if constexpr (colors < channels) out[colors] = own[colors];
    }
}

struct Kernels {
    decltype(&paintRow<1, 1>) paint;
    decltype(&slide<1, 1>) slide;
};
template <int channels, int colors>
constexpr Kernels kernelsOf = {paintRow<channels, colors>, slide<channels, colors>};
constexpr Kernels kernelsFor[] = {kernelsOf<1, 1>, kernelsOf<2, 1>, kernelsOf<3, 3>,
                                  kernelsOf<4, 3>};

class Crackle {
  public:
    Crackle(const Look& look, float depth, float unit, Size size)
        : look_(look), cracks_(look, depth, unit),
          plates_(size, std::max(4.0f, look.plate * unit), 0.9, seedOfCells),
          fine_(size, std::max(3.0f, look.plate * look.fine * unit), 0.9, seedOfCells + 9),
          bend_(look.bend * std::max(4.0f, look.plate * unit)),
          across_(size, bendSide(), bendSide(), seedOfBends),
          down_(size, bendSide(), bendSide(), seedOfBends + 50),
          random_(platesOf(plates_, cracks_)) {}

    void band(const ConstView& from, const View& to, int y0, int y1) const {
        NearSeeds near(from.width);
        Marks marks(from.width);
        std::vector<std::uint8_t> slid(cracks_.shift > 0 ? rowBytes(from.type, from.width) : 0);
        const Kernels& kernels = kernelsFor[bytesPerPixel(from.type) - 1];
        for (int y = y0; y < y1; ++y) {
            bendPlaces(y, from.width, near);
            plates_.find(y, from.width, near);
            mark(near, 1, true, marks);
            if (cracks_.tone > 0) tonePlates(near, random_, marks);
            if (cracks_.shift > 0) kernels.slide(from, y, near, random_, slid.data());
            if (look_.fine > 0) {
                fine_.find(y, from.width, near);
                mark(near, 0.55f, false, marks);
            }
            kernels.paint(marks, cracks_, slid.empty() ? from.row(y) : slid.data(), to.row(y));
        }
    }

  private:
    double bendSide() const { return bend_ > 0 ? bend_ * 2.8 + 2 : 1000; }

    void bendPlaces(int y, int width, NearSeeds& near) const {
        across_.row(y, 0, width, near.placeX.data());
        down_.row(y, 0, width, near.placeY.data());
        // Not beyond what the search for seeds looks at.
        const float most = 0.5f * bend_ / std::max(look_.bend, 0.01f) * look_.fine;
        for (int x = 0; x < width; ++x) {
            const auto i = static_cast<std::size_t>(x);
            const auto bent = [&](float noise) { return std::clamp(noise * bend_, -most, most); };
            near.placeX[i] = static_cast<float>(x) + bent(near.placeX[i]);
            near.placeY[i] = static_cast<float>(y) + bent(near.placeY[i]);
        }
    }

    void mark(const NearSeeds& near, float share, bool first, Marks& marks) const {
        markRow(near, cracks_, share, first, marks.factor.data(), marks.cover.data(),
                marks.glint.data(), static_cast<int>(marks.factor.size()));
    }

    const Look& look_;
    const Cracks cracks_;
    const Cells plates_, fine_;
    const float bend_;
    const NoiseField across_, down_;
    const std::vector<Plate> random_;
};

Raster crackle(const Raster& picture, const Arguments& arguments, Task& task) {
    const float depth = static_cast<float>(std::clamp(arguments.integer(0), 0, 100)) / 100;
    if (depth == 0) return picture;
    const Look& look = looks[std::clamp(arguments.integer(1), 0, modes - 1)];
    const Raster source = promoted(picture, task);
    const float unit = static_cast<float>(std::min(source.width(), source.height())) / 1000;
    const Crackle cracks(look, depth, unit, source.size());
    Raster result = Raster::uninitialized(source.type(), source.width(), source.height());
    const ConstView from = source.view();
    const View to = result.edit();
    parallelRows(from.height, task, [&](int y0, int y1) { cracks.band(from, to, y0, y1); });
    return result;
}

} // namespace

const Operation crackleOperation = {
    .name = "Geometry.Crackle",
    .undoName = "Crackle",
    .arguments = crackleArguments,
    .run = overVisibleColors<crackle>,
    .border = -1,
    .alpha = AlphaRule::ColorOnly,
    .note = "Breaks the picture like glaze, paint, earth, glass, or mends it with gold.",
};

} // namespace kvn::imaging
