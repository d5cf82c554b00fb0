#include "engine/detail/history_exchange.h"

#include <cassert>
#include <utility>

namespace kvn::engine::detail {

namespace {

// Whether nobody else holds the pixels that both share.
bool sharedByTwo(imaging::Raster& live, imaging::Raster& kept) {
    kept = {};
    const bool isAlone = !live.isShared();
    imaging::Palette palette = std::move(live.paletteForEdit());
    kept = live;
    live.setPalette(std::move(palette));
    return isAlone;
}

} // namespace

Exchange::Exchange(StoreCore& store, const Step& target, const Step& reverse, ListState& live)
    : store_(store), target_(target), reverse_(reverse), live_(live) {
    next_.current = target.current;
    std::vector<std::size_t> missing;
    for (const StepPage& page : target.pages) {
        PageState& next = next_.pages.emplace_back(page.state);
        if (page.content) next.raster = page.content->raw;
        next.raster.setPalette(page.palette);
        if (page.content && page.content->raw.isEmpty()) missing.push_back(next_.pages.size() - 1);
    }
    // Only now is it known which live pixels stay in use.
    inPlace_.reserve(missing.size());
    for (const std::size_t page : missing)
        if (!planInPlace(page))
            rebuilds_.push_back(
                {page, target.pages[page].content, Recipe(*target.pages[page].content)});
}

Exchange::~Exchange() {
    for (const InPlace& exchange : inPlace_)
        exchange.source->isPinned = false;
}

bool Exchange::planInPlace(std::size_t page) {
    const ContentRef& content = target_.pages[page].content;
    const ContentRef& source = content->base;
    if (!source || source->isPinned) return false; // pinned: another page takes these pixels
    for (std::size_t i = 0; i < reverse_.pages.size(); ++i) {
        if (reverse_.pages[i].content != source) continue;
        // With a third holder the pixels would have to be copied anyway.
        if (!sharedByTwo(live_.pages[i].raster, source->raw)) return false;
        inPlace_.push_back({page, i, content, source, content->patch});
        source->isPinned = true;
        return true;
    }
    return false;
}

void Exchange::prepare(std::unique_lock<std::mutex>& lock) {
    if (inPlace_.empty() && rebuilds_.empty()) return;
    lock.unlock();
    try {
        for (Rebuild& rebuild : rebuilds_) {
            imaging::Raster& raster = next_.pages[rebuild.page].raster;
            imaging::Raster made = rebuild.recipe.make();
            made.setPalette(std::move(raster.paletteForEdit()));
            raster = std::move(made);
        }
        for (InPlace& exchange : inPlace_)
            exchange.pixels = unpackedPatch(exchange.pixels);
    } catch (...) {
        lock.lock();
        throw;
    }
    lock.lock();
}

void Exchange::commit() {
    for (const Rebuild& rebuild : rebuilds_)
        store_.giveRaw(rebuild.target, next_.pages[rebuild.page].raster);
    for (InPlace& exchange : inPlace_)
        swap(exchange);
    live_ = std::move(next_);
}

void Exchange::swap(InPlace& exchange) noexcept {
    imaging::Raster pixels = std::move(live_.pages[exchange.livePage].raster);
    Content& target = *exchange.target;
    Content& source = *exchange.source;
    imaging::Palette palette = std::move(next_.pages[exchange.page].raster.paletteForEdit());
    source.raw = {};
    assert(!pixels.isShared());
    swapPatch(exchange.pixels, pixels.edit());
    pixels.setPalette({});
    store_.handOn(pixels, exchange.target);
    target.raw = pixels;
    target.base = nullptr;
    target.patch = {};
    source.patch = std::move(exchange.pixels);
    setBase(source, exchange.target);

    pixels.setPalette(std::move(palette));
    next_.pages[exchange.page].raster = std::move(pixels);
}

} // namespace kvn::engine::detail
