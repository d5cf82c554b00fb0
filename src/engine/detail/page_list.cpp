#include "engine/detail/page_list.h"

#include <algorithm>
#include <atomic>

#include "basic/error.h"

namespace kvn::engine::detail {

PageList::PageList(Engine& engine, TraceIdentity identity)
    : who(std::move(identity)), history(engine.historyStore()), engine_(engine) {
    history.setEnabled(true);
    history.setDepth(1);
}

const PageState* PageList::currentPage() const {
    return find(0);
}

int PageList::indexOf(quint64 page) const {
    if (page == 0) return state.pages.empty() ? -1 : state.current;
    const auto it = std::find_if(state.pages.begin(), state.pages.end(),
                                 [page](const PageState& p) { return p.id == page; });
    return it == state.pages.end() ? -1 : static_cast<int>(it - state.pages.begin());
}

const PageState* PageList::find(quint64 page) const {
    const int index = indexOf(page);
    return index < 0 ? nullptr : &state.pages[static_cast<std::size_t>(index)];
}

bool PageList::isModified() const {
    return pagesTouched || std::any_of(state.pages.begin(), state.pages.end(),
                                       [this](const PageState& p) { return isChanged(p); });
}

void PageList::markSaved() {
    savedStamps.clear();
    for (const PageState& page : state.pages)
        savedStamps.insert(page.stamp);
    pagesTouched = false;
}

quint64 PageList::nextId() {
    static std::atomic<quint64> last{0};
    return ++last;
}

PageList& listOf(const PageRef& ref) {
    if (!ref.list) throw RuntimeError(errors::objectNotSet, "Object variable not set", "Image");
    return *ref.list;
}

const PageState& pageOf(const PageRef& ref) {
    const PageState* page = listOf(ref).find(ref.page);
    if (!page) throw RuntimeError(errors::objectNotSet, "There is no image.", "Image");
    return *page;
}

} // namespace kvn::engine::detail
