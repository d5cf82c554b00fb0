#include "engine/detail/history_exchange.h"

#include <algorithm>
#include <utility>

namespace kvn::engine::detail {

Exchange::Exchange(StoreCore& store, Step& target, Step& reverse, ListState& live)
    : store_(store), target_(target), reverse_(reverse), live_(live) {
    next_.current = target.current;
    next_.pages.reserve(target.pages.size());
    inPlace_.reserve(target.pages.size());
    rebuilds_.reserve(target.pages.size());
    for (std::size_t i = 0; i < target.pages.size(); ++i)
        plan(i);
}

Exchange::~Exchange() {
    for (InPlace& exchange : inPlace_)
        exchange.target->isBusy = exchange.source->isBusy = false;
}

void Exchange::plan(std::size_t page) {
    const StepPage& from = target_.pages[page];
    PageState state = from.state;
    const ContentRef& content = from.content;
    if (content && !content->raw.isEmpty()) {
        state.raster = content->raw;
        state.raster.setPalette(from.palette);
    } else if (content && !planInPlace(page)) {
        rebuilds_.push_back({page, content, Recipe(*content), {}});
    }
    next_.pages.push_back(std::move(state));
}

bool Exchange::planInPlace(std::size_t page) {
    const ContentRef& content = target_.pages[page].content;
    const ContentRef& source = content->base;
    if (!source || content->isBusy || source->isBusy) return false;
    for (std::size_t i = 0; i < reverse_.pages.size(); ++i) {
        if (reverse_.pages[i].content != source) continue;
        // Alone with the live state's own share: with a third holder the pixels would have to
        // be copied anyway.
        const imaging::Raster share = std::exchange(source->raw, {});
        const bool isAlone = [&] {
            imaging::Raster& live = live_.pages[i].raster;
            const imaging::Raster probe = std::exchange(live, {});
            source->raw = share;
            const bool alone = !probe.isShared();
            live = probe;
            return alone;
        }();
        (void)isAlone;
        return false;
    }
    return false;
}

} // namespace kvn::engine::detail
