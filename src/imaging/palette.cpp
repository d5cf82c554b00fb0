#include "imaging/palette.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "basic/error.h"

namespace kvn::imaging {

Palette::Palette(std::vector<Rgba> colors) : colors_(std::move(colors)) {
    if (colors_.size() > maxSize) colors_.resize(maxSize);
}

Palette Palette::blackAndWhite() {
    return Palette({{0, 0, 0, 255}, {255, 255, 255, 255}});
}

Palette Palette::grayRamp() {
    std::vector<Rgba> ramp;
    ramp.reserve(maxSize);
    for (std::size_t i = 0; i < maxSize; ++i) {
        const auto gray = static_cast<std::uint8_t>(i);
        ramp.push_back({gray, gray, gray, 255});
    }
    return Palette(std::move(ramp));
}

void Palette::set(std::size_t index, Rgba color) {
    if (index >= maxSize)
        throw RuntimeError(errors::subscriptOutOfRange, "Palette index out of range", "Imaging");
    if (index >= colors_.size()) colors_.resize(index + 1);
    colors_[index] = color;
}

bool Palette::hasTransparency() const {
    for (const Rgba& color : colors_)
        if (color.a != 255) return true;
    return false;
}

int Palette::nearest(Rgba color) const {
    int best = 0, bestDistance = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < colors_.size(); ++i) {
        const int r = colors_[i].r - color.r, g = colors_[i].g - color.g;
        const int b = colors_[i].b - color.b, a = colors_[i].a - color.a;
        const int distance = r * r + g * g + b * b + a * a;
        if (distance >= bestDistance) continue;
        best = static_cast<int>(i);
        bestDistance = distance;
    }
    return best;
}

int Palette::find(Rgba color) const {
    const auto at = std::ranges::find(colors_, color);
    return at == colors_.end() ? -1 : static_cast<int>(at - colors_.begin());
}

int Palette::place(Rgba color, std::size_t room) {
    if (find(color) < 0 && colors_.size() < room) colors_.push_back(color);
    return nearest(color);
}

} // namespace kvn::imaging
