#include "engine/detail/history_content.h"

#include <algorithm>
#include <utility>

#include "basic/error.h"

namespace kvn::engine::detail {

bool leansOn(const Content& content, const Content& other) {
    for (const Content* c = &content; c; c = c->base.get())
        if (c == &other) return true;
    return false;
}

bool leansOnOpen(const Content& content) {
    const Content* c = &content;
    while (c->raw.isEmpty() && c->base)
        c = c->base.get();
    return c->isOpen();
}

// What a common content leans on is as common as itself.
void makeCommon(Content& content) {
    for (Content* c = &content; c && !c->isCommon; c = c->base.get())
        c->isCommon = true;
}

void setBase(Content& content, ContentRef base) {
    if (base && content.isCommon) makeCommon(*base);
    content.base = std::move(base);
}

Recipe::Recipe(const Content& content)
    : type_(content.type), width_(content.width), height_(content.height) {
    const Content* c = &content;
    for (; c->raw.isEmpty() && c->patch; c = c->base.get()) {
        patches_.push_back(c->patch);
        if (!c->base) return;
    }
    if (c->isOpen())
        throw RuntimeError(errors::invalidCall, "The undo step does not fit the picture.", "Undo");
    raw_ = c->raw;
}

imaging::Raster Recipe::make() {
    if (patches_.empty()) return std::move(raw_);
    imaging::Raster raster =
        raw_.isEmpty() ? imaging::Raster::uninitialized(type_, width_, height_) : std::move(raw_);
    const imaging::View view = raster.edit();
    for (; !patches_.empty(); patches_.pop_back())
        applyPatch(patches_.back(), view);
    return raster;
}

const StepPage* Step::find(std::uint64_t id, std::size_t likelyIndex) const {
    if (likelyIndex < pages.size() && pages[likelyIndex].state.id == id) return &pages[likelyIndex];
    const auto it = std::find_if(pages.begin(), pages.end(),
                                 [id](const StepPage& page) { return page.state.id == id; });
    return it == pages.end() ? nullptr : &*it;
}

} // namespace kvn::engine::detail
