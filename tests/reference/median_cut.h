// The plainest way to a palette: boxes cut at their median (P. Heckbert 1982). A yardstick.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "imaging/raster.h"

namespace reference {

inline kvn::imaging::Palette medianCut(const kvn::imaging::Raster& picture, int colors) {
    using Pixels = std::vector<std::array<int, 3>>;
    std::vector<Pixels> boxes(1);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const auto c = picture.pixel(x, y);
            boxes[0].push_back({c.r, c.g, c.b});
        }
    const auto widest = [](const Pixels& box) {
        std::pair<int, std::size_t> best{-1, 0};
        for (std::size_t k = 0; k < 3; ++k) {
            const auto [low, high] =
                std::ranges::minmax(box, {}, [k](const auto& p) { return p[k]; });
            best = std::max(best, std::pair(high[k] - low[k], k));
        }
        return best;
    };
    while (static_cast<int>(boxes.size()) < colors) {
        Pixels& box =
            *std::ranges::max_element(boxes, {}, [&](const Pixels& b) { return widest(b); });
        const std::size_t axis = widest(box).second;
        const auto middle = box.begin() + static_cast<std::ptrdiff_t>(box.size() / 2);
        std::ranges::nth_element(box, middle, {}, [axis](const auto& p) { return p[axis]; });
        Pixels upper(middle, box.end());
        box.erase(middle, box.end());
        boxes.push_back(std::move(upper));
    }
    std::vector<kvn::imaging::Rgba> palette;
    for (const Pixels& box : boxes) {
        double sum[3] = {};
        for (const auto& p : box)
            for (std::size_t k = 0; k < 3; ++k)
                sum[k] += p[k];
        const auto mean = [&](std::size_t k) {
            return static_cast<std::uint8_t>(sum[k] / static_cast<double>(box.size()) + 0.5);
        };
        palette.push_back({mean(0), mean(1), mean(2), 255});
    }
    return kvn::imaging::Palette(palette);
}

} // namespace reference
