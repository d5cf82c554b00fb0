// Geometry.HugoNoise and Geometry.PerlinNoise.
#include <algorithm>
#include <vector>

#include "imaging/operations/generate/generate.h"
#include "imaging/operations/generate/octave.h"
#include "imaging/operations/support/result_size.h"
#include "imaging/operations/support/simd.h"

namespace kvn::imaging {
namespace {

constexpr int mostOctaves = 12;

constexpr Argument hugoArguments[] = {
    {"width", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"height", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"octaves", ArgumentKind::Integer, 1, mostOctaves, "", "how many scales; clamped"},
    {"smoothness", ArgumentKind::Integer, 0, 100, "%", "how weak the fine scales are; clamped"},
    {"size", ArgumentKind::Integer, 0, 100, "%", "of the largest cells; clamped"},
};
constexpr Argument perlinArguments[] = {
    {"width", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"height", ArgumentKind::Integer, 1, longestSide, "px", "of the picture"},
    {"size", ArgumentKind::Integer, 0, 100, "%", "of the largest cells; clamped"},
};

// The octaves of a picture, from the largest cells on.
struct Recipe {
    Size size;
    NoiseKind kind = NoiseKind::Value;
    std::uint32_t seed = 0;
    std::vector<double> cells;
    double persistence = 0.5; // of an octave's strength against the one before
};

class NoiseRows {
  public:
    explicit NoiseRows(const Recipe& recipe) : sum_(static_cast<std::size_t>(recipe.size.width)) {
        float weight = 1;
        for (const double cell : recipe.cells) {
            const auto number = static_cast<std::uint32_t>(octaves_.size());
            octaves_.push_back({recipe.kind, recipe.size.width, cell, recipe.seed + number});
            weights_.push_back(weight);
            weight *= static_cast<float>(recipe.persistence);
        }
    }
    const std::vector<float>& row(int y) {
        std::fill(sum_.begin(), sum_.end(), 0.0f);
        for (std::size_t i = 0; i < octaves_.size(); ++i)
            octaves_[i].addRow(y, weights_[i], sum_.data());
        return sum_;
    }

  private:
    std::vector<Octave> octaves_;
    std::vector<float> weights_, sum_;
};

struct Range {
    float low = 0, high = 0;
};

// What a few rows reach.
Range rangeOf(const Recipe& recipe) {
    constexpr int samples = 48;
    NoiseRows rows(recipe);
    Range range{1e9f, -1e9f};
    for (int i = 0; i < samples; ++i) {
        const auto& row =
            rows.row(static_cast<int>(std::int64_t{i} * recipe.size.height / samples));
        const auto [low, high] = std::minmax_element(row.begin(), row.end());
        range = {std::min(range.low, *low), std::max(range.high, *high)};
    }
    return range;
}

KVN_CLONES void toGray(const float* values, float low, float scale, int count, std::uint8_t* out) {
    for (int x = 0; x < count; ++x) {
        const float gray = 4 + (values[x] - low) * scale;
        out[x] = static_cast<std::uint8_t>(std::min(255.0f, std::max(0.0f, gray + 0.5f)));
    }
}

Raster drawn(const Recipe& recipe, Task& task) {
    Raster result = Raster::uninitialized(ImageType::Gray8, recipe.size.width, recipe.size.height);
    const View view = result.edit();
    const Range range = rangeOf(recipe);
    const float scale = 247 / std::max(1e-6f, range.high - range.low);
    parallelRows(view.height, task, [&](int y0, int y1) {
        NoiseRows rows(recipe);
        for (int y = y0; y < y1; ++y)
            toGray(rows.row(y).data(), range.low, scale, view.width, view.row(y));
    });
    return result;
}

double cellFor(Size size, int percent) {
    return std::max(size.width, size.height) * std::clamp(percent, 0, 100) / 100.0;
}

Raster hugoNoise(const Raster&, const Arguments& arguments, Task& task) {
    Recipe recipe;
    recipe.size =
        checkedResultSize(arguments.integer(0), arguments.integer(1), "Geometry.HugoNoise");
    recipe.seed = 1998;
    recipe.persistence = 0.9 - 0.7 * std::clamp(arguments.integer(3), 0, 100) / 100;
    double cell = cellFor(recipe.size, arguments.integer(4));
    for (int left = std::clamp(arguments.integer(2), 1, mostOctaves); left > 0; --left, cell /= 2)
        if (recipe.cells.empty() || cell >= 1) recipe.cells.push_back(std::max(1.0, cell));
    return drawn(recipe, task);
}

Raster perlinNoise(const Raster&, const Arguments& arguments, Task& task) {
    Recipe recipe;
    recipe.size =
        checkedResultSize(arguments.integer(0), arguments.integer(1), "Geometry.PerlinNoise");
    recipe.kind = NoiseKind::Gradient;
    recipe.seed = 2002;
    constexpr double least = 3;
    double cell = std::max(least, cellFor(recipe.size, arguments.integer(2)));
    for (; cell >= least; cell /= 2)
        recipe.cells.push_back(cell);
    return drawn(recipe, task);
}

} // namespace

const Operation hugoNoiseOperation = {
    .name = "Geometry.HugoNoise",
    .undoName = "Hugo Noise",
    .arguments = hugoArguments,
    .run = hugoNoise,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "Makes a grey picture of smoothed random values.",
    .needsSource = false,
};

const Operation perlinNoiseOperation = {
    .name = "Geometry.PerlinNoise",
    .undoName = "Perlin Noise",
    .arguments = perlinArguments,
    .run = perlinNoise,
    .alpha = AlphaRule::Defines,
    .types = TypeRule::Fixed,
    .note = "Makes a grey picture of gradient noise at all scales.",
    .needsSource = false,
};

} // namespace kvn::imaging
