#include "imaging/codecs/gif_canvas.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "imaging/convert.h"

namespace kvn::imaging {

namespace {

using Indices = std::span<const std::uint8_t>;

bool holds(Indices pixels, int index) {
    return index >= 0 && std::memchr(pixels.data(), index, pixels.size()) != nullptr;
}

std::size_t area(const Rect& rect) {
    return static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height);
}

void fill(const View& view, const Rect& rect, int value) {
    const std::size_t size = static_cast<std::size_t>(std::max(1, bytesPerPixel(view.type)));
    for (int y = rect.y; y < rect.bottom(); ++y)
        std::memset(view.row(y) + static_cast<std::size_t>(rect.x) * size, value,
                    static_cast<std::size_t>(rect.width) * size);
}

bool anyClear(const Raster& raster) {
    const ConstView view = raster.view();
    for (int y = 0; y < view.height; ++y)
        for (int x = 0; x < view.width; ++x)
            if (view.row(y)[4 * x + 3] != 255) return true;
    return false;
}

// The frame's row of indices and its place on the screen, one call a visible row.
template <typename Put>
void forVisibleRows(const GifFrame& frame, Indices pixels, Size screen, const Put& put) {
    const Rect seen = frame.rect.intersected({0, 0, screen.width, screen.height});
    const auto width = static_cast<std::size_t>(frame.rect.width);
    const std::size_t skipped = static_cast<std::size_t>(seen.x - frame.rect.x);
    for (int y = seen.y; y < seen.bottom(); ++y) {
        const std::size_t start = static_cast<std::size_t>(y - frame.rect.y) * width;
        if (start + width > pixels.size()) break;
        put(pixels.subspan(start + skipped, static_cast<std::size_t>(seen.width)), seen.x, y);
    }
}

void putIndices(Indices from, int transparent, std::uint8_t* to) {
    if (transparent < 0) {
        std::memcpy(to, from.data(), from.size());
        return;
    }
    for (std::size_t i = 0; i < from.size(); ++i)
        to[i] = from[i] == transparent ? to[i] : from[i];
}

} // namespace

// True if nothing of what is on the screen now will be seen through the frame.
bool GifCanvas::startsAfresh(const GifFrame& frame, Indices pixels) const {
    if (now_.raster.isEmpty()) return true;
    const Rect screen{0, 0, size_.width, size_.height};
    return frame.rect.intersected(screen) == screen && pixels.size() == area(frame.rect) &&
           !holds(pixels, frame.transparent);
}

bool GifCanvas::fitsTable(const GifFrame& frame, Indices pixels) const {
    if (!now_.indexed() || !(now_.table == frame.palette)) return false;
    // The clear entry may not come as a colour, unless it is the frame's own transparent one.
    return now_.clear < 0 || now_.clear == frame.transparent || !holds(pixels, now_.clear);
}

// An empty screen in the frame's own colours. `covers`: no pixel of it will stay.
void GifCanvas::start(const GifFrame& frame, bool covers) {
    now_.table = frame.palette;
    now_.clear = frame.transparent;
    Palette palette = frame.palette;
    if (now_.clear < 0 && !covers && palette.size() < Palette::maxSize)
        now_.clear = static_cast<int>(palette.size());
    if (now_.clear < 0 && !covers) {
        now_.raster = Raster(ImageType::Rgba32, size_.width, size_.height);
        return;
    }
    if (now_.clear >= 0) {
        const auto index = static_cast<std::size_t>(now_.clear);
        Rgba color = palette[index];
        color.a = 0;
        palette.set(index, color);
    }
    now_.raster =
        Raster::uninitialized(now_.clear >= 0 ? ImageType::Indexed8Alpha : ImageType::Indexed8,
                              size_.width, size_.height);
    now_.raster.setPalette(std::move(palette));
    if (now_.clear >= 0) fill(now_.raster.edit(), now_.raster.rect(), now_.clear);
}

void GifCanvas::toTrueColor() {
    Task quiet;
    quiet.threads = 1;
    now_.raster = convertType(now_.raster, ImageType::Rgba32, quiet);
}

// Gives the palette form an entry for clear pixels. False if the table is full.
bool GifCanvas::makeClearable() {
    if (now_.clear >= 0) return true;
    if (now_.table.size() == Palette::maxSize) return false;
    now_.clear = static_cast<int>(now_.table.size());
    Palette palette = now_.table;
    palette.set(palette.size(), {0, 0, 0, 0});
    Raster wider = Raster::uninitialized(ImageType::Indexed8Alpha, size_.width, size_.height);
    wider.setPalette(std::move(palette));
    const View to = wider.edit();
    const ConstView from = now_.raster.view();
    for (int y = 0; y < from.height; ++y)
        std::memcpy(to.row(y), from.row(y), wider.rowBytes());
    now_.raster = std::move(wider);
    return true;
}

void GifCanvas::draw(const GifFrame& frame, Indices pixels) {
    const View view = now_.raster.edit();
    if (now_.indexed()) {
        forVisibleRows(frame, pixels, size_, [&](Indices row, int x, int y) {
            putIndices(row, frame.transparent, view.row(y) + x);
        });
        return;
    }
    std::array<Rgba, 256> colors;
    for (std::size_t i = 0; i < colors.size(); ++i)
        colors[i] = frame.palette[i];
    forVisibleRows(frame, pixels, size_, [&](Indices row, int x, int y) {
        std::uint8_t* to = view.row(y) + 4 * static_cast<std::size_t>(x);
        for (const std::uint8_t index : row) {
            if (index != frame.transparent) std::memcpy(to, &colors[index], 4);
            to += 4;
        }
    });
}

Raster GifCanvas::show(const GifFrame& frame, Indices pixels, Task& task) {
    before_ = frame.disposal == GifDisposal::Restore ? now_ : Screen{};
    const Rect screen{0, 0, size_.width, size_.height};
    const bool covers =
        frame.rect.intersected(screen) == screen && pixels.size() == area(frame.rect);
    if (startsAfresh(frame, pixels))
        start(frame, covers);
    else if (now_.indexed() && !fitsTable(frame, pixels))
        toTrueColor();
    draw(frame, pixels);
    if (now_.indexed()) return now_.raster;
    return anyClear(now_.raster) ? now_.raster : convertType(now_.raster, ImageType::Rgb24, task);
}

void GifCanvas::dispose(const GifFrame& frame) {
    if (frame.disposal == GifDisposal::Restore) {
        now_ = std::move(before_);
        before_ = {};
        return;
    }
    if (frame.disposal != GifDisposal::Clear) return;
    const Rect screen{0, 0, size_.width, size_.height};
    const Rect rect = frame.rect.intersected(screen);
    if (rect == screen) {
        now_ = {};
        return;
    }
    if (rect.isEmpty()) return;
    if (now_.indexed() && !makeClearable()) toTrueColor();
    fill(now_.raster.edit(), rect, now_.indexed() ? now_.clear : 0);
}

} // namespace kvn::imaging
