// Small pictures of every kind, deep copies and exact comparison, for the tests of the undo list.
#pragma once

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "engine/detail/history.h"

namespace kvn::engine::detail {

using imaging::ImageType;
using imaging::Raster;
using imaging::Rect;
using Random = std::mt19937;

inline int below(Random& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

inline std::uint64_t nextStamp() {
    static std::uint64_t last = 0;
    return ++last;
}

enum class Texture { Flat, Soft, Noise };

inline Raster picture(Random& random, ImageType type, int width, int height, Texture texture) {
    Raster raster(type, width, height);
    if (hasPalette(type)) {
        std::vector<imaging::Rgba> colors(type == ImageType::Bit1 ? 2 : 200);
        for (imaging::Rgba& color : colors)
            color.g = static_cast<std::uint8_t>(random());
        raster.setPalette(imaging::Palette(colors));
    }
    const imaging::View view = raster.edit();
    const auto base = static_cast<std::uint8_t>(random());
    for (int y = 0; y < height; ++y)
        for (std::size_t x = 0; x < raster.rowBytes(); ++x) {
            const auto any = static_cast<std::uint8_t>(random());
            const auto soft =
                static_cast<std::uint8_t>(base + y + static_cast<int>(x) / 4 + any % 5);
            view.row(y)[x] = texture == Texture::Flat   ? base
                             : texture == Texture::Soft ? soft
                                                        : any;
        }
    return raster;
}

// A copy that shares nothing with anybody.
inline Raster deepCopy(const Raster& raster) {
    Raster copy = raster;
    if (!copy.isEmpty()) copy.edit();
    return copy;
}

inline ListState deepCopy(const ListState& state) {
    ListState copy = state;
    for (PageState& page : copy.pages)
        page.raster = deepCopy(page.raster);
    return copy;
}

inline bool same(const ListState& a, const ListState& b) {
    if (a.current != b.current || a.pages.size() != b.pages.size()) return false;
    for (std::size_t i = 0; i < a.pages.size(); ++i) {
        const PageState &p = a.pages[i], &q = b.pages[i];
        if (p.id != q.id || p.stamp != q.stamp || p.name != q.name || p.metadata != q.metadata ||
            p.fileType != q.fileType || !p.raster.samePixels(q.raster))
            return false;
    }
    return true;
}

inline ListState onePage(Raster raster) {
    ListState state;
    state.current = 0;
    state.pages.push_back({1, nextStamp(), std::move(raster), nullptr, {}, {}});
    return state;
}

inline PageState& currentPage(ListState& state) {
    return state.pages[static_cast<std::size_t>(state.current)];
}

inline void replacePixels(ListState& state, Raster raster) {
    currentPage(state).raster = std::move(raster);
    currentPage(state).stamp = nextStamp();
}

inline void paint(Random& random, ListState& state, const Rect& rect) {
    Raster& raster = currentPage(state).raster;
    const Rect part = rect.intersected(raster.rect());
    for (int y = part.y; y < part.bottom(); ++y)
        for (int x = part.x; x < part.right(); ++x)
            raster.setPixel(x, y, {static_cast<std::uint8_t>(random()), 7, 9, 200});
    currentPage(state).stamp = nextStamp();
}

inline Rect anyRect(Random& random, const Raster& raster) {
    return {below(random, raster.width() + 20) - 10, below(random, raster.height() + 20) - 10,
            1 + below(random, raster.width()), 1 + below(random, raster.height())};
}

} // namespace kvn::engine::detail
